// One on-screen node: identity, position, geometry, hit testing, the wire
// tables, connection editability and the title.
//
// Map
//   construction and identity ..... host graph node, locator, type colour
//   position ...................... own record kept in step with the stored one
//   geometry ...................... graph box, pixel box, pads, title bar, thumbnail
//   hit testing ................... translateMouseEvent
//   wires ......................... input and output tables
//   editability and title
//
// Spaces: getL/getB/getR/getT are graph units; every box and pad position is
// in view pixels (the view's own bottom-up pixels), via the view's
// graphToViewSpace.
#include "graph_nodes/FXGraphViewNode.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "graph_nodes/NodeView.h"
#include "host/config/Resources.h"
#include "host/config/StripColours.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/ui/Glob.h"
#include "host/ui/UifStd.h"

const XY<double> FXGraphViewNode::padSize_(0.01, 0.02);

namespace {

// Iterator option: positioned at a node, found from the roots.
// Title bar height, graph units.
constexpr double titleBarHeight = 0.025;

// Half away from zero, then truncated: the pixel box's own rounding.
int roundAway(double v) { return static_cast<int>(v + (v > 0 ? 0.5 : -0.5)); }

StripColourManager::StripType typeOf(const FXGraphNodeBase* node) {
  switch (nodeKindOf(node)) {
  case GraphNodeKind::material:
    return StripColourManager::material;
  case GraphNodeKind::image:
    return StripColourManager::image;
  case GraphNodeKind::alias:
    return StripColourManager::alias;
  case GraphNodeKind::background:
    return StripColourManager::matte;
  case GraphNodeKind::effect:
    // Mattes made by shaders colour as mattes.
    if (static_cast<const EffectInstance*>(node)->tagTypeId().startsWith("PixShader:Mattes:"))
      return StripColourManager::matte;
    return StripColourManager::effect;
  case GraphNodeKind::none:
    break;
  }
  return StripColourManager::effect;
}

} // namespace

// -- construction and identity --------------------------------------------------

FXGraphViewNode::FXGraphViewNode(NodeView* view, const EditGraphIterator& at)
    : view_(view), node_(at.getNode()), edit_(at.getCurrentPosEdit()) {
  pos_.addDrawFollower(this);
  typeColour_ = StripColourManager::getTypeColour(typeOf(node_.get()));
  makeLocator(at);
  if (node_) id_ = node_->getId();
  channelIndex_ = at.getChanIndex(-2);
  FXGraphNodeClient::registerWith(node_.get());
  if (held_ == 0) determineConnectionEditability(at);
}

FXGraphViewNode::~FXGraphViewNode() {
  // Stop listening before the records go (the stored one may live on).
  if (stored_) stored_->removeDrawFollower(this);
  pos_.removeDrawFollower(this);
  NodeUIRecClient::registerWith(nullptr);
  FXGraphNodeClient::registerWith(nullptr);
}

void FXGraphViewNode::makeLocator(const EditGraphIterator& at) {
  locator_.channel = at.getChanId(-2);
  locator_.inputNum = at.getParentInputNum();
  locator_.depth = at.getDepth();
}

void FXGraphViewNode::generalUpdateNotify() {
  // The view moves and rebuilds its nodes under their suspension; anyone
  // else's change shows at once.
  if (view_ && !pos_.notificationsSuspended()) view_->glob().redraw();
}

IdStamp FXGraphViewNode::getNodeID() const { return id_; }

void FXGraphViewNode::ensureNodeHValid() {
  if (node_ || !view_ || !view_->getEdit()) return;
  node_ = view_->getEdit()->openObject<FXGraphNodeBase>(id_);
  if (node_) FXGraphNodeClient::registerWith(node_.get());
}

bool FXGraphViewNode::getNodeActive() const {
  const auto* effect = dynamic_cast<const EffectInstance*>(node_.get());
  return !effect || effect->isActive();
}

EditGraphIterator FXGraphViewNode::getIterator() const {
  return view_ ? view_->getIteratorFor(id_, EditGraphIterator::atNode) : EditGraphIterator();
}

void FXGraphViewNode::generalUpdateNotification(const EffectModification&) { generalUpdateNotify(); }

void FXGraphViewNode::nodeRecUpdateNotify(const NotifyMsg&) { generalUpdateNotify(); }

// -- position -------------------------------------------------------------------
//
// The node's own record is its draw position; the stored record in the edit's
// position manager is what the layout writes and what is saved with the
// edit. Either may move; the other follows quietly (no "nodeRecUpdate").
// syncing_ stops the copy from echoing back.

bool FXGraphViewNode::setPosition(double x, double y, bool notify) {
  pos_.setDrawPosition(x, y, notify);
  return true;
}

void FXGraphViewNode::followStoredRecord(NodeUIPosRec* stored) {
  if (stored && stored == stored_.get()) return;
  if (stored_) stored_->removeDrawFollower(this);
  stored_.reset();
  if (!stored) {
    NodeUIRecClient::registerWith(&pos_);
    return;
  }
  stored_ = stored;
  NodeUIRecClient::registerWith(stored);
  storedMoved();
  stored->addDrawFollower(this);
}

void FXGraphViewNode::drawMoved(NodeUIPosRec& record) {
  if (&record == &pos_)
    ownMoved();
  else if (&record == stored_.get())
    storedMoved();
}

void FXGraphViewNode::ownMoved() {
  if (syncing_ || !stored_) return;
  syncing_ = true;
  stored_->setDrawPosition(pos_.getDrawPosition(), false);
  syncing_ = false;
}

void FXGraphViewNode::storedMoved() {
  if (syncing_ || !stored_) return;
  syncing_ = true;
  {
    NotificationsSuspended quiet(pos_);
    pos_.setDrawPosition(stored_->getDrawPosition(), false);
  }
  syncing_ = false;
}

// -- geometry -------------------------------------------------------------------

double FXGraphViewNode::getAspectRatio() const {
  VideoMetadata picture;
  picture.aspectCode = 2;
  return picture.aspectRatio();
}

double FXGraphViewNode::getL() const { return getPosition().x - halfWidth; }

double FXGraphViewNode::getR() const { return getPosition().x + halfWidth; }

// Half height: half a picture 0.125 wide, plus the margin.
double FXGraphViewNode::getT() const { return getPosition().y + 0.5 * (2 * halfWidth) / getAspectRatio() + margin; }

double FXGraphViewNode::getB() const { return getPosition().y - 0.5 * (2 * halfWidth) / getAspectRatio() - margin; }

FXGraphViewNode::GraphBox FXGraphViewNode::getBounds(bool pixels) const {
  if (!pixels || !view_) return {getL(), getB(), getR(), getT()};
  const XY<double> lb = view_->graphToViewSpace(XY<double>(getL(), getB()));
  const XY<double> rt = view_->graphToViewSpace(XY<double>(getR(), getT()));
  return {lb.x, lb.y, rt.x, rt.y};
}

FXGraphViewNode::PixelBox FXGraphViewNode::calcPixelExtents() const {
  if (!view_) return {};
  double l = 0, b = 0, r = 0, t = 0;
  view_->graphToViewSpace(getL(), getB(), l, b);
  view_->graphToViewSpace(getR(), getT(), r, t);
  // The top edge is not widened by a pixel, unlike the other three.
  return {roundAway(l) - 1, roundAway(b) - 1, roundAway(r) + 1, roundAway(t)};
}

XY<int> FXGraphViewNode::getInputPos(unsigned long i) const {
  // Pads are placed from the full input count; only hit testing cuts it.
  const unsigned n = node_ ? static_cast<uint8_t>(node_->getNumInputs()) : 0;
  const PixelBox box = calcPixelExtents();
  if (view_ && view_->getOrientation() == 0) {
    const double top = box.y1 - std::trunc(titleBarHeight * view_->getScale()); // below the title bar
    return {box.x0, static_cast<int>(top - (i + 1) * (top - box.y0) / (n + 1))};
  }
  return {box.x0 + static_cast<int>((i + 1) * static_cast<double>(box.x1 - box.x0) / (n + 1)), box.y0};
}

XY<int> FXGraphViewNode::getOutputPos(unsigned char i) const {
  // One slot more than there are wires, for the next wire to start from.
  const std::size_t m = outputs_.size() + 1;
  if (i >= m) return {-1, -1};
  const PixelBox box = calcPixelExtents();
  if (view_ && view_->getOrientation() == 0)
    return {box.x1, box.y1 - static_cast<int>((i + 1) * static_cast<double>(box.y1 - box.y0) / (m + 1))};
  return {box.x0 + static_cast<int>((i + 1) * static_cast<double>(box.x1 - box.x0) / (m + 1)), box.y1};
}

FXGraphViewNode::PixelBox FXGraphViewNode::getNodePadArea(XY<int> centre, PadType type) const {
  const int p = view_ ? static_cast<uint16_t>(view_->getScale() * padSize_.y) : 0;
  // Zoomed far out, pads vanish.
  if (p < 3) return {0, 0, 0, 0};
  PixelBox pad;
  pad.x0 = centre.x - p / 2;
  pad.y0 = centre.y - p / 2;
  pad.x1 = pad.x0 + p;
  pad.y1 = pad.y0 + p;
  // Only what lies outside the node's edge.
  if (view_->getOrientation() == 0) {
    if (type == eOutputPad)
      pad.x0 = pixelBox_.x1 + 1;
    else
      pad.x1 = pixelBox_.x0 - 1;
  } else {
    if (type == eOutputPad)
      pad.y0 = pixelBox_.y1 + 1;
    else
      pad.y1 = pixelBox_.y0 - 1;
  }
  return pad;
}

FXGraphViewNode::PixelBox FXGraphViewNode::getTitleBarRect() const {
  const int h = view_ ? static_cast<uint16_t>(view_->getScale() * titleBarHeight + 0.5) : 0;
  return {pixelBox_.x0 + 1, pixelBox_.y1 - h, pixelBox_.x1 - 1, pixelBox_.y1 - 1};
}

double FXGraphViewNode::getTotalInputSpace() const {
  if (!view_ || view_->getOrientation() != 0) return getR() - getL();
  const double scale = view_->getScale();
  return getT() - getB() - std::min(UifStd::getRowHeight() / scale, titleBarHeight) - 4 / scale;
}

FXGraphViewNode::PixelBox FXGraphViewNode::calcThumbArea() {
  const PixelBox& node = pixelBox_;
  int top = getTitleBarRect().y0;
  int bottom = node.y0 + 1;
  const double aspect = getAspectRatio();
  const int h = std::abs(top - bottom);
  const int wanted = static_cast<int>(std::lround(h * aspect));
  const int available = std::abs(node.x1 - node.x0) - 2;
  PixelBox thumb;
  if (available < wanted) {
    // Too narrow for the height: fill the width, keep the shape.
    thumb.x0 = node.x0 + 1;
    thumb.x1 = thumb.x0 + available;
    bottom = node.y0 + 1;
    top = bottom + static_cast<int>(std::lround(available / aspect));
  } else {
    thumb.x0 = node.x0 + static_cast<int>(std::abs(node.x1 - node.x0) / 2 - wanted / 2.0 + 0.5);
    thumb.x1 = thumb.x0 + wanted;
  }
  thumb.y0 = bottom;
  thumb.y1 = top;
  thumbBox_ = thumb;
  return thumb;
}

bool FXGraphViewNode::roomForThumbnail() const {
  if (thumbBox_.width() < 11) return false;
  return isVisible(thumbBox_);
}

bool FXGraphViewNode::isVisible(const PixelBox& box) const {
  if (!view_) return false;
  int l = std::min(box.x0, box.x1), b = std::min(box.y0, box.y1);
  int r = std::max(box.x0, box.x1), t = std::max(box.y0, box.y1);
  return view_->clipRectToView(l, b, r, t);
}

// -- hit testing ----------------------------------------------------------------

unsigned FXGraphViewNode::hitTestInputCount() const {
  unsigned n = node_ ? static_cast<uint8_t>(node_->getNumInputs()) : 0;
  // A node with many inputs offers only its connected ones and one more.
  if (n > 3) n = std::min<unsigned>(n, static_cast<unsigned>(inputs_.size() + 1));
  return n;
}

namespace {

// Whether the view pixel lies on the pad (its box grown by the widget gap),
// and how far from the box's centre, in whole pixels.
bool onPad(FXGraphViewNode::PixelBox pad, int x, int y, unsigned& distance) {
  // A vanished pad (zoomed far out) is never hit. A pad cut flat against the
  // node's edge is not vanished: grown by the gap it is a target like any.
  if (pad == FXGraphViewNode::PixelBox(0, 0, 0, 0)) return false;
  const int gap = UifStd::getWidgetGap();
  pad.x0 -= gap;
  pad.y0 -= gap;
  pad.x1 += gap;
  pad.y1 += gap;
  if (!pad.contains(x, y)) return false;
  const int cx = pad.x0 + (pad.x1 - pad.x0) / 2;
  const int cy = pad.y0 + (pad.y1 - pad.y0) / 2;
  const double dx = x - cx, dy = y - cy;
  distance = static_cast<uint16_t>(std::sqrt(dx * dx + dy * dy));
  return true;
}

} // namespace

int FXGraphViewNode::translateMouseEvent(int x, int y, int& index) const {
  if (!node_) return eNothing;
  if (roomForInputs()) {
    // On equal distance the lower index keeps the pad: only closer takes it.
    const unsigned inputs = hitTestInputCount();
    if (inputsEditable_ && inputs != 0) {
      unsigned best = 1000;
      int taken = -1;
      for (unsigned i = 0; i < inputs; ++i) {
        unsigned d = 0;
        if (onPad(getNodePadArea(getInputPos(i), eInputPad), x, y, d) && d < best) {
          best = d;
          taken = static_cast<int>(i);
        }
      }
      if (taken >= 0) {
        index = taken;
        return eInput;
      }
    }
    unsigned best = 1000;
    int taken = -1;
    for (std::size_t i = 0; i <= outputs_.size(); ++i) {
      if (!isOutputEditable(static_cast<int>(i))) continue;
      unsigned d = 0;
      if (onPad(getNodePadArea(getOutputPos(static_cast<unsigned char>(i)), eOutputPad), x, y, d) && d < best) {
        best = d;
        taken = static_cast<int>(i);
      }
    }
    if (taken >= 0) {
      index = taken;
      return eOutput;
    }
  }
  if (!view_) return eNothing;
  double l = 0, b = 0, r = 0, t = 0;
  view_->graphToViewSpace(getL(), getB(), l, b);
  view_->graphToViewSpace(getR(), getT(), r, t);
  return x >= l && x <= r && y >= b && y <= t ? eBody : eNothing;
}

// -- wires ----------------------------------------------------------------------

bool FXGraphViewNode::connectInput(int i, FXGraphViewNode* source) {
  if (!source) return false;
  const int j = source->addOutputConnection(this, i);
  inputs_[i] = {j, source};
  return true;
}

int FXGraphViewNode::addOutputConnection(FXGraphViewNode* destination, int input) {
  const int existing = findOutputConnectFor(destination, input);
  if (existing >= 0) return existing;
  const int j = static_cast<int>(outputs_.size());
  outputs_[j] = {input, destination};
  return j;
}

void FXGraphViewNode::disconnectInput(int i) {
  // The slot stays, empty, holding its own index.
  inputs_[i] = {i, nullptr};
}

void FXGraphViewNode::disconnectOutput(int i) {
  // Unlike an input, the entry goes; the other node's input is left alone.
  outputs_.erase(i);
}

void FXGraphViewNode::initConnections() {
  inputs_.clear();
  outputs_.clear();
}

FXGraphViewNode* FXGraphViewNode::getInputConnect(int i) const {
  auto it = inputs_.find(i);
  return it == inputs_.end() ? nullptr : it->second.node;
}

FXGraphViewNode* FXGraphViewNode::getOutputConnect(int i) const {
  auto it = outputs_.find(i);
  return it == outputs_.end() ? nullptr : it->second.node;
}

int FXGraphViewNode::findInputConnectFor(const FXGraphViewNode* node, int i) const {
  for (const auto& [key, entry] : inputs_)
    if (entry.node == node && entry.index == i) return key;
  return -1;
}

int FXGraphViewNode::findOutputConnectFor(const FXGraphViewNode* node, int i) const {
  for (const auto& [key, entry] : outputs_)
    if (entry.node == node && entry.index == i) return key;
  return -1;
}

// -- editability and title --------------------------------------------------------

void FXGraphViewNode::determineConnectionEditability(const EditGraphIterator& at) {
  inputsEditable_ = true;
  outputEditable_ = true;
  Ux::Ptr<FXGraphNodeBase> here = at.getNode();
  if (!here) return;
  // An alias's input is not the user's to rewire.
  if (dynamic_cast<AliasedInputEffect*>(here.get())) {
    inputsEditable_ = false;
    return;
  }
  // A locked effect on the way to the root locks this node's inputs, and its
  // output too when the lock is further up.
  EditGraphIterator up = at;
  do {
    Ux::Ptr<FXGraphNodeBase> n = up.getNode();
    const auto* effect = dynamic_cast<const EffectInstance*>(n.get());
    if (effect && !effect->isConnectionEditable()) {
      inputsEditable_ = false;
      if (n->getId() != here->getId()) outputEditable_ = false;
    }
  } while (up.moveBack());
}

void FXGraphViewNode::determineConnectionEditability(bool lockedAbove) {
  inputsEditable_ = true;
  outputEditable_ = true;
  if (!node_) return;
  if (dynamic_cast<AliasedInputEffect*>(node_.get())) {
    inputsEditable_ = false;
    return;
  }
  const auto* effect = dynamic_cast<const EffectInstance*>(node_.get());
  if (lockedAbove) inputsEditable_ = outputEditable_ = false;
  if (effect && !effect->isConnectionEditable()) inputsEditable_ = false;
}

bool FXGraphViewNode::isOutputEditable(int i) const {
  if (!outputEditable_) return false;
  const FXGraphViewNode* fed = getOutputConnect(i);
  if (!fed) return true;
  // A wire into an alias may not be moved.
  return !dynamic_cast<const AliasedInputEffect*>(fed->graphNode().get());
}

bool FXGraphViewNode::isEquivalentTo(const EditGraphIterator& at) const {
  if (!at.isValid()) return false;
  Ux::Ptr<FXGraphNodeBase> n = at.getNode();
  return n && n->getId() == getNodeID();
}

LightweightString<wchar_t> FXGraphViewNode::getTitleStr() const {
  if (!node_) return paddedResourceStrW(10007, "<", ">");
  LightweightString<wchar_t> title;
  if (locator_.channel.valid() && edit_) {
    title = edit_->getChanDisplayName(locator_.channel, 1);
    title += L" : ";
  }
  title += node_->getName();
  return title;
}

Colour FXGraphViewNode::getMainCol() const { return typeColour_; }
