// How a node paints itself on the view's canvas: framed box, pads, title bar
// with the title, input labels and thumbnail. Boxes are view pixels; the
// geometry is the node's own (FXGraphViewNode.cpp). The wires are the view's.
#include <algorithm>
#include <cmath>
#include <cstdint>

#include "graph_nodes/FXGraphViewNode.h"
#include "graph_nodes/NodeView.h"
#include "host/config/StripColours.h"
#include "host/ui/Glob.h"
#include "host/ui/UifStd.h"

namespace {

// Iterator option: positioned at a node, found from the roots.
// Title bar (and input label) height, graph units.
constexpr double titleBarHeight = 0.025;
const Colour inactiveText(0.2, 0.2, 0.2);

FXGraphViewNode::PixelBox shrunk(FXGraphViewNode::PixelBox b, int by) {
  return {b.x0 + by, b.y0 + by, b.x1 - by, b.y1 - by};
}

// A bypassed effect must read as such at any zoom, where a greyer title
// alone is lost: its picture is washed out, its box hatched, and where the
// text can be read it carries a "bypassed" tag.
void drawBypassed(NodeView& view, const FXGraphViewNode::PixelBox& box, const FXGraphViewNode::PixelBox* thumb) {
  Glob& glob = view.glob();
  if (thumb) glob.drawRect(*thumb, Colour(0.45, 0.45, 0.45, 0.7));
  CanvasRenderer renderer = glob.canvas().renderer();
  const int height = box.y1 - box.y0;
  const int step = std::max(6, height / 7);
  Glib::LineDescription line;
  line.colour = {0.1, 0.1, 0.1, 0.45};
  line.thickness = height > 60 ? 2 : 1;
  // Rising lines x - y = k, each cut to the box.
  for (int k = box.x0 - box.y1 + step / 2; k < box.x1 - box.y0; k += step) {
    const int xa = std::max(box.x0, box.y0 + k), xb = std::min(box.x1, box.y1 + k);
    if (xa >= xb) continue;
    line.from = {xa, xa - k};
    line.to = {xb, xb - k};
    renderer.renderPrimitive(line);
  }
  renderer.addModifiedArea(box);
  const int tagHeight = static_cast<int>(view.getScale() * titleBarHeight);
  const int width = box.x1 - box.x0;
  if (tagHeight < 9 || width < 40) return;
  const XY<int> mid = thumb ? XY<int>((thumb->x0 + thumb->x1) / 2, (thumb->y0 + thumb->y1) / 2)
                            : XY<int>((box.x0 + box.x1) / 2, box.y0 + height / 3);
  const FXGraphViewNode::PixelBox tag{mid.x - width * 3 / 8, mid.y - tagHeight / 2, mid.x + width * 3 / 8,
                                      mid.y - tagHeight / 2 + tagHeight};
  glob.drawRect(tag, Colour(0.12, 0.12, 0.12, 0.85));
  view.drawText(tag, L"bypassed", Colour(1.0, 0.8, 0.3), getDefaultFontName(0));
}

} // namespace

void FXGraphViewNode::draw() {
  ensureNodeHValid();
  pixelBox_ = calcPixelExtents();
  if (!view_ || !isVisible(pixelBox_)) {
    drawnLast_ = false;
    return;
  }
  drawnLast_ = true;
  const Palette palette(getMainCol());
  PixelBox box = pixelBox_;
  view_->glob().drawFrame(box, palette.window(6), 1);
  if (!hasThumbnail()) {
    // A node without a picture reads as a double frame.
    box = shrunk(box, 1);
    view_->glob().drawFrame(box, palette.window(2), 1);
  }
  box = shrunk(box, 1);
  view_->glob().drawRect(box, getMainCol());
  drawInputs(false, true);
  drawOutputs();
  drawTitleBar(false);
  calcThumbArea();
  if (hasThumbnail()) {
    if (roomForThumbnail()) {
      drawThumbnailBorder();
      drawThumbnail();
    }
  } else if (inputsEditable_) {
    // Where a thumbnail would be, the inputs are named.
    drawInputs(true, false);
  }
  if (!getNodeActive()) {
    const bool picture = hasThumbnail() && roomForThumbnail();
    drawBypassed(*view_, pixelBox_, picture ? &thumbBox_ : nullptr);
  }
}

void FXGraphViewNode::drawThumbnail() {
  EditGraphIterator at = getIterator();
  if (!at.isValid() && view_) at = view_->getIteratorFor(locator_.channel, EditGraphIterator::atNode);
  if (at.isValid()) drawThumbnail(at);
  lastThumbTime_ = at.getTime();
}

void FXGraphViewNode::drawThumbnail(const EditGraphIterator&) {}

bool FXGraphViewNode::pictureColourAtMiddle(const UxImage* picture, Colour& out) const {
  const PixelBox& box = thumbBox_;
  if (!picture || picture->width() <= 0 || picture->height() <= 0 || box.width() <= 0 || box.height() <= 0)
    return false;
  // The box's middle pixel (view pixels, bottom-up), as a place in the
  // picture (columns from the left, rows from the top), scaled when the
  // picture was made for another size.
  const int x = (box.x0 + box.x1) / 2 - std::min(box.x0, box.x1);
  const int row = std::max(box.y0, box.y1) - 1 - (box.y0 + box.y1) / 2;
  const int px = std::clamp(x * picture->width() / box.width(), 0, picture->width() - 1);
  const int py = std::clamp(row * picture->height() / box.height(), 0, picture->height() - 1);
  out = picture->pixel(px, py);
  return true;
}

void FXGraphViewNode::drawThumbnailBorder() {
  const PixelBox& t = thumbBox_;
  view_->glob().drawFrame({t.x0 - 1, t.y0 - 1, t.x1 + 1, t.y1 + 1}, Palette(getMainCol()).window(6), 1);
}

Colour FXGraphViewNode::getTitleBarColour() const {
  // Over a picture the title bar stands out lighter.
  return hasThumbnail() ? getMainCol().scaled(1.1) : getMainCol();
}

void FXGraphViewNode::drawTitleBar(bool) {
  const PixelBox rect = getTitleBarRect();
  if (!view_ || !isVisible(rect)) return;
  const Colour colour = getTitleBarColour();
  view_->glob().drawRect(rect, colour);
  // A darker line along its bottom edge sets the bar off from the picture.
  if (hasThumbnail()) view_->glob().drawRect({rect.x0, rect.y0, rect.x1, rect.y0 + 1}, colour.scaled(0.4));
  // Text margin: a quarter of the title bar's height on either side.
  const int margin = static_cast<int>(view_->getScale() * titleBarHeight / 4);
  view_->drawText({rect.x0 + margin, rect.y0, rect.x1 - margin, rect.y1}, getTitleStr(),
                  getNodeActive() ? nodeTextColour() : inactiveText, getDefaultFontName(0));
}

namespace {
// Pad radius, view pixels: below 3 no pad is drawn.
int padRadius(double scale) {
  return std::min(UifStd::getWidgetGap(), static_cast<int>(scale * FXGraphViewNode::padSize_.y + 0.5));
}
} // namespace

void FXGraphViewNode::drawOutputs() {
  if (!roomForInputs()) return;
  const std::size_t n = outputs_.size();
  for (std::size_t i = 0; i < n; ++i)
    drawConnectionPad(getOutputPos(static_cast<unsigned char>(i)), getOutputConnect(static_cast<int>(i)), eOutputPad);
  // The spare slot, for the next wire.
  drawConnectionPad(getOutputPos(static_cast<unsigned char>(n)), nullptr, eOutputPad);
}

Colour FXGraphViewNode::getPadCol(bool input) const {
  if (input) return view_ ? view_->glob().getCol() : Palette::schemeWindow();
  return view_ && view_->getOrientation() != 0 ? getTitleBarColour() : getMainCol();
}

Colour FXGraphViewNode::getPadOutlineCol(bool input) const { return Palette(getPadCol(input)).window(7); }

void FXGraphViewNode::drawConnectionPad(XY<int> position, FXGraphViewNode* other, PadType type) {
  if (!view_) return;
  const int r = padRadius(view_->getScale());
  if (r < 3) return;
  const bool input = type == eInputPad;
  // On the node's edge.
  if (view_->getOrientation() != 0)
    position.y = input ? pixelBox_.y0 + 1 : pixelBox_.y1;
  else
    position.x = input ? pixelBox_.x0 + 1 : pixelBox_.x1;
  // A connected input takes the colour of the node that feeds it.
  const Colour colour = input && other ? other->getMainCol() : getPadCol(input);
  const Palette shades(colour);
  CanvasRenderer renderer = view_->glob().canvas().renderer();
  Glib::DiscDescription disc;
  disc.centre = position;
  disc.radius = r;
  disc.colour = fromColour(shades.window(6));
  renderer.renderPrimitive(disc);
  disc.outline = true;
  disc.colour = fromColour(shades.window(7));
  renderer.renderPrimitive(disc);
  renderer.addModifiedArea({position.x - r, position.y - r, position.x + r + 1, position.y + r + 1});
}

void FXGraphViewNode::drawInputs(bool labels, bool pads) {
  if (!roomForInputs() || !node_ || !view_) return;
  const unsigned n = static_cast<uint8_t>(node_->getNumInputs());
  if (n == 0) return;
  const int r = padRadius(view_->getScale());
  const int labelHeight = static_cast<int>(view_->getScale() * titleBarHeight);
  const int nodeWidth = pixelBox_.x1 - pixelBox_.x0;
  const Colour text = getNodeActive() ? getMainCol().scaled(0.2) : inactiveText;
  // Labels never overlap: each keeps to its share of the edge, the least
  // distance between neighbouring pads.
  const bool alongBottom = view_->getOrientation() != 0;
  int spacing = alongBottom ? 2 * nodeWidth : labelHeight;
  for (unsigned i = 1; i < n; ++i) {
    const XY<int> a = getInputPos(i - 1), b = getInputPos(i);
    const int d = std::abs(alongBottom ? b.x - a.x : b.y - a.y);
    if (d > 0) spacing = std::min(spacing, d);
  }
  for (unsigned i = 0; i < n; ++i) {
    const XY<int> p = getInputPos(i);
    if (pads) drawConnectionPad(p, getInputConnect(static_cast<int>(i)), eInputPad);
    if (!labels) continue;
    // The label sits inside the body, clear of the pad: above it with the
    // inputs along the bottom, to its right with the inputs down the left.
    PixelBox box;
    if (alongBottom) {
      box = {p.x - spacing / 2, p.y + r + 5, p.x + spacing / 2, p.y + r + 5 + labelHeight};
    } else {
      const int h = std::min(labelHeight, spacing);
      box = {p.x + r + 5, p.y - h / 2, pixelBox_.x1 - r - 5, p.y - h / 2 + h};
    }
    view_->drawText(box, node_->getInputName(i), text, "helv");
  }
}
