#pragma once
// Screen pixels of a graph view's pads and bodies, and the primitives of one
// frame of the view.
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "graph_view/FXGraphView.h"
#include "host/render/EffectTemplateSummary.h"
#include "host/ui/GlobManager.h"
#include "tests/support/TestEdit.h"
#include "tests/support/UiScreen.h"

// Points print as points in test failures.
template <class T>
void PrintTo(const XY<T>& p, std::ostream* os) {
  *os << "(" << p.x << ", " << p.y << ")";
}

namespace viewtest {

const IdStamp head(2, 0, 1), left(3, 0, 1), right(3, 0, 2), other(2, 0, 2), otherSource(3, 0, 3);

// V1: head(left, right); V2: other(otherSource, a free input).
inline EditPtr twoTrees(testsupport::EditBuilder b = {}) {
  for (const IdStamp& m : {left, right, otherSource}) b.material(m);
  b.effect(head, "mix", {left, right});
  b.effect(other, "pip", {otherSource, IdStamp()});
  b.channel(IdStamp(1, 0, 1), L"V1", head);
  b.channel(IdStamp(1, 0, 2), L"V2", other);
  return b.edit();
}

// The host's blur template, as the templates list offers it.
inline EffectTemplateSummary blurTemplate() {
  EffectTemplateSummary blur;
  blur.name = L"Blur";
  blur.tagTypeId = "PixShader:Blur:gaussian.fx";
  blur.numInputs = 1;
  return blur;
}

// Both orientations, for geometry tests, named in the test names.
inline auto bothOrientations() {
  return ::testing::Values(VidRouting::Orientations::LeftToRight, VidRouting::Orientations::BottomToTop);
}
inline std::string orientationName(const ::testing::TestParamInfo<VidRouting::Orientations::Orientation>& way) {
  return way.param == VidRouting::Orientations::LeftToRight ? "LeftToRight" : "BottomToTop";
}

// The whole graph, centred, at 8 x maxNodeSize pixels a graph unit, drawn
// (drawing caches the pixel boxes that hit testing reads).
inline void showWholeGraph(FXGraphView& view, int maxNodeSize) {
  view.setMaxNodeSize(maxNodeSize);
  view.setViewZoom(1);
  const FXGraphView::GraphBox e = view.getGraphExtents();
  view.setViewCentre((e.x0 + e.x1) / 2, (e.y0 + e.y1) / 2);
  view.redraw();
}

// Where the mouse finds things, on the screen, in the view's latest list.
class Pads {
public:
  explicit Pads(FXGraphView& view) : view_(view) {}
  Ux::Ptr<FXGraphViewNode> node(const IdStamp& id) const { return view_.findViewRecForNode(id); }
  XY<int> in(const IdStamp& id, int i) const { return at(node(id)->getInputPos(static_cast<unsigned long>(i))); }
  XY<int> out(const IdStamp& id, int i) const { return at(node(id)->getOutputPos(static_cast<unsigned char>(i))); }
  XY<int> body(const IdStamp& id) const {
    view_.redraw();
    const FXGraphViewNode::PixelBox b = node(id)->pixelBox();
    return at({(b.x0 + b.x1) / 2, (b.y0 + b.y1) / 2});
  }
  // A place of the view area at least 30 pixels from every node and from
  // the auto-scroll border.
  XY<int> nothing() const {
    view_.redraw();
    const auto w = view_.getWindowPos();
    for (int y = w.y0 + 30; y < w.y1 - 30; y += 10)
      for (int x = w.x0 + 30; x < w.x1 - 30; x += 10) {
        bool free = true;
        for (const auto& n : view_.nodes()) {
          const FXGraphViewNode::PixelBox b = n->pixelBox();
          free = free && !(x > b.x0 - 30 && x < b.x1 + 30 && y > b.y0 - 30 && y < b.y1 + 30);
        }
        if (free) return at({x, y});
      }
    ADD_FAILURE() << "no empty place in the view";
    return {};
  }

private:
  XY<int> at(XY<int> viewPixel) const {
    view_.redraw();
    return view_.screenPos() + viewPixel;
  }
  FXGraphView& view_;
};

// What the view itself draws in one frame (its scroll bars draw after it),
// in screen pixels.
struct Frame {
  explicit Frame(FXGraphView& view) {
    GlobManager::surface().setRecorder(&drawn);
    view.draw();
    GlobManager::surface().setRecorder(nullptr);
  }
  std::vector<std::pair<std::size_t, Glib::BezierCurveDescription>> curves() const {
    std::vector<std::pair<std::size_t, Glib::BezierCurveDescription>> out;
    for (std::size_t i = 0; i < drawn.size(); ++i)
      if (const auto* c = std::get_if<Glib::BezierCurveDescription>(&drawn[i].primitive)) out.emplace_back(i, *c);
    return out;
  }
  std::size_t curvesEndingAt(XY<int> end) const {
    std::size_t n = 0;
    for (const auto& [i, c] : curves()) n += c.end == end;
    return n;
  }
  std::vector<ScreenSurface::Recorded> drawn;
};

} // namespace viewtest
