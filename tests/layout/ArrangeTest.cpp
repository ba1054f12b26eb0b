// Arrange: no two boxes overlap and each node sits one level beyond its
// deepest consumer, on random graphs and on generated edits in the view in
// both orientations; Tidy is unchanged by it, and with hand placing on one
// undo puts every node back.
#include <algorithm>
#include <random>

#include <gtest/gtest.h>

#include "app/EditGenerator.h"
#include "host/edit/EditFile.h"
#include "layout/FXGraphArranger.h"
#include "tests/support/ScriptSession.h"

namespace {

struct Box {
  double x0, y0, x1, y1;
};

// Every pair that overlaps, found by sorting on x: boxes only meet their
// neighbours in x.
std::size_t overlaps(std::vector<Box> boxes) {
  std::sort(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) { return a.x0 < b.x0; });
  std::size_t found = 0;
  for (std::size_t i = 0; i < boxes.size(); ++i)
    for (std::size_t j = i + 1; j < boxes.size() && boxes[j].x0 < boxes[i].x1; ++j)
      if (boxes[i].y0 < boxes[j].y1 && boxes[j].y0 < boxes[i].y1) ++found;
  return found;
}

TEST(Arrange, RandomGraphsHaveNoOverlapAndSharedInputsGoBesideTheirDeepestConsumer) {
  for (const int n : {50, 500, 5000}) {
    for (const auto direction : {FXGraphArranger::leftToRight, FXGraphArranger::bottomToTop}) {
      SCOPED_TRACE(testing::Message() << n << " nodes, direction " << direction);
      std::mt19937 random(static_cast<unsigned>(n + direction));
      // Node i takes inputs from later nodes only: no cycles; boxes of mixed sizes.
      std::vector<FXGraphArranger::Node> graph(static_cast<std::size_t>(n));
      for (int i = 0; i < n; ++i) {
        FXGraphArranger::Node& g = graph[static_cast<std::size_t>(i)];
        const double w = 0.08 + (random() % 5) * 0.02, h = 0.06 + (random() % 4) * 0.02;
        g.left = -w / 2, g.right = w / 2, g.bottom = -h, g.top = 0;
        const int inputs = static_cast<int>(random() % 4);
        for (int k = 0; k < inputs && i + 1 < n; ++k)
          g.inputs.push_back(random() % 5 == 0 ? -1 : i + 1 + static_cast<int>(random() % std::min(40, n - i - 1)));
      }
      const double gap = 0.1875;
      const auto at = FXGraphArranger::arrange(graph, {0}, direction, gap, {3, -2});
      ASSERT_EQ(at.size(), graph.size());
      std::vector<Box> boxes;
      for (std::size_t i = 0; i < graph.size(); ++i)
        boxes.push_back(
            {at[i].x + graph[i].left, at[i].y + graph[i].bottom, at[i].x + graph[i].right, at[i].y + graph[i].top});
      EXPECT_EQ(overlaps(boxes), 0u);
      // The flow edge (right, or top) of a node is one step beyond the
      // deepest of its consumers' edges.
      const bool ltr = direction == FXGraphArranger::leftToRight;
      auto edge = [&](std::size_t i) { return ltr ? boxes[i].x1 : boxes[i].y1; };
      std::vector<double> deepest(graph.size(), 1e300);
      for (std::size_t c = 0; c < graph.size(); ++c)
        for (int in : graph[c].inputs)
          if (in >= 0) deepest[static_cast<std::size_t>(in)] = std::min(deepest[static_cast<std::size_t>(in)], edge(c));
      std::vector<double> steps;
      for (std::size_t i = 0; i < graph.size(); ++i)
        if (deepest[i] != 1e300) steps.push_back(deepest[i] - edge(i));
      ASSERT_FALSE(steps.empty());
      const auto [low, high] = std::minmax_element(steps.begin(), steps.end());
      EXPECT_NEAR(*low, *high, 1e-9) << "one step per level";
      EXPECT_GT(*low, gap);
    }
  }
}

// A generated edit in the tool: Arrange through its key in both orientations.
class ArrangeInTheView : public testsupport::ScriptSession {
protected:
  void SetUp() override {
    EditPtr edit = fxgraph::generateEdit(600, 7, 60);
    std::string why;
    ASSERT_TRUE(EditFile::save(edit, folder.path("big.json"), why)) << why;
    edit->close();
    // Positions are what is checked: the screen is not drawn.
    openSession(folder.path("big.json"), 0, false);
  }
  std::vector<XY<double>> positions() const {
    std::vector<XY<double>> out;
    for (const auto& n : session.view()->nodes()) out.push_back(n->getPosition());
    return out;
  }
  std::size_t overlapping() const {
    std::vector<Box> boxes;
    for (const auto& n : session.view()->nodes()) boxes.push_back({n->getL(), n->getB(), n->getR(), n->getT()});
    return overlaps(boxes);
  }
};

TEST_F(ArrangeInTheView, NoBoxesOverlapTidyIsUnchangedAndOneUndoPutsEveryNodeBack) {
  for (const std::string orientation : {"LeftToRight", "BottomToTop"}) {
    SCOPED_TRACE(orientation);
    run("orientation " + orientation);
    ASSERT_TRUE(session.view()->manualPositioning());
    run("button TidyNodes");
    const std::vector<XY<double>> tidied = positions();
    ASSERT_GT(tidied.size(), 500u);
    const std::size_t steps = session.edit()->undoDepth();
    run("key l");
    EXPECT_EQ(overlapping(), 0u);
    const std::vector<XY<double>> arranged = positions();
    EXPECT_NE(arranged, tidied);
    EXPECT_EQ(session.edit()->undoDepth(), steps + 1);
    run("undo");
    EXPECT_EQ(positions(), tidied) << "every node back where it was";
    run("redo");
    EXPECT_EQ(positions(), arranged);
    run("button TidyNodes");
    EXPECT_EQ(positions(), tidied) << "Tidy lays out as before";
  }
}

} // namespace
