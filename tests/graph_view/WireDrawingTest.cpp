// One frame of the view as the screen records it: the order of its layers,
// the curves of forward and backward wires in both orientations, the wires
// of a many-input node, the dragged wire.
#include <gtest/gtest.h>

#include "tests/graph_view/ViewInput.h"
#include "tests/support/ViewFixture.h"

namespace {

using viewtest::Frame;
using Curve = Glib::BezierCurveDescription;

const IdStamp source(3, 0, 1), dest(2, 0, 1), wide(2, 0, 2), first(3, 0, 2), fourth(3, 0, 3);

// V1: dest(source); V2: wide(first, -, -, fourth, -), five inputs and two
// wires. Wide offers inputs 0 to 2 only, so the wire into input 3 is never
// drawn: a frame has two wires.
EditPtr wiresEdit() {
  testsupport::EditBuilder b;
  for (const IdStamp& m : {source, first, fourth}) b.material(m);
  b.effect(dest, "colourcorrect", {source});
  b.effect(wide, "mix", {first, IdStamp(), IdStamp(), fourth, IdStamp()});
  b.channel(IdStamp(1, 0, 1), L"V1", dest);
  b.channel(IdStamp(1, 0, 2), L"V2", wide);
  return b.edit();
}

Curve curve(XY<int> start, XY<int> end, XY<int> c1, XY<int> c2) {
  Curve c;
  c.start = start, c.end = end, c.control1 = c1, c.control2 = c2;
  return c;
}

class WireDrawing : public ::testing::Test {
protected:
  testsupport::ViewFixture fx{wiresEdit(), {640, 480}};
  FXGraphView& view = fx.view();
  viewtest::Pads pads{view};
  XY<int> a, b, m; // the wire source -> dest: output pad, input pad, their middle

  void SetUp() override { viewtest::showWholeGraph(view, 50); }
  void place(double dx, double dy) {
    const XY<double> at = pads.node(dest)->getPosition();
    pads.node(source)->setPosition(at.x + dx, at.y + dy, true);
    view.redraw();
    a = pads.out(source, 0), b = pads.in(dest, 0), m = {(a.x + b.x) / 2, (a.y + b.y) / 2};
  }
  // The wire is drawn as these curves twice: as its outline, then in its own colour.
  void expectWire(const std::vector<Curve>& shape) {
    std::vector<Curve> drawn;
    for (const auto& [i, c] : Frame(view).curves())
      for (const Curve& want : shape)
        if (c.start == want.start && c.end == want.end) drawn.push_back(c);
    ASSERT_EQ(drawn.size(), 2 * shape.size());
    for (std::size_t k = 0; k < drawn.size(); ++k) {
      const Curve& want = shape[k % shape.size()];
      EXPECT_EQ(drawn[k].control1, want.control1) << k;
      EXPECT_EQ(drawn[k].control2, want.control2) << k;
      EXPECT_EQ(drawn[k].thickness,
                view.getEdgeThickness(k < shape.size() ? FXGraphView::eHighlightEdge : FXGraphView::eNormalEdge));
    }
  }
};

TEST_F(WireDrawing, ForwardAndBackwardWiresInBothOrientations) {
  const int d = 25; // half a node width at 400 pixels a unit
  // Left to right. Forward: one curve, also with the output level with the input.
  place(-0.1875, 0);
  ASSERT_LT(a.x, b.x);
  expectWire({curve(a, b, {m.x, a.y}, {m.x, b.y})});
  place(-0.13, 0.05);
  ASSERT_EQ(a.x, b.x);
  expectWire({curve(a, b, {m.x, a.y}, {m.x, b.y})});
  // Backward: out to the right, in from the left, through the middle.
  place(0.2, 0.05);
  expectWire({curve(a, m, {a.x + d, a.y}, {a.x + d, m.y}), curve(m, b, {b.x - d, m.y}, {b.x - d, b.y})});

  // Bottom to top: turned, the source is above its destination (backward).
  view.setOrientation(VidRouting::Orientations::BottomToTop, false);
  place(-0.05, 0.2);
  ASSERT_GT(a.y, b.y);
  expectWire({curve(a, m, {a.x, a.y + d}, {m.x, a.y + d}), curve(m, b, {m.x, b.y - d}, {b.x, b.y - d})});
  place(0.1, -0.25);
  ASSERT_LT(a.y, b.y);
  expectWire({curve(a, b, {a.x, m.y}, {b.x, m.y})});
}

TEST_F(WireDrawing, BackgroundOutlinesNodesWires) {
  const XY<int> intoDest = pads.in(dest, 0), o = view.screenPos();
  const Frame f(view);
  const auto w = view.getWindowPos();
  const auto* background = std::get_if<Glib::RectDescription>(&f.drawn.at(0).primitive);
  ASSERT_TRUE(background);
  EXPECT_EQ(background->box, Glib::PixelBox(w.x0 + o.x, w.y0 + o.y, w.x1 + o.x, w.y1 + o.y));
  EXPECT_EQ(background->colour, fromColour(view.getPalette().window(3)));

  // Outlines in a darker shade of the feeding node's colour, then the
  // nodes, then the wires in that colour.
  const int outline = view.getEdgeThickness(FXGraphView::eHighlightEdge);
  std::vector<std::size_t> outlines, wires;
  for (const auto& [i, c] : f.curves()) {
    const bool isOutline = c.thickness == outline;
    (isOutline ? outlines : wires).push_back(i);
    const Colour feeder = pads.node(c.end == intoDest ? source : first)->getMainCol();
    EXPECT_EQ(c.colour, fromColour(isOutline ? Palette(feeder).window(6) : feeder)) << i;
  }
  ASSERT_EQ(outlines.size(), 2u);
  ASSERT_EQ(wires.size(), 2u);
  // Between them the preview (under the graph) and the primary's highlight.
  for (std::size_t i = 1; i < outlines.front(); ++i)
    EXPECT_TRUE(std::holds_alternative<Glib::RectDescription>(f.drawn[i].primitive) ||
                std::holds_alternative<Glib::ImageDescription>(f.drawn[i].primitive))
        << "the preview and the primary's highlight";
  for (const auto& n : view.nodes()) {
    const FXGraphViewNode::PixelBox nb = n->pixelBox();
    const Glib::PixelBox box(nb.x0 + o.x, nb.y0 + o.y, nb.x1 + o.x, nb.y1 + o.y);
    std::size_t inside = 0;
    for (std::size_t i = 0; i < f.drawn.size(); ++i) {
      const auto* r = std::get_if<Glib::RectDescription>(&f.drawn[i].primitive);
      if (!r || !box.contains(r->box.x0, r->box.y0) || !box.contains(r->box.x1, r->box.y1)) continue;
      EXPECT_TRUE(i > outlines.back() && i < wires.front()) << i;
      ++inside;
    }
    EXPECT_GT(inside, 0u) << n->getNodeID().asString().str();
  }
}

TEST_F(WireDrawing, APickedUpWireIsDrawnOnceAsTheDraggedWire) {
  const XY<int> input = pads.in(dest, 0);
  testsupport::click(input);
  ASSERT_TRUE(view.dragAnchor());
  // From the source's output to the mouse, still on the input.
  const Frame there(view);
  ASSERT_EQ(there.curvesEndingAt(input), 1u);
  for (const auto& [i, c] : there.curves())
    if (c.end == input) {
      EXPECT_EQ(c.start, view.dragFixedEnd() + view.screenPos());
    }
  testsupport::moveTo(input + XY<int>{40, 30});
  const Frame f(view);
  EXPECT_EQ(f.curvesEndingAt(input), 0u);
  EXPECT_EQ(f.curvesEndingAt(input + XY<int>{40, 30}), 1u);
}

} // namespace
