// Text the view draws is readable or not drawn at all, at every zoom and in
// both orientations: it fits its box, input labels keep apart, and the
// tooltip keeps inside the view, off the mouse, and goes when the view moves.
#include <gtest/gtest.h>

#include "graph_view/HoverHints.h"
#include "host/edit/EditFile.h"
#include "host/ui/HostClock.h"
#include "tests/graph_view/ViewInput.h"
#include "tests/support/Program.h"
#include "tests/support/ViewFixture.h"

namespace readabletest {

using Orientation = VidRouting::Orientations::Orientation;

std::vector<Glib::TextDescription> texts(FXGraphView& view) {
  const viewtest::Frame f(view);
  std::vector<Glib::TextDescription> out;
  for (const auto& r : f.drawn)
    if (const auto* t = std::get_if<Glib::TextDescription>(&r.primitive)) out.push_back(*t);
  return out;
}

bool overlap(const Glib::PixelBox& a, const Glib::PixelBox& b) {
  return std::max(a.x0, b.x0) < std::min(a.x1, b.x1) && std::max(a.y0, b.y0) < std::min(a.y1, b.y1);
}

class Readable : public ::testing::TestWithParam<Orientation> {};

TEST_P(Readable, TextFitsItsBoxAtEveryZoomOrIsLeftOut) {
  testsupport::ViewFixture fx{EditFile::load(testsupport::sourcePath("examples/promo.json")).edit, {640, 480}};
  FXGraphView& view = fx.view();
  view.setOrientation(GetParam(), true);
  for (const double zoom : {0.0, 0.1, 0.25, 0.5, 1.0}) {
    view.setViewZoom(zoom);
    std::size_t drawn = 0;
    for (const auto& t : texts(view)) {
      const int height = std::abs(t.box.y1 - t.box.y0);
      EXPECT_GE(height, FXGraphView::minTextHeight) << "zoom " << zoom;
      // A line is about 1.25 of its pixel size, 4/3 of its points.
      EXPECT_LE(t.pointSize * 4.0 / 3.0 * 1.2, height + 0.5) << "zoom " << zoom << ": " << t.text.str();
      ++drawn;
    }
    if (zoom >= 0.5) {
      EXPECT_GT(drawn, 4u) << "close up, titles and labels are drawn";
    }
  }
}

TEST_P(Readable, TheLabelsOfManyInputsKeepApart) {
  testsupport::EditBuilder e;
  std::vector<IdStamp> sources;
  for (unsigned i = 1; i <= 4; ++i) {
    sources.push_back(IdStamp(3, 0, i));
    e.material(sources.back());
  }
  e.effect(IdStamp(2, 0, 1), "wipe", sources);
  e.channel(IdStamp(1, 0, 1), L"V1", IdStamp(2, 0, 1));
  testsupport::ViewFixture fx{e.edit(), {640, 480}};
  FXGraphView& view = fx.view();
  view.setOrientation(GetParam(), true);
  for (const double zoom : {0.6, 1.0}) {
    view.setViewZoom(zoom);
    view.setViewCentre(0, 0);
    std::vector<Glib::PixelBox> labels;
    for (const auto& t : texts(view))
      if (t.text.str().starts_with(L"in ")) labels.push_back(t.box);
    EXPECT_GE(labels.size(), zoom == 1.0 ? 4u : 0u);
    for (std::size_t i = 0; i < labels.size(); ++i)
      for (std::size_t j = i + 1; j < labels.size(); ++j)
        EXPECT_FALSE(overlap(labels[i], labels[j])) << "labels " << i << " and " << j << " at zoom " << zoom;
  }
}

TEST_P(Readable, TheTooltipKeepsInsideOffTheMouseAndGoesWhenTheViewMoves) {
  testsupport::ViewFixture fx{EditFile::load(testsupport::sourcePath("examples/promo.json")).edit, {640, 480}};
  FXGraphView& view = fx.view();
  view.setOrientation(GetParam(), true);
  HostClock::driveByHand(0);
  viewtest::Pads pads{view};
  const auto w = view.getWindowPos();
  for (const IdStamp& id : {IdStamp(2, 0, 1), IdStamp(3, 0, 6), IdStamp(3, 0, 1)}) {
    const XY<int> at = pads.body(id);
    testsupport::moveTo(at);
    HostClock::advance(HoverHints::tooltipMs + 50);
    GlobManager::tick();
    ASSERT_TRUE(view.hints().tooltipShowing());
    const XY<int> mouse = at - view.screenPos();
    const auto box = view.hints().tooltipBox({L"a description of some length, as a node's is"});
    EXPECT_TRUE(box.x0 >= w.x0 && box.x1 <= w.x1 && box.y0 >= w.y0 && box.y1 <= w.y1);
    EXPECT_FALSE(box.x0 <= mouse.x && mouse.x <= box.x1 && box.y0 <= mouse.y && mouse.y <= box.y1) << "over the mouse";
  }
  view.setViewZoom(view.getZoom() * 0.9);
  EXPECT_FALSE(view.hints().tooltipShowing()) << "the view moved";
}

INSTANTIATE_TEST_SUITE_P(BothWays, Readable, viewtest::bothOrientations(), viewtest::orientationName);

} // namespace readabletest
