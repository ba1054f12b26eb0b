// One frame of the graph: background, wire outlines, nodes, wires in their
// own colours, and the wire being dragged. Outlines go before the nodes and
// the wires after them, so a wire shows over the boxes it crosses while its
// one-pixel-wider outline shows only beside them.
#include <algorithm>
#include <cmath>

#include "graph_view/FXGraphView.h"
#include "graph_view/HoverHints.h"
#include "graph_view/KeyboardFocus.h"
#include "graph_view/Navigator.h"
#include "graph_view/NodeFades.h"
#include "graph_view/SearchToAdd.h"
#include "graph_view/TemplateDrops.h"
#include "graph_view/ViewNotice.h"
#include "graph_view/ViewStills.h"
#include "host/draw/ScreenSurface.h"
#include "host/edit/FirstPathIndex.h"

void FXGraphView::draw() {
  // Each node's thumbnail asks for its place in the graph: one walk serves them all.
  FirstPathIndex paths;
  // The graph stays inside the view area: nodes half out of it do not spill
  // over the scroll bars and margins. A clip that someone set is kept.
  const PixelBox held = canvas().getClipRect();
  const bool unclipped = held.x1 == held.x0 || held.y1 == held.y0;
  if (unclipped) {
    const auto w = getWindowPos();
    canvas().setClipRect({w.x0, w.y0, w.x1, w.y1});
  }
  drawBackground();
  if (unclipped) canvas().setClipRect(held);
}

// The area a primitive touches, clipped to the canvas clip rectangle when
// one is set; whether anything of it is left to draw.
bool FXGraphView::drawArea(PixelBox area) {
  if (!canvas().isDrawable()) return false;
  const PixelBox& clip = canvas().getClipRect();
  if (clip.x1 != clip.x0 && clip.y1 != clip.y0) {
    area.x0 = std::max(area.x0, std::min(clip.x0, clip.x1));
    area.y0 = std::max(area.y0, std::min(clip.y0, clip.y1));
    area.x1 = std::min(area.x1, std::max(clip.x0, clip.x1));
    area.y1 = std::min(area.y1, std::max(clip.y0, clip.y1));
  }
  return area.x1 > area.x0 && area.y1 > area.y0;
}

void FXGraphView::redrawArea(PixelBox area) {
  const auto w = getWindowPos();
  area = {std::max(area.x0, w.x0), std::max(area.y0, w.y0), std::min(area.x1, w.x1), std::min(area.y1, w.y1)};
  if (area.x1 <= area.x0 || area.y1 <= area.y0) return;
  const PixelBox held = canvas().getClipRect();
  canvas().setClipRect(area);
  redraw();
  canvas().setClipRect(held);
}

Glob::PixelBox FXGraphView::damageOf(const FXGraphViewNode& node) const {
  // The box with room for its pads, the highlight and fade rings round it
  // and the name that small boxes show under them.
  const PixelBox b = node.calcPixelExtents();
  const int room = std::max({20, (b.x1 - b.x0) / 4 + 4, static_cast<int>(scale_ * 0.04) + 8});
  PixelBox area{b.x0 - room, b.y0 - room - 16, b.x1 + room, b.y1 + room};
  auto take = [&](XY<int> from, XY<int> to) {
    // A wire stays within the box of its end points, widened by how far a
    // backward wire swings out and by its thickness.
    const int swing = static_cast<int>(scale_ * 0.0625) + getEdgeThickness(eHighlightEdge) + 4;
    area.x0 = std::min({area.x0, from.x - swing, to.x - swing});
    area.y0 = std::min({area.y0, from.y - swing, to.y - swing});
    area.x1 = std::max({area.x1, from.x + swing, to.x + swing});
    area.y1 = std::max({area.y1, from.y + swing, to.y + swing});
  };
  for (const auto& [input, entry] : node.inputTable())
    if (entry.node) take(entry.node->getOutputPos(static_cast<unsigned char>(entry.index)), node.getInputPos(input));
  for (const auto& [output, entry] : node.outputTable())
    if (entry.node) take(node.getOutputPos(static_cast<unsigned char>(output)), entry.node->getInputPos(entry.index));
  return area;
}

void FXGraphView::drawBackground() {
  updateMinAndMaxPositions();
  const auto w = getWindowPos();
  const PixelBox view{w.x0, w.y0, w.x1, w.y1};
  if (drawArea(view)) {
    CanvasRenderer r = canvas().renderer();
    r.renderPrimitive(Glib::RectDescription{view, fromColour(getPalette().window(3))});
    r.addModifiedArea(view);
  }
  // A graph whose structure range lies wholly outside the edit is not drawn.
  if (structure_[0] != 1e99 && edit_ && !(edit_->getEndTime() > structure_[0] && structure_[1] > edit_->getStartTime()))
    return;
  // The preview first: the graph goes over it, never under.
  stills_->draw();
  drawPrimaryNodeHighlight();
  drawConnections(eHighlightEdge);
  drawNodes();
  drawConnections(eNormalEdge);
  fades_->draw();
  hints_->draw();
  keyboard_->draw();
  drops_->draw();
  drawDraggedConnection();
  navigator_->draw();
  hints_->drawTooltip();
  search_->draw();
  notice_->draw();
}

void FXGraphView::drawConnections(eEdgeType type) {
  // The wire picked up by a drag is not drawn where it was.
  const FXGraphViewNode* skipNode = nullptr;
  int skipInput = -1;
  if (interaction_.held.node) {
    if (interaction_.held.atInput) {
      skipNode = interaction_.held.node.get();
      skipInput = interaction_.held.pad;
    } else if (FXGraphViewNode* fed = interaction_.held.node->getOutputConnect(interaction_.held.pad)) {
      skipNode = fed;
      skipInput = fed->findInputConnectFor(interaction_.held.node.get(), interaction_.held.pad);
    }
  }
  const auto thickness = static_cast<unsigned short>(getEdgeThickness(type));
  for (const auto& node : nodes_) {
    if (!node->graphNode()) continue;
    auto n = static_cast<uint8_t>(node->graphNode()->getNumInputs());
    if (n > 2 && node->inputTable().size() + 1 < n) n = static_cast<uint8_t>(node->inputTable().size() + 1);
    for (int i = 0; i < n; ++i) {
      FXGraphViewNode* up = node->getInputConnect(i);
      if (!up) continue;
      const XY<int> in = node->getInputPos(static_cast<unsigned long>(i));
      const int j = up->findOutputConnectFor(node.get(), i);
      if (j < 0) continue;
      const XY<int> out = up->getOutputPos(static_cast<unsigned char>(j));
      if (node.get() == skipNode && i == skipInput) continue;
      Colour colour = up->getMainCol();
      if (type == eHighlightEdge) colour = Palette(colour).window(6);
      drawConnection(out, in, colour, thickness);
    }
  }
}

void FXGraphView::drawCurve(const XY<int>& start, const XY<int>& end, const XY<int>& c1, const XY<int>& c2,
                            const Colour& colour, unsigned short thickness) {
  PixelBox area{std::min({start.x, end.x, c1.x, c2.x}) - thickness, std::min({start.y, end.y, c1.y, c2.y}) - thickness,
                std::max({start.x, end.x, c1.x, c2.x}) + thickness, std::max({start.y, end.y, c1.y, c2.y}) + thickness};
  if (!drawArea(area)) return;
  CanvasRenderer r = canvas().renderer();
  r.renderPrimitive(Glib::BezierCurveDescription{fromColour(colour), start, end, c1, c2, thickness});
  r.addModifiedArea(area);
}

FXGraphView::WireCurves FXGraphView::wireCurves(const XY<int>& from, const XY<int>& to) const {
  const int ax = from.x, ay = from.y, bx = to.x, by = to.y;
  const int d = static_cast<int>(scale_ * 0.0625); // half a node width, pixels
  const int mx = (ax + bx) / 2, my = (ay + by) / 2;
  using P = XY<int>;
  if (orientation_ == VidRouting::Orientations::LeftToRight) {
    if (ax <= bx) return {{Curve{P{ax, ay}, P{bx, by}, P{mx, ay}, P{mx, by}}}, 1};
    // Backwards: out to the right of the output, in from the left of the input.
    return {{Curve{P{ax, ay}, P{mx, my}, P{ax + d, ay}, P{ax + d, my}},
             Curve{P{mx, my}, P{bx, by}, P{bx - d, my}, P{bx - d, by}}},
            2};
  }
  if (orientation_ == VidRouting::Orientations::BottomToTop && ay > by)
    return {{Curve{P{ax, ay}, P{mx, my}, P{ax, ay + d}, P{mx, ay + d}},
             Curve{P{mx, my}, P{bx, by}, P{mx, by - d}, P{bx, by - d}}},
            2};
  return {{Curve{P{ax, ay}, P{bx, by}, P{ax, my}, P{bx, my}}}, 1};
}

void FXGraphView::drawConnection(const XY<int>& from, const XY<int>& to, const Colour& colour,
                                 unsigned short thickness) {
  for (const Curve& c : wireCurves(from, to)) drawCurve(c[0], c[1], c[2], c[3], colour, thickness);
}

void FXGraphView::drawNodes() {
  // Drawing only part of the view says nothing of the nodes outside that part:
  // they keep what the last whole frame found.
  const PixelBox clip = canvas().getClipRect();
  const auto w = getWindowPos();
  const bool part = clip.x0 > w.x0 || clip.y0 > w.y0 || clip.x1 < w.x1 || clip.y1 < w.y1;
  // Pads, rings and names reach this far beyond a node's box.
  const int room = static_cast<int>(scale_ * 0.04) + 24;
  for (const auto& node : nodes_) {
    if (part) {
      // A node clear of the part is left alone, drawn or not as the last whole frame had it.
      const PixelBox b = node->calcPixelExtents();
      if (b.x1 + room < clip.x0 || b.x0 - room > clip.x1 || b.y1 + room < clip.y0 || b.y0 - room > clip.y1) continue;
    }
    node->draw();
    const PixelBox b = node->pixelBox();
    if (!part || (b.x1 >= clip.x0 && b.x0 <= clip.x1 && b.y1 >= clip.y0 && b.y0 <= clip.y1))
      node->setVisibleFlag(node->drawnLast());
  }
  drawNodeNames();
  // The channel cache remembers where each node was last drawn.
  for (const auto& node : nodes_) channelCache_[{node->getNodeID(), node->channelIndex()}] = node->getPosition();
}

void FXGraphView::drawPrimaryNodeHighlight() {
  for (const auto& node : nodes_) {
    if (!node->isPrimary()) continue;
    const PixelBox b = node->calcPixelExtents();
    const int glow = std::max(2, static_cast<int>(scale_ * 0.01));
    PixelBox halo{b.x0 - glow, b.y0 - glow, b.x1 + glow, b.y1 + glow};
    if (!drawArea(halo)) continue;
    CanvasRenderer r = canvas().renderer();
    r.renderPrimitive(Glib::RectDescription{halo, fromColour(Colour(0.95, 0.78, 0.25))});
    r.addModifiedArea(halo);
  }
}

void FXGraphView::drawDraggedConnection() {
  if (!interaction_.held.node) return;
  // From the fixed end to the mouse, with the same curve rules; drawn as
  // output to input whichever end is held.
  const XY<int> m = mouse_;
  const Colour colour = interaction_.held.node->getMainCol();
  const auto thickness = static_cast<unsigned short>(getEdgeThickness(eHighlightEdge));
  if (interaction_.held.atInput)
    drawConnection(m, interaction_.fixedEnd, colour, thickness);
  else
    drawConnection(interaction_.fixedEnd, m, colour, thickness);
}

void FXGraphView::drawNodeNames() {
  // Nodes show their titles in their title bars; once those are too small
  // to read, the names go under the boxes instead, while there is room.
  const int titleHeight = static_cast<int>(scale_ * 0.025 + 0.5);
  if (titleHeight >= 9 || scale_ * 0.125 < 40) return;
  for (const auto& node : nodes_) {
    if (!node->drawnLast()) continue;
    const PixelBox b = node->pixelBox();
    const int w = b.x1 - b.x0;
    drawText({b.x0 - w / 4, b.y0 - 14, b.x1 + w / 4, b.y0 - 2}, node->getTitleStr(), getPalette().text(), {}, 7);
  }
}

void FXGraphView::drawRing(const PixelBox& b, int away, int width, const Colour& colour) {
  for (int k = 0; k < width; ++k) {
    const PixelBox frame{b.x0 - k - away, b.y0 - k - away, b.x1 + k + away, b.y1 + k + away};
    if (!drawArea(frame)) continue;
    CanvasRenderer r = canvas().renderer();
    r.renderPrimitive(Glib::FrameDescription{frame, fromColour(colour), 1});
    r.addModifiedArea(frame);
  }
}

void FXGraphView::drawText(const PixelBox& box, const LightweightString<wchar_t>& text, const Colour& colour,
                           const LightweightString<char>& font, int pointSize) {
  if (!drawArea(box)) return;
  if (pointSize == 0) {
    // A size that keeps the line inside its box; below a readable size the
    // text is left out rather than drawn over its box.
    const int height = std::abs(box.y1 - box.y0);
    if (height < minTextHeight) return;
    pointSize = std::min(ScreenSurface::defaultPointSize, height * 3 / 5);
  }
  Glob::drawText(box, text, colour, font, 1, pointSize);
}

void FXGraphView::calcMorphologyExtents() {
  // The span over which the graph's structure holds: the cels of the roots
  // at the current time.
  structure_[0] = 1e99;
  if (!edit_) return;
  const double t = currentTime();
  double from = 1e99, to = -1e99;
  for (int i = 0; i < edit_->getNumChans(); ++i)
    if (const Cel* cel = edit_->getChan(i).celAt(t); cel && cel->kind == Cel::Kind::graph) {
      from = std::min(from, cel->start);
      to = std::max(to, cel->end);
    }
  if (from != 1e99) {
    structure_[0] = from;
    structure_[1] = to;
  }
}
