// Map
//   creation and registry ..... show, createPanelFor, findPanelFor, make, getNodeSize
//   construction .............. constructors, init, postInit, destructor
//   size and layout ........... calcSize, getUserArea, calcMainViewSize, resize, title
//   commands .................. handleMessageEvent and the operations behind it
//   saved state ............... dump, load
#include "graph_tool/FXGraphTool.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "graph_tool/AutoPositionUndo.h"
#include "graph_tool/GraphItemCommands.h"
#include "graph_tool/PanelStatus.h"
#include "graph_tool/UnsavedChanges.h"
#include "graph_view/Framing.h"
#include "host/config/EditorPreferences.h"
#include "host/config/Resources.h"
#include "host/edit/CelEventPair.h"
#include "host/edit/FXEditor.h"
#include "host/ui/Checkbox.h"
#include "host/ui/DropDownMenuButton.h"
#include "host/ui/GlobManager.h"
#include "host/ui/ImageButton.h"
#include "host/ui/MenuItem.h"
#include "host/ui/PushButton.h"
#include "host/ui/UifStd.h"
#include "routing/MultiTrackRoutingView.h"

namespace {

// Preference keys.
const char* const templatesKey = "Video Routing : Templates";
const char* const positionKey = "Video Routing : Position";
const char* const zoomKey = "Video Routing : Zoom";
const char* const autoPositionKey = "Automatic FX positioning";
const char* const sizeKey = "Effect graph tool size";

// A point preference that was never stored.
constexpr XY<int> unsetPoint{-1234, -1234};
constexpr double defaultZoom = 0.75;

int row() { return UifStd::getRowHeight(); }
int gap() { return UifStd::getWidgetGap(); }

// Builds, places and realizes a root panel at `placement`, with redraws held.
template <class Make>
void openRoot(const GlobCreationInfo& info, const Glob::Placement& placement, Make make) {
  Drawable::disableRedraws();
  {
    [[maybe_unused]] Glib::StateSaver saver;
    const XY<int> at = GlobManager::getSafePosForGlob(Canvas(), GlobManager::getPosForGlob(info, placement), info.size);
    Glob::setupRootPos(at);
    Glob* panel = make();
    GlobManager::realize(panel);
  }
  Drawable::enableRedraws();
}

} // namespace

DLList FXGraphTool::allPanels_(false);
double FXGraphTool::initialZoom_ = defaultZoom;
// Whether a panel or a restore has set the class-wide zoom yet: until one
// has, it is the preference's, which cannot be read before the host has
// named its preferences.
static bool initialZoomSet = false;
XY<double> FXGraphTool::restoredCentre_{0, 0};

// -- creation and registry ------------------------------------------------------

void FXGraphTool::show() {
  if (Vob* vob = Vob::getPlayMachine()) createPanelFor(vob);
}

void FXGraphTool::createPanelFor(Vob* vob) {
  if (!vob) return;
  if (FXGraphTool* open = findPanelFor(vob)) {
    GlobManager::requestDeletion(open);
    return;
  }
  EditGraphIterator at(vob->getEdit(), vob->getCurrentTime(1), EditGraphIterator::startAtFirstRoot);
  createPanelFor(vob, at);
}

void FXGraphTool::createPanelFor(Vob* vob, EditGraphIterator& at) {
  if (!vob) return;
  if (at.isValid()) {
    at.moveBackToCompoundEffect();
    const CelEventPair segment(vob->getEdit(), at.getChanIndex(-1), at.getTime());
    const double now = vob->getCurrentTime(1);
    // A time inside the segment, bounds included, is left alone.
    if (segment.valid() && (now < segment.editTime() || now > segment.endEditTime()))
      vob->setCurrentTime(segment.editTime());
  }
  if (FXGraphTool* open = findPanelFor(vob)) {
    open->popToTop(false);
    return;
  }
  const XY<int> stored = prefs().getPreference(positionKey, unsetPoint);
  const Glob::Placement placement = stored == unsetPoint ? Glob::Centre(0, 0, 2) : Glob::BottomLeft(stored);
  InitArgs args(vob);
  args.creationInfo.border = Border{0, 0, 15};
  args.creationInfo.size = calcSize();
  openRoot(args.creationInfo, placement, [&] { return new FXGraphTool(args); });
}

FXGraphTool* FXGraphTool::findPanelFor(const Vob* vob) {
  for (FXGraphTool* panel : allPanels_.as<FXGraphTool>())
    if (panel->getVob() == vob) return panel;
  return nullptr;
}

FXGraphTool* FXGraphTool::make(GlobCreationInfo* info) {
  static const configb empty;
  if (!info) return nullptr;
  return new FXGraphTool(info->config ? *info->config : empty, info->size.x, info->size.y);
}

XY<int> FXGraphTool::getNodeSize(Glob* glob) {
  const auto* panel = dynamic_cast<FXGraphTool*>(glob);
  if (!panel || !panel->view_) return {0, 0};
  const double h = std::round(panel->view_->getScale() * 0.125);
  return {static_cast<int>(std::round(h * 1.25)), static_cast<int>(h)};
}

// -- construction -----------------------------------------------------------------

FXGraphTool::FXGraphTool(const InitArgs& args) : StandardPanel(args), VobClient(args.vob, 2, 0) {
  [[maybe_unused]] Glib::StateSaver saver;
  const bool zoomKept = prefs().hasPreference(zoomKey);
  initialZoom_ = prefs().getPreference(zoomKey, defaultZoom);
  initialZoomSet = true;
  init();
  postInit();
  // A panel opens on the whole graph, clear of the preview: fitted when
  // there is no zoom of the user's to go back to, else at that zoom.
  if (view_) Framing::frame(*view_, zoomKept ? Framing::Zoom::kept : Framing::Zoom::fit);
}

FXGraphTool::FXGraphTool(const configb& config, double width, double height)
    : StandardPanel(XY<int>{static_cast<int>(std::lround(width)), static_cast<int>(std::lround(height))}) {
  [[maybe_unused]] Glib::StateSaver saver;
  // A record without a zoom, before any panel was made, starts from the
  // preference, as a panel opened afresh would.
  if (!initialZoomSet) {
    initialZoom_ = prefs().getPreference(zoomKey, defaultZoom);
    initialZoomSet = true;
  }
  init();
  load(config);
  postInit();
  // At the zoom the layout kept, on the whole graph, clear of the preview.
  if (view_) Framing::frame(*view_, Framing::Zoom::kept);
}

FXGraphTool::~FXGraphTool() {
  if (!isDocked()) {
    prefs().setPreference(sizeKey, XY<int>{width(), height()});
    if (view_) prefs().setPreference(zoomKey, view_->getZoom());
  }
  allPanels_.remove(this);
}

void FXGraphTool::init() {
  templatesVisible_ = prefs().getPreference(templatesKey, true);
  setBorder(StandardPanel::getDefaultBorder());
  setResizable(true);
  setMovable(true);
  setPersistable(true);
  setTitle(L"", UifStd::getTitleFont());
  addStandardWidgets(titleWidget | closeWidget);
  setMinSize(470, 290);
  allPanels_.append(this);
  unsaved_ = std::make_unique<UnsavedChanges>([this] { return getVob(); }, getPalette());
}

void FXGraphTool::postInit() {
  if (width() == 0 && height() == 0) return;
  templatesVisible_ = prefs().getPreference(templatesKey, true);
  updateTitleStr();
  initTemplatesListUI();
  const bool autoPosition = prefs().getPreference(autoPositionKey, false);

  const int side = headerHeight();
  toggleTemplatesButton_ = new ImageButton(getIconPath("GallNav.png"), "ToggleTemplates", side);
  addChild(toggleTemplatesButton_, TopLeft(gap(), StandardPanel::calcSize(2, 0, getDefaultBorder())));

  const LightweightString<wchar_t> autoLabel = resourceStrW(10869);
  autoPosCheckbox_ = new Checkbox(autoLabel, autoPosition, Checkbox::calcWidth(autoLabel, 0, 3, false), row());
  addChild(autoPosCheckbox_, BottomLeft(borderSize(), borderSize()));

  const LightweightString<wchar_t> tidyLabel = resourceStrW(11402);
  tidyButton_ = new PushButton(tidyLabel, "TidyNodes", PushButton::calcWidth(tidyLabel), PushButton::calcHeight());
  addChild(tidyButton_, RightOf(gap(), autoPosCheckbox_));

  orientationMenu_ = new DropDownMenuButton({resourceStrW(11779), resourceStrW(11780)}, 0, 0, row());
  addChild(orientationMenu_, RightOf(gap(), tidyButton_));

  view_ = new FXGraphView(getVob(), calcMainViewSize(), getPalette());
  view_->setHost(this);
  addChild(view_, UserTopRight(0, 0));

  redoButton_ = new ImageButton(getIconPath("redo.png"), "redoBtn", row());
  addChild(redoButton_, BottomRight(borderSize(), borderSize()));
  undoButton_ = new ImageButton(getIconPath("undo.png"), "undoBtn", row());
  addChild(undoButton_, LeftOf(gap(), redoButton_));
  status_ = new PanelStatus([this] { return getVob(); }, {statusWidth(), row()});
  addChild(status_, RightOf(gap(), orientationMenu_));

  // The title text sits beside the templates button.
  if (Glob* title = getTitleWidget(0)) {
    removeWidget(title, false);
    addWidgetRelative(title, toggleTemplatesButton_, gap(), 2, false, 0);
  }
  undoButton_->setContextString(resourceStrW(11129));
  redoButton_->setContextString(resourceStrW(11111));

  view_->setViewZoom(initialZoom_);
  if (view_->getOrientation() == 1) orientationMenu_->setSelectedIndex(1, false);
  view_->manualPositioningValue() = !autoPosition;
  tidyButton_->setActive(view_->manualPositioning(), false);
  resize(width(), height());
}

// -- size and layout ----------------------------------------------------------------

XY<int> FXGraphTool::calcSize() {
  const XY<int> size = prefs().getPreference(sizeKey, XY<int>{36 * row(), 25 * row()});
  // A stored size no screen holds (or none at all) would leave a panel that
  // cannot be shown or built: it is kept within what the host can show.
  const int most = GlobManager::largestScreenSide;
  return {std::clamp(size.x, 1, most), std::clamp(size.y, 1, most)};
}

Glob::PixelBox FXGraphTool::getUserArea() const {
  PixelBox area = StandardPanel::getUserArea();
  area.y0 += row() + gap(); // the strip of controls along the bottom
  return area;
}

int FXGraphTool::templatesListWidth() const { return templatesList_ ? templatesList_->width() : 13 * row(); }

XY<int> FXGraphTool::calcMainViewSize() const {
  const PixelBox area = getUserArea();
  int w = std::abs(area.x1 - area.x0);
  if (templatesList_) w -= templatesListWidth() + borderSize();
  return {static_cast<uint16_t>(w), static_cast<uint16_t>(std::abs(area.y1 - area.y0))};
}

int FXGraphTool::statusWidth() const {
  // What the bottom row leaves between the orientation menu and undo.
  if (!orientationMenu_ || !undoButton_) return 1;
  const int used = borderSize() + autoPosCheckbox_->width() + tidyButton_->width() + orientationMenu_->width() +
                   undoButton_->width() + redoButton_->width() + 5 * gap() + borderSize();
  return std::max(1, width() - used);
}

void FXGraphTool::resize(double w, double h) {
  StandardPanel::resize(w, h);
  if (status_) status_->resize(statusWidth(), row());
  if (view_) {
    const XY<int> size = calcMainViewSize();
    view_->resize(size.x, size.y);
  }
  if (templatesList_) {
    const PixelBox area = getUserArea();
    templatesList_->resize(templatesListWidth(), std::abs(area.y1 - area.y0));
  }
  layoutChildren();
  if (!isDocked()) prefs().setPreference(positionKey, XY<int>{getX(), getY()});
}

bool FXGraphTool::updateTitleStr() {
  if (!getVob() || !getVob()->getEdit()) return false;
  const LightweightString<wchar_t> title = paddedResourceStrW(11587, "", " : ") + getVob()->getEdit()->getName();
  if (title == getTitle()) return false;
  setTitle(title, UifStd::getTitleFont());
  return true;
}

void FXGraphTool::initTemplatesListUI() {
  if (!templatesVisible_) {
    templatesList_ = nullptr;
    return;
  }
  const PixelBox area = getUserArea();
  DDVideoEffectsList::InitArgs args(getVob(), EffectsBrowser::byCategory, 0, static_cast<uint16_t>(13 * row()),
                                    static_cast<uint16_t>(std::abs(area.y1 - area.y0)));
  args.palette = getPalette();
  templatesList_ = new DDVideoEffectsList(args);
  templatesList_->setPalette(getPalette());
  addChild(templatesList_, UserTopLeft(0, 0));
}

// -- commands -------------------------------------------------------------------------

bool FXGraphTool::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  if (msg == "TidyNodes") {
    if (view_) view_->tidy();
    return true;
  }
  if (msg.startsWith("AutoPos ")) {
    autoPositionAsked(msg.substr(8) == "On");
    return true;
  }
  if (msg == "ToggleTemplates") {
    toggleTemplates();
    return false; // deliberately reported as not handled
  }
  if (msg.startsWith("fxutr") || msg.startsWith("render_effect")) {
    GraphItemCommands::handle(getVob(), msg, getPalette());
    return true;
  }
  if (msg.startsWith("popOut")) {
    LightweightString<char> sub, state;
    GraphItemCommands::split(msg, 6, sub, state);
    EditGraphIterator at = FXEditor::getIteratorFor(EditGraphIteratorState(state));
    popOutItem(at, sub == "tile" ? tiledViewer : logPanel);
    return true;
  }
  if (msg == DropDownMenuButton::dropDownMenuButtonMsg) {
    if (view_ && orientationMenu_)
      view_->setOrientation(orientationMenu_->getSelectedIndex() != 0 ? VidRouting::Orientations::BottomToTop
                                                                      : VidRouting::Orientations::LeftToRight,
                            true);
    return true;
  }
  if (msg.startsWith(Checkbox::messagePrefix)) {
    autoPositionAsked(autoPosCheckbox_ && autoPosCheckbox_->getState());
    return true;
  }
  if (sender && sender == undoButton_) {
    stepThroughHistory(false);
    return true;
  }
  if (sender && sender == redoButton_) {
    stepThroughHistory(true);
    return true;
  }
  // The frame's own close button: closed as the host closes panels, once
  // nothing unsaved would be lost.
  if (sender && sender == getTitleWidget(1) && msg == "close") {
    requestClose();
    return true;
  }
  if (sender && sender == getTitleWidget(1)) return StandardPanel::handleMessageEvent(msg, sender);
  return false;
}

bool FXGraphTool::handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) {
  // The zoom entries of the view's context menu.
  if (msg == MenuData::changeMsg && data) {
    const auto* change = static_cast<const MenuData::Change*>(data);
    if (change->tag == "zoomIn") return handleZoom(1);
    if (change->tag == "zoomOut") return handleZoom(-1);
    if (change->tag == "routing") {
      MultiTrackRoutingView::openFor(getVob());
      return true;
    }
  }
  return StandardPanel::handleDataMessageEvent(msg, sender, data);
}

void FXGraphTool::stepThroughHistory(bool forward) {
  if (!getVob()) return;
  // An undo tells the view of the positions it brought back, then of the
  // graph it changed, and each would draw the view: the screen is drawn
  // once, when the step is done.
  Glib::UpdateDeferrer once;
  if (forward)
    getVob()->redoRequest();
  else
    getVob()->undoRequest();
}

bool FXGraphTool::handleKeyEvent(const Event& e) {
  if (e.type != Event::keyDown) return false;
  if (view_ && view_->handleKeyEvent(e)) return true;
  if (e.modifiers & Event::controlHeld) {
    if (!getVob()) return false;
    if (e.key == 's') {
      if (unsaved_->save() && status_) status_->refresh();
    } else if (e.key == 'z')
      stepThroughHistory(false);
    else if (e.key == 'y')
      stepThroughHistory(true);
    else
      return false;
    return true;
  }
  if (e.key == '+' || e.key == '=') return handleZoom(1);
  if (e.key == '-') return handleZoom(-1);
  return false;
}

bool FXGraphTool::handleTimerEvent(const Event& e) { return view_ && view_->handleTimerEvent(e); }

void FXGraphTool::handleModifications(const EditModifications& mods, const VobModification& vobMod) {
  if (status_) status_->refresh();
  if (mods.includes(EditModification::name) || (vobMod.flags & VobModification::editReplaced)) {
    if (updateTitleStr()) {
      Glib::UpdateDeferrer deferrer;
      for (int i = 0; i < 2; ++i)
        if (Glob* title = getTitleWidget(i)) title->redraw();
    }
  }
  VobClient::handleModifications(mods, vobMod);
}

bool FXGraphTool::requestClose() {
  return unsaved_->closeWhenSafe([this] {
    Glob* closeBox = getTitleWidget(1);
    if (closeBox)
      StandardPanel::handleMessageEvent("close", closeBox);
    else
      GlobManager::requestDeletion(getRootParent());
  });
}

void FXGraphTool::autoPositionAsked(bool on) {
  // Turned on, the layout replaces the hand placings: one undo step puts
  // them back and turns it off again.
  const EditPtr edit = getVob() ? getVob()->getEdit() : EditPtr();
  if (on && view_ && view_->manualPositioning() && edit) edit->makeBackup(AutoPositionUndo::of(edit.get()));
  setAutoPosition(on);
}

void FXGraphTool::setAutoPosition(bool on) {
  Glib::UpdateDeferrer deferrer;
  if (view_ && !view_->manualPositioning() != on) {
    view_->manualPositioningValue() = !on;
    view_->recalcNodeList(true);
  }
  updateTidyButton();
  prefs().setPreference(autoPositionKey, on);
}

void FXGraphTool::updateTidyButton() {
  if (!tidyButton_ || !view_) return;
  if (tidyButton_->isActive() != view_->manualPositioning()) tidyButton_->setActive(view_->manualPositioning(), true);
}

bool FXGraphTool::handleZoom(int direction) {
  if (!view_) return true;
  const double zoom = view_->getZoom();
  view_->setViewZoom(direction < 0 ? zoom * 3 * 0.25 : zoom * 4 / 3);
  view_->redraw();
  return true;
}

void FXGraphTool::toggleTemplates() {
  Drawable::disableRedraws();
  templatesVisible_ = !templatesVisible_;
  prefs().setPreference(templatesKey, templatesVisible_);
  int w = width();
  if (!templatesVisible_) {
    if (templatesList_) {
      w -= templatesList_->width() + borderSize();
      removeWidget(templatesList_, true);
      templatesList_ = nullptr;
    }
  } else {
    initTemplatesListUI();
    if (templatesList_) w += templatesList_->width() + borderSize();
  }
  resize(w, height());
  Drawable::enableRedraws();
  reshapeAndDraw(unsetPoint);
  // What the panel covered before and no longer does shows again.
  GlobManager::invalidate();
}

bool FXGraphTool::runItemCommand(const LightweightString<char>& message) {
  return GraphItemCommands::handle(getVob(), message, getPalette());
}

const TemplateMatcher& FXGraphTool::searchMatcher() const {
  static const VideoTemplateMatcher video;
  return video;
}

VobClient* FXGraphTool::popOutItem(EditGraphIterator& at, PopOutItem kind) {
  return GraphItemCommands::popOutItem(at, static_cast<GraphItemCommands::PopOutItem>(kind), getPalette());
}

VobClient* FXGraphTool::popOutItem(const EditPtr& edit, int channel, double time, PopOutItem kind) {
  return GraphItemCommands::popOutItem(edit, channel, time, static_cast<GraphItemCommands::PopOutItem>(kind),
                                       getPalette());
}

// -- saved state ------------------------------------------------------------------------

void FXGraphTool::dump(configb& record) const {
  Glob::dump(record);
  const EditPtr edit = getVob() ? getVob()->getEdit() : EditPtr();
  record.set("EDIT_COOKIE", edit ? edit->getCookie() : Cookie());
  record.set("GROUPID", getGroupName());
  record.set("CURRENT_TIME", getVob() ? getVob()->getCurrentTime(1) : 0.0);
  const XY<double> centre = view_ ? view_->getViewCentre() : XY<double>(0, 0);
  record.set("VIEW_CX", centre.x);
  record.set("VIEW_CY", centre.y);
  record.set("VIEW_ZOOM", view_ ? view_->getZoom() : initialZoom_);
  record.set("AUTO_POSITION", view_ && !view_->manualPositioning());
}

void FXGraphTool::load(const configb& record) {
  const Cookie cookie = record.getCookie("EDIT_COOKIE");
  const double time = record.getDouble("CURRENT_TIME", 0);
  if (record.has("VOB_GROUP_ID")) {
    const unsigned number = record.getUnsigned("VOB_GROUP_ID");
    if (!VobManager::open(this, number))
      if (Vob* made = VobManager::create(this, cookie, number)) made->storeCurrentTime(time);
  } else {
    const LightweightString<char> name = record.getText("GROUPID");
    if (!VobManager::open(this, name))
      if (Vob* made = VobManager::create(this, cookie, name)) made->storeCurrentTime(time);
  }
  // A zoom that is no number leaves the class-wide one as it was.
  if (const double zoom = record.getDouble("VIEW_ZOOM", initialZoom_); record.has("VIEW_ZOOM") && std::isfinite(zoom))
    initialZoom_ = zoom;
  // Kept as the layout named it; the view is deliberately not re-centred.
  restoredCentre_ = {record.getDouble("VIEW_CX", 0), record.getDouble("VIEW_CY", 0)};
  if (width() == 0 && height() == 0) {
    const XY<int> size = calcSize();
    resize(size.x, size.y);
  }
}
