// What the view shows while something is about to happen and when it was
// refused: a dragged template and the search field light what they would go
// into, the field opens at the mouse, and refusals say why in a line that
// the next press takes away.
#include <gtest/gtest.h>

#include "graph_view/SearchToAdd.h"
#include "graph_view/TemplateDrops.h"
#include "graph_view/ViewNotice.h"
#include "host/ui/EffectsBrowser.h"
#include "tests/graph_view/ViewInput.h"
#include "tests/support/ViewFixture.h"

namespace feedbacktest {

using namespace viewtest;

class Feedback : public ::testing::Test {
protected:
  testsupport::ViewFixture fx{twoTrees(), {640, 480}};
  FXGraphView& view = fx.view();
  Pads pads{view};
  const Colour lit{0.3, 0.85, 1.0};

  void SetUp() override { showWholeGraph(view, 50); }
  // A point of the wire from `right` into head's input 1, in view pixels.
  XY<int> onWire() {
    XY<int> p;
    EXPECT_TRUE(view.drops().clearPointOnWire(head, 1, p));
    return p;
  }
  bool litWireDrawn() {
    const Frame f(view);
    for (const auto& [i, c] : f.curves())
      if (c.colour == fromColour(lit)) return true;
    return false;
  }
};

TEST_F(Feedback, ADraggedTemplateLightsTheWireItWouldGoInto) {
  const EffectTemplateSummary blur = viewtest::blurTemplate();
  const EffectTemplateDragItem item(blur);
  EXPECT_FALSE(litWireDrawn());
  view.dragHover(&item, onWire());
  EXPECT_EQ(view.drops().hovered().wire.to, pads.node(head));
  EXPECT_EQ(view.drops().hovered().wire.input, 1);
  EXPECT_TRUE(litWireDrawn());
  // Off the wire, and gone: nothing lit.
  view.dragHover(&item, {-500, -500});
  EXPECT_FALSE(view.drops().hovered().wire.to);
  EXPECT_FALSE(litWireDrawn());
  // Over a node: the node is ringed instead, and a drag that leaves lights nothing.
  const auto b = pads.node(other)->pixelBox();
  view.dragHover(&item, {(b.x0 + b.x1) / 2, (b.y0 + b.y1) / 2});
  EXPECT_EQ(view.drops().hovered().node, other);
  view.dragHover(nullptr, {});
  EXPECT_FALSE(view.drops().hovered().node.valid());
}

TEST_F(Feedback, SearchOpensAtTheMouseAndLightsWhatItWillGoInto) {
  const XY<int> at = onWire();
  testsupport::moveTo(view.screenPos() + at);
  ASSERT_TRUE(testsupport::key(Event::keyTab));
  ASSERT_TRUE(view.searchField().search());
  const auto box = view.searchField().box();
  const auto w = view.getWindowPos();
  EXPECT_EQ(box.x0, std::clamp(at.x + 12, w.x0 + 4, w.x1 - 4 - (box.x1 - box.x0)));
  EXPECT_EQ(box.y1, at.y - 12);
  EXPECT_TRUE(litWireDrawn());
  testsupport::key(Event::keyEscape);
  EXPECT_FALSE(litWireDrawn());
  // Near the view's corner the field stays inside it.
  testsupport::moveTo(view.screenPos() + XY<int>{w.x1 - 3, w.y0 + 3});
  testsupport::key(Event::keyTab);
  const auto inside = view.searchField().box();
  EXPECT_TRUE(inside.x0 >= w.x0 && inside.x1 <= w.x1 && inside.y0 >= w.y0 && inside.y1 <= w.y1);
}

TEST_F(Feedback, RefusalsSayWhyUntilTheNextPress) {
  EXPECT_TRUE(view.notice().text().empty());
  // A wire from an output dropped on an input that is wired already.
  testsupport::click(pads.out(otherSource, 1));
  ASSERT_TRUE(view.dragAnchor());
  testsupport::click(pads.in(head, 0));
  EXPECT_EQ(view.notice().text().str(), L"That input is wired already: pick its wire up first");
  EXPECT_TRUE(view.dragAnchor()) << "the wire is still held";
  testsupport::key(Event::keyEscape);
  // The search's Return with nothing to put the effect into.
  testsupport::moveTo(pads.nothing());
  EXPECT_TRUE(view.notice().text().empty()) << "a key took it away";
  testsupport::key(Event::keyTab);
  testsupport::key(Event::keyReturn);
  EXPECT_NE(view.notice().text().str().find(L"Nothing to add the effect to"), std::wstring::npos);
  testsupport::click(pads.nothing());
  EXPECT_TRUE(view.notice().text().empty()) << "a press took it away";
}

} // namespace feedbacktest

namespace feedbacktest {

TEST_F(Feedback, ANodesMenuStartsWithItsOwnEntriesUnderItsTitleAndTheViewsCarryTheirKeys) {
  Event e;
  e.screen = pads.body(head);
  const MenuItems items = view.getMenuItems(&e);
  ASSERT_GT(items.size(), 3u);
  EXPECT_EQ(items[0].kind, MenuItem::Kind::heading);
  EXPECT_EQ(items[0].label, pads.node(head)->getTitleStr());
  EXPECT_FALSE(items[0].active) << "a heading is not chosen";
  std::size_t separator = 0;
  for (std::size_t i = 1; i < items.size(); ++i)
    if (items[i].kind == MenuItem::Kind::separator) separator = i;
  ASSERT_GT(separator, 1u) << "the node's entries come first";
  // After it, the view's own entries, as on empty canvas, with their keys.
  const MenuItems empty = view.getMenuItems(nullptr);
  ASSERT_EQ(items.size() - separator - 1, empty.size());
  for (std::size_t i = 0; i < empty.size(); ++i) EXPECT_EQ(items[separator + 1 + i].label, empty[i].label);
  auto keysOf = [&](const wchar_t* label) {
    for (const MenuItem& m : empty)
      if (m.label.str() == label) return std::wstring(m.keys.str());
    return std::wstring(L"(none)");
  };
  EXPECT_EQ(keysOf(L"Arrange"), L"L");
  EXPECT_EQ(keysOf(L"Navigator"), L"N");
  EXPECT_EQ(keysOf(L"Preview"), L"V");
}

} // namespace feedbacktest
