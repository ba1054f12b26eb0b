#include "routing/MultiTrackRoutingView.h"

#include <algorithm>
#include <cstdlib>
#include <cwctype>

#include "host/config/Resources.h"
#include "host/edit/ManagedCel.h"
#include "host/ui/GlobManager.h"
#include "host/ui/UifStd.h"

namespace {

// The dialogues open now, one per vob at most.
std::vector<MultiTrackRoutingView*>& openDialogues() {
  static std::vector<MultiTrackRoutingView*> open;
  return open;
}

bool sameIgnoringCase(const LightweightString<wchar_t>& a, const LightweightString<wchar_t>& b) {
  const std::wstring x = a.str(), y = b.str();
  return x.size() == y.size() && std::equal(x.begin(), x.end(), y.begin(), [](wchar_t p, wchar_t q) {
           return std::towlower(static_cast<wint_t>(p)) == std::towlower(static_cast<wint_t>(q));
         });
}

} // namespace

MultiTrackRoutingView::MultiTrackRoutingView(const InitArgs& args) : StandardPanel(args), vob_(args.vob) {
  setResizable(true);
  setMovable(true);
  addStandardWidgets(titleWidget | closeWidget);
  setMinSize(320, 200);
  if (vob_) monitor_ = dynamic_cast<CompoundEffectMonitor*>(vob_->findClient(CompoundEffectMonitor::IDString));
  const EditPtr edit = monitor_ ? monitor_->getEdit() : EditPtr();
  setTitle(paddedResourceStrW(13052, "", " : ") + (edit ? edit->getName() : LightweightString<wchar_t>()),
           UifStd::getTitleFont());
  updateTracksWidget();
  createViewWidget();
  if (monitor_) monitor_->registerForChangeNotifications(this, true);
  openDialogues().push_back(this);
}

MultiTrackRoutingView::~MultiTrackRoutingView() {
  std::erase(openDialogues(), this);
  if (monitor_) monitor_->registerForChangeNotifications(this, false);
  pageIds_.clear();
}

MultiTrackRoutingView* MultiTrackRoutingView::findFor(const Vob* vob) {
  for (MultiTrackRoutingView* v : openDialogues())
    if (v->vob_ == vob) return v;
  return nullptr;
}

MultiTrackRoutingView* MultiTrackRoutingView::openFor(Vob* vob) {
  if (!vob || !GlobManager::initialised()) return nullptr;
  if (MultiTrackRoutingView* open = findFor(vob)) {
    open->popToTop(true);
    return open;
  }
  if (!vob->findClient(CompoundEffectMonitor::IDString)) return nullptr;
  const int row = UifStd::getRowHeight();
  InitArgs args(vob, {30 * row, 22 * row});
  args.creationInfo.border = Border{0, 0, 15};
  const XY<int> at = GlobManager::getSafePosForGlob(
      Canvas(), GlobManager::getPosForGlob(args.creationInfo, Glob::Centre(0, 0, 2)), args.creationInfo.size);
  Glob::setupRootPos(at);
  auto* view = new MultiTrackRoutingView(args);
  GlobManager::realize(view);
  return view;
}

void MultiTrackRoutingView::createViewWidget() {
  if (!monitor_ || !monitor_->getEdit()) return;
  const int kinds = monitor_->getKinds();
  if ((kinds & CompoundEffectMonitor::hasVideo) && monitor_->getEdit()->getChanType(monitor_->getTrackID()) != 2)
    createVideoViewWidget();
  else if (kinds & CompoundEffectMonitor::hasAudio)
    createAudioViewWidget();
}

void MultiTrackRoutingView::selectTrackTab() {
  if (!tabs_ || !monitor_) return;
  const int index = tabs_->findPageIdx(toWide(monitor_->getTrackID().asString()));
  if (index >= 0) tabs_->selectPage(index, false, false);
}

bool MultiTrackRoutingView::createAudioViewWidget() {
  bool made = false;
  if (!audioView_) {
    const PixelBox user = getUserArea();
    AudioRoutingView::InitArgs args(monitor_, {std::abs(user.x1 - user.x0), std::abs(user.y1 - user.y0)});
    args.creationInfo.border = Border{0, 0, 15};
    args.palette = getPalette();
    audioView_ = new AudioRoutingView(args);
    addChild(audioView_, UserBottomLeft(0, 0));
    if (videoView_) {
      removeWidget(videoView_, true);
      videoView_ = nullptr;
    }
    made = true;
  } else if (monitor_) {
    audioView_->setTrack(monitor_->getTrackID());
  }
  selectTrackTab();
  return made;
}

bool MultiTrackRoutingView::createVideoViewWidget() {
  if (videoView_) {
    if (tabs_) tabs_->selectPage(0, false, false);
    return false;
  }
  const PixelBox user = getUserArea();
  videoView_ = new FXGraphView(vob_, {std::abs(user.x1 - user.x0), std::abs(user.y1 - user.y0)}, getPalette());
  addChild(videoView_, UserBottomLeft(0, 0));
  if (audioView_) {
    removeWidget(audioView_, true);
    audioView_ = nullptr;
  }
  return true;
}

void MultiTrackRoutingView::updateTracksWidget() {
  std::vector<LightweightString<wchar_t>> titles, ids;
  const EditPtr edit = monitor_ ? monitor_->getEdit() : EditPtr();
  if (edit) {
    const int kinds = monitor_->getKinds();
    const ManagedCel videoCel(*edit);
    if ((kinds & CompoundEffectMonitor::hasVideo) && videoCel.hasVideo()) {
      titles.push_back(resourceStrW(10052));
      ids.push_back(toWide(videoCel.id().asString()));
    }
    if (kinds & CompoundEffectMonitor::hasAudio)
      for (int i = 0; i < edit->getNumChans(); ++i) {
        const IdStamp channel = edit->getChanId(i);
        if (edit->getChanType(channel) != 2) continue;
        titles.push_back(edit->getGroupDisplayName(channel, false));
        ids.push_back(toWide(channel.asString()));
      }
  }
  pageTitles_ = titles;
  pageIds_ = ids;
  if (titles.size() < 2) {
    if (tabs_) {
      removeWidget(tabs_, true);
      tabs_ = nullptr;
    }
    return;
  }
  if (!tabs_) {
    TabbedDialogue::InitArgs args;
    args.creationInfo.size = {width(), TabbedDialogue::minHeight()};
    args.creationInfo.border = Border{0, 0, 0};
    args.tabHeight = TabbedDialogue::tabHeight(16);
    args.palette = getPalette();
    tabs_ = new TabbedDialogue(args);
    // Below the panel's header: the user area's top.
    addChild(tabs_, TopLeft(borderSize(), borderSize() + headerHeight() + UifStd::getWidgetGap()));
    tabs_->setPages(titles, 0, false);
    for (std::size_t i = 0; i < ids.size(); ++i) tabs_->setPageID(static_cast<int>(i), ids[i]);
    return;
  }
  const LightweightString<wchar_t> current = tabs_->getPageID(tabs_->getCurrentTabIndex());
  tabs_->setPages(titles, 0, false);
  for (std::size_t i = 0; i < ids.size(); ++i) tabs_->setPageID(static_cast<int>(i), ids[i]);
  const int kept = tabs_->findPageIdx(current);
  if (kept >= 0)
    tabs_->selectPage(kept, false, false);
  else
    selectTrackTab();
}

Glob::PixelBox MultiTrackRoutingView::getUserArea() const {
  PixelBox area = StandardPanel::getUserArea();
  if (tabs_) area.y1 -= tabs_->height() + UifStd::getWidgetGap();
  return area;
}

MenuItems MultiTrackRoutingView::getMenuItems(const Event* e) {
  if (videoView_ && videoView_->isVisible()) return videoView_->getMenuItems(e);
  if (audioView_) return audioView_->getMenuItems(e);
  return {};
}

bool MultiTrackRoutingView::handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) {
  if (msg != TabbedDialogue::changePageMsg || !tabs_ || sender != tabs_ || !data) return false;
  const TabDetails& tab = static_cast<const EventMsgData<TabDetails>*>(data)->get();
  if (sameIgnoringCase(tab.title, resourceStrW(10052))) {
    createVideoViewWidget();
  } else {
    IdStamp track;
    if (IdStamp::fromString(toUTF8(tabs_->getPageID(tab.index)).str(), track) && monitor_) monitor_->setTrackID(track);
    createAudioViewWidget();
  }
  reshapeAndDraw({-1234, -1234});
  return true;
}

void MultiTrackRoutingView::handleCompoundEffectChanges(const ChangeDescription& change) {
  Drawable::disableRedraws();
  if (change.structural) {
    updateTracksWidget();
    if (!tabs_ && monitor_ && (monitor_->getKinds() & CompoundEffectMonitor::hasVideo)) createVideoViewWidget();
    layoutChildren();
    resize(width(), height());
  } else if (change.oldTrack != change.newTrack) {
    if (tabs_ && change.newTrack.valid()) {
      const int index = tabs_->findPageIdx(toWide(change.newTrack.asString()));
      if (index >= 0) tabs_->selectPage(index, false, false);
    }
    createAudioViewWidget();
  }
  Drawable::enableRedraws();
  redraw();
}

void MultiTrackRoutingView::resize(double w, double h) {
  StandardPanel::resize(w, h);
  const PixelBox user = getUserArea();
  if (tabs_) tabs_->resize(std::abs(user.x1 - user.x0), tabs_->height());
  if (videoView_) videoView_->resize(std::abs(user.x1 - user.x0), std::abs(user.y1 - user.y0));
  if (audioView_) audioView_->resize(std::abs(user.x1 - user.x0), std::abs(user.y1 - user.y0));
  layoutChildren();
}
