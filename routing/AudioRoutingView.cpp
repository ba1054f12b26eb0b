#include "routing/AudioRoutingView.h"

#include <algorithm>

#include "host/edit/EditGraphIterator.h"
#include "host/edit/EditInfo.h"
#include "host/ui/EffectMenuItems.h"
#include "host/ui/Event.h"
#include "host/ui/Glob.h"

AudioRoutingView::AudioRoutingView(const InitArgs& args)
    : StandardPanel(args), monitor_(args.monitor), singleRow_(args.singleRow) {
  setBorder(Border{0, 0, 15});
  if (monitor_) {
    track_ = monitor_->getTrackID();
    monitor_->registerForChangeNotifications(this, true);
  }
  table_ = new TableWidget(*this, {width(), height()});
  addChild(table_, BottomLeft(0, 0));
  initForSegment();
}

AudioRoutingView::~AudioRoutingView() {
  if (monitor_) monitor_->registerForChangeNotifications(this, false);
  // The table asks this adaptor while it goes: it goes first.
  removeChild(table_, true);
  table_ = nullptr;
}

int AudioRoutingView::getNumNodes() const {
  if (singleRow_) return 1;
  return monitor_ ? monitor_->getNumComponents(CompoundEffectMonitor::chainEffects) : 0;
}

Ux::Ptr<EffectInstance> AudioRoutingView::getNode(int row) const {
  return monitor_ ? monitor_->getEffect(row) : nullptr;
}

IdStamp AudioRoutingView::getNodeID(int row) const {
  const int n = getNumNodes();
  if (n == 0 || row < 0) return IdStamp();
  if (row < n) {
    const Ux::Ptr<EffectInstance> effect = getNode(row);
    return effect ? effect->getId() : IdStamp();
  }
  if (row == n) {
    const Ux::Ptr<EffectInstance> last = getNode(n - 1);
    return last ? last->getInputTrackId(0) : IdStamp();
  }
  return IdStamp();
}

bool AudioRoutingView::canMove(const EffectInstance* effect) { return effect && effect->tagTypeId() != crossfadeTag; }

bool AudioRoutingView::canMove(int row) const { return row >= 0 && row < getNumNodes() && canMove(getNode(row).get()); }

int AudioRoutingView::getSize() const {
  const int n = getNumNodes();
  return n > 0 ? n + 1 : 0;
}

LightweightString<wchar_t> AudioRoutingView::getFieldText(const TableCell& cell) const {
  if (cell.row >= 0 && cell.row < getNumNodes()) {
    const Ux::Ptr<EffectInstance> effect = getNode(cell.row);
    return effect ? effect->getDescription() : LightweightString<wchar_t>();
  }
  return segmentName_;
}

std::vector<ColumnDefinition> AudioRoutingView::getColumnDefinitions() const {
  ColumnDefinition column;
  column.titleResource = noResource;
  return {column};
}

bool AudioRoutingView::canSwap(int a, int b) const { return canMove(a) && canMove(b); }

void AudioRoutingView::swapFields(int a, int b, int) {
  const int lo = std::min(a, b), hi = std::max(a, b);
  if (!canSwap(hi, lo)) return;
  const EditPtr e = edit();
  if (!e || !vob()) return;
  const IdStamp idLo = getNodeID(lo), idHi = getNodeID(hi), idAfter = getNodeID(hi + 1);
  const Ux::Ptr<EffectInstance> before = lo > 0 ? getNode(lo - 1) : nullptr;
  const Ux::Ptr<EffectInstance> atLo = getNode(lo), atHi = getNode(hi);
  if (!atLo || !atHi) return;
  {
    EasyBackup step(e);
    // hi follows what came before lo: the channels' heads, or the effect above.
    if (lo == 0) {
      for (const IdStamp& channel : e->getGroupContainingChan(track_)) {
        const CelEventPair segment(e, e->findChan(channel), vob()->getCurrentTime());
        if (segment.valid()) segment.getEffectHandle().setEffectGraph(idHi);
      }
    } else if (before) {
      before->setInputTrackId(0, idHi, false);
    }
    atHi->setInputTrackId(0, idLo, false);
    atLo->setInputTrackId(0, idAfter, true);
  }
  changed(EditModification::structure);
}

bool AudioRoutingView::handleMouseClickEvent(const TableCell& cell, const Event& e) {
  if (!mouse_left_event(e) || !mouse_up_event(e) || isMouseMoveSignificant(e)) return false;
  if (cell.row < 0 || cell.row >= getNumNodes()) return false;
  const Ux::Ptr<EffectInstance> effect = getNode(cell.row);
  if (!effect || !edit()) return false;
  {
    EasyBackup step(edit());
    effect->startBatchChange(
        EffectModification(IdStamp(999, 999, 999), EffectModification::eParams, effect->getId(), IdStamp(), 1));
    effect->setActive(!effect->isActive());
    effect->endBatchChange();
  }
  changed(EditModification::effectActive);
  return true;
}

Colour AudioRoutingView::getColourFor(int row, const Palette& palette) const {
  // Bypassed effects show darker; the source row stands apart.
  if (row >= getNumNodes()) return palette.window(4);
  const Ux::Ptr<EffectInstance> effect = getNode(row);
  if (effect && !effect->isActive()) return palette.window(5);
  return iTableAdaptor::getColourFor(row, palette);
}

bool AudioRoutingView::drawField(const TableCell& cell, Glob& glob, const Ux::Box<int>& box) {
  if (cell.row < 0 || cell.row >= getNumNodes()) return false;
  const Ux::Ptr<EffectInstance> effect = getNode(cell.row);
  if (!effect || effect->isActive()) return false;
  // A bypassed effect's name is greyed and tagged, so that the row reads as
  // off without knowing what the darker shade means.
  const int tagWidth = std::min((box.x1 - box.x0) / 3, 80);
  const Glob::PixelBox tag{box.x1 - tagWidth - 2, box.y0 + 2, box.x1 - 2, box.y1 - 2};
  glob.drawText({box.x0 + 4, box.y0, tag.x0 - 4, box.y1}, getFieldText(cell), Colour(0.5, 0.5, 0.5), {}, 0);
  glob.drawRect(tag, Colour(0.12, 0.12, 0.12));
  glob.drawText(tag, L"bypassed", Colour(1.0, 0.8, 0.3), {}, 1);
  return true;
}

void AudioRoutingView::changed(int kind) {
  const EditPtr e = edit();
  if (!e) return;
  e->setDirty(true);
  // Every view of the edit follows, this table among them (through the monitor).
  e->addModification({EditModification(kind, IdStamp(), true)}, true);
  if (table_) table_->refresh(true);
}

LightweightString<wchar_t> AudioRoutingView::getSegmentName(const CelEventPair& segment) const {
  if (segment.valid() && !segment.isBlack() && !segment.isEffect()) {
    const EditInfo info(convertCookie(segment.stripCookie(), 69, 255));
    const LightweightString<wchar_t> name = info.getAttribW("name");
    if (!name.empty()) return name;
  }
  const EditPtr e = edit();
  return e ? e->getChanDisplayName(track_, 3) : LightweightString<wchar_t>();
}

void AudioRoutingView::setTrack(const IdStamp& track) {
  track_ = track;
  initForSegment();
}

void AudioRoutingView::initForSegment() {
  const EditPtr e = edit();
  segmentName_ = LightweightString<wchar_t>();
  if (e && vob()) segmentName_ = getSegmentName(CelEventPair(e, e->findChan(track_), vob()->getCurrentTime()));
  if (table_) table_->refresh(true);
}

void AudioRoutingView::handleCompoundEffectChanges(const EditModifications& modifications) {
  for (const EditModification& m : modifications.items) {
    if (!m.isAudioPlugin()) continue;
    for (int row = 0; row <= getNumNodes(); ++row)
      if (m.matches(getNodeID(row))) {
        initForSegment();
        return;
      }
  }
}

void AudioRoutingView::handleCompoundEffectChanges(const ChangeDescription& change) {
  if (change.structural || change.newTrack != change.oldTrack) initForSegment();
}

MenuItems AudioRoutingView::reviewMenu(const Event& e) {
  if (!table_ || !vob()) return {};
  const TableCell cell = table_->getCellForMouseEvent(e);
  if (cell.row < 0 || cell.row >= getNumNodes()) return {};
  const Ux::Ptr<EffectInstance> effect = getNode(cell.row);
  if (!effect) return {};
  EditGraphIterator at(edit(), vob()->getCurrentTime(), effect->getId(), EditGraphIterator::positionAtNode);
  if (!at.isValid()) return {};
  return EffectMenuItems::getItemsForComponent(at);
}

MenuItems AudioRoutingView::getMenuItems(const Event* e) {
  if (!e || !table_) return {};
  Event local = *e;
  local.position = e->screen - table_->screenPos();
  return reviewMenu(local);
}

void AudioRoutingView::resize(double w, double h) {
  StandardPanel::resize(w, h);
  if (table_) table_->resize(width(), height());
  layoutChildren();
}
