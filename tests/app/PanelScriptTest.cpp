// The program's script against the real tool, in process: commands from a
// graph item's context menu and the buttons, each one undo step; the layout
// kept across a restart; the keyboard, hovering and the pads offered to a
// dangling wire.
#include <algorithm>
#include <fstream>
#include <set>

#include <gtest/gtest.h>

#include "app/StateDump.h"
#include "graph_view/HoverHints.h"
#include "graph_view/TemplateDrops.h"
#include "host/edit/EffectInstance.h"
#include "tests/graph_view/ViewInput.h"
#include "tests/support/ScriptSession.h"

namespace {

using json = nlohmann::ordered_json;

class PanelScript : public testsupport::ScriptSession {
protected:
  void SetUp() override {
    edit = folder.copyIn("examples/promo.json");
    folder.copyIn("examples/logo.png");
    openSession(edit, 5);
  }
  json dump() const { return dumpState(session); }
  std::string focus() const {
    const json f = dump()["focus"];
    return f.is_null() ? std::string("none") : f.get<std::string>();
  }
  static const json& node(const json& d, const std::string& id) {
    for (const json& n : d["nodes"])
      if (n["id"] == id) return n;
    throw std::runtime_error("no node " + id);
  }
  static std::string middleOf(const json& n) {
    const json& p = n["pixels"];
    return std::to_string((p[0].get<int>() + p[2].get<int>()) / 2) + " " +
           std::to_string((p[1].get<int>() + p[3].get<int>()) / 2);
  }
  // A pixel of the view well away from every node, as the script gives pixels.
  std::string emptyPixel() const {
    const XY<int> p = viewtest::Pads(*session.view()).nothing() - session.view()->screenPos();
    return std::to_string(p.x) + " " + std::to_string(p.y);
  }

  std::string edit;
};

TEST_F(PanelScript, AGraphItemCommandFromTheMenuIsOneStepThatTheUndoButtonTakesBack) {
  const IdStamp dissolve(2, 0, 1);
  run("menu 2.0.1 Cycle inputs");
  EXPECT_EQ(session.edit()->openNode(dissolve)->getInputTrackId(0), IdStamp(3, 0, 2));
  EXPECT_EQ(session.edit()->undoDepth(), 1u);
  const json after = dump();
  EXPECT_TRUE(after["lastMessage"]["text"].get<std::string>().starts_with("fxutrcycle_inputs "));
  run("button undoBtn");
  EXPECT_EQ(session.edit()->openNode(dissolve)->getInputTrackId(0), IdStamp(3, 0, 1));
  EXPECT_EQ(dump()["lastMessage"], (json{{"text", "undoBtn"}, {"handled", true}}));

  // A command only the record machine may run says so when it is not one.
  Vob::setRecordMachine(nullptr);
  run("menu 2.0.1 Remove effect");
  EXPECT_TRUE(session.edit()->openNode(dissolve));
  EXPECT_EQ(dump()["messages"].back(), "This can only be done on the record machine");
}

TEST_F(PanelScript, ARestartBringsBackZoomAndTemplates) {
  run("message ToggleTemplates");
  run("wheel -2");
  const json before = dump();
  EXPECT_FALSE(before["panel"]["templatesVisible"]);
  EXPECT_EQ(before["panel"]["templates"], nullptr);
  run("reopen");
  const json after = dump();
  EXPECT_FALSE(after["panel"]["templatesVisible"]);
  EXPECT_EQ(after["view"]["zoom"], before["view"]["zoom"]);
  EXPECT_EQ(after["panels"].size(), 1u);

  // Closed, the tool is not restored: a restart opens it afresh.
  run("close");
  EXPECT_EQ(dump()["panel"], nullptr);
  std::string why;
  EXPECT_FALSE(runner.runLine("button TidyNodes", why));
  EXPECT_NE(why.find("the tool is closed"), std::string::npos) << why;
  run("reopen");
  EXPECT_NE(dump()["panel"], nullptr);

  // The view's context menu zooms by the panel's step.
  const double zoom = session.view()->getZoom();
  run("choose view Zoom out");
  EXPECT_DOUBLE_EQ(session.view()->getZoom(), zoom * 0.75);
}

TEST_F(PanelScript, ArrowsWalkTheGraphInBothOrientationsAndGoBackTheWayTheyCame) {
  // The Dissolve (2.0.1) takes Interview (3.0.1) and B-roll (3.0.2); B-roll
  // also feeds the picture in picture (2.0.2) first, through Fg.
  for (const std::string orientation : {"LeftToRight", "BottomToTop"}) {
    SCOPED_TRACE(orientation);
    run("orientation " + orientation);
    const bool leftToRight = orientation == "LeftToRight";
    const std::string toInputs = leftToRight ? "Left" : "Down", toOutput = leftToRight ? "Right" : "Up";
    run("node-click 2.0.2");
    EXPECT_EQ(focus(), "2.0.2") << "a click gives a node the focus";
    run("key " + toInputs);
    EXPECT_EQ(focus(), "3.0.2");
    run("key " + toOutput);
    EXPECT_EQ(focus(), "2.0.2") << "back the way it came, not to the Dissolve that B-roll feeds first";

    run("node-click 2.0.1");
    run("key " + toInputs);
    EXPECT_EQ(focus(), "3.0.1");
    // Siblings follow the screen: the arrow that points from one to the other.
    const json d = dump();
    const int axis = leftToRight ? 1 : 0;
    const bool secondIsHigher = node(d, "3.0.2")["pos"][axis] > node(d, "3.0.1")["pos"][axis];
    const std::string towards = leftToRight ? (secondIsHigher ? "Up" : "Down") : (secondIsHigher ? "Right" : "Left");
    const std::string back = leftToRight ? (secondIsHigher ? "Down" : "Up") : (secondIsHigher ? "Left" : "Right");
    run("key " + back);
    EXPECT_EQ(focus(), "3.0.1") << "nothing further that way";
    run("key " + towards);
    EXPECT_EQ(focus(), "3.0.2");
    run("key " + toOutput);
    EXPECT_EQ(focus(), "2.0.1") << "the Dissolve it was reached from";
    run("key Escape");
    EXPECT_EQ(focus(), "none");
    // No click needed: up or down takes the keyboard in at the primary node;
    // left and right stay the editor's, stepping the time.
    run("key Left");
    EXPECT_EQ(focus(), "none");
    run("key Down");
    EXPECT_EQ(focus(), "2.0.1");
    run("key Escape");
  }
}

// The dump lists popups in the order they opened, whatever their stacking.
TEST_F(PanelScript, PopupsAreListedInTheOrderTheyOpened) {
  run("menu 2.0.1 Parameters...");
  run("menu 2.0.2 Pop out log");
  const json opened = dump()["popups"];
  ASSERT_EQ(opened.size(), 2u) << opened.dump();
  for (Glob* root : std::vector<Glob*>(GlobManager::roots()))
    if (root->idstring().str() == opened[0]["type"]) GlobManager::raise(root);
  EXPECT_EQ(GlobManager::roots().back()->idstring().str(), opened[0]["type"]) << "raised";
  EXPECT_EQ(dump()["popups"], opened);
}

TEST_F(PanelScript, SpaceReturnAndDeleteActOnTheFocusedEffect) {
  const IdStamp dissolve(2, 0, 1);
  auto active = [&] { return session.edit()->openObject<EffectInstance>(dissolve)->isActive(); };
  run("node-click 2.0.1");
  ASSERT_FALSE(active()) << "the click switched it off";
  run("key space");
  EXPECT_TRUE(active());
  run("key Return");
  EXPECT_EQ(dump()["popups"].back()["type"], "CompoundEffectPanel");
  const std::size_t steps = session.edit()->undoDepth();
  run("key Delete");
  EXPECT_FALSE(session.edit()->openNode(dissolve));
  EXPECT_EQ(focus(), "none") << "the Dissolve fed nothing";
  EXPECT_EQ(session.edit()->undoDepth(), steps + 1);
  run("undo");
  EXPECT_TRUE(session.edit()->openNode(dissolve));
  // Keys a node does not take, and keys without focus, are left to others.
  std::string why;
  EXPECT_FALSE(runner.runLine("key F12", why));
  EXPECT_NE(why.find("is not a key"), std::string::npos) << why;
}

TEST_F(PanelScript, FFitsTheGraphAndShiftFCentresTheNodeUnderTheMouse) {
  auto outside = [&] {
    const json d = dump();
    const json& w = d["view"]["window"];
    return std::count_if(d["nodes"].begin(), d["nodes"].end(), [&](const json& n) {
      const json& p = n["pixels"];
      return p[0] < w[0] || p[1] < w[1] || p[2] > w[2] || p[3] > w[3];
    });
  };
  run("wheel 4");
  ASSERT_GT(outside(), 0);
  run("key f");
  EXPECT_EQ(outside(), 0);

  const json before = dump();
  const json& matte = node(before, "3.0.5");
  run("hover " + middleOf(matte));
  run("key f shift");
  const json after = dump();
  EXPECT_EQ(after["view"]["zoom"], before["view"]["zoom"]);
  const json& b = matte["bounds"];
  EXPECT_NEAR(after["view"]["centre"][0], (b[0].get<double>() + b[2].get<double>()) / 2, 1e-9);
  EXPECT_NEAR(after["view"]["centre"][1], (b[1].get<double>() + b[3].get<double>()) / 2, 1e-9);
}

TEST_F(PanelScript, HoveringANodeHighlightsEverythingUpstreamOfIt) {
  const json d = dump();
  run("hover " + middleOf(node(d, "2.0.2")));
  const json lit = dump()["highlighted"];
  EXPECT_EQ(std::set<std::string>(lit.begin(), lit.end()), (std::set<std::string>{"2.0.2", "3.0.2", "3.0.5"}));
  // Resting there a while shows its description beside the mouse.
  EXPECT_FALSE(session.view()->hints().tooltipShowing());
  run("tick 700");
  EXPECT_TRUE(session.view()->hints().tooltipShowing());
  run("hover " + middleOf(node(d, "3.0.5")));
  EXPECT_FALSE(session.view()->hints().tooltipShowing()) << "another node: the wait starts again";
  EXPECT_TRUE(dump()["highlighted"].empty()) << "nothing feeds a matte";
  run("hover " + emptyPixel());
  EXPECT_TRUE(dump()["highlighted"].empty());
  run("tick 700");
  EXPECT_FALSE(session.view()->hints().tooltipShowing());
  EXPECT_EQ(session.view()->timerHolds(), 0) << "no hold is left behind";
  // Each node says what it is and what it is wired to.
  EXPECT_EQ(node(d, "2.0.2")["description"],
            "Effect \u201cV2 : Picture in picture\u201d, on; input Fg from \u201cB-roll : V1\u201d; input Bg from "
            "\u201cV2 : Blue matte\u201d; output feeds nothing");
}

TEST_F(PanelScript, ATemplateDroppedOnAWireGoesInBetweenAsOneUndoStep) {
  auto wireInto = [](const json& d, const std::string& to, int input) {
    for (const json& w : d["wires"])
      if (w["to"] == to && w["input"] == input) return w["from"].get<std::string>();
    return std::string("nothing");
  };
  for (const std::string orientation : {"LeftToRight", "BottomToTop"}) {
    SCOPED_TRACE(orientation);
    run("reopen");
    run("orientation " + orientation);
    const std::size_t steps = session.edit()->undoDepth();
    run("drop Blur wire 3.0.5 2.0.2 1");
    const json d = dump();
    const std::string added = wireInto(d, "2.0.2", 1);
    ASSERT_NE(added, "3.0.5");
    EXPECT_EQ(node(d, added)["title"], "V2 : Blur");
    EXPECT_EQ(wireInto(d, added, 0), "3.0.5");
    EXPECT_EQ(session.edit()->undoDepth(), steps + 1);
    run("undo");
    EXPECT_EQ(wireInto(dump(), "2.0.2", 1), "3.0.5");
  }
  // From search, with the mouse on the wire.
  XY<int> onWire;
  ASSERT_TRUE(session.view()->drops().clearPointOnWire(IdStamp(2, 0, 2), 1, onWire));
  run("hover " + std::to_string(onWire.x) + " " + std::to_string(onWire.y));
  run("key Tab");
  run("type blur");
  run("key Return");
  const json searched = dump();
  EXPECT_EQ(node(searched, wireInto(searched, "2.0.2", 1))["title"], "V2 : Blur");
  run("undo");
  // A locked effect's inputs are not rewired: the wire stays as it was.
  session.edit()->openObject<EffectInstance>(IdStamp(2, 0, 2))->setConnectionEditable(false);
  run("time 5.5");
  const std::size_t steps = session.edit()->undoDepth();
  run("drop Blur wire 3.0.5 2.0.2 1");
  EXPECT_EQ(wireInto(dump(), "2.0.2", 1), "3.0.5");
  EXPECT_EQ(session.edit()->undoDepth(), steps);
}

TEST_F(PanelScript, SearchToAddListsMatchesAndLaysTheChosenOneOverTheNodeUnderTheMouse) {
  const json d = dump();
  run("hover " + middleOf(node(d, "3.0.5")));
  run("key Tab");
  json search = dump()["search"];
  ASSERT_FALSE(search.is_null());
  EXPECT_EQ(search["query"], "");
  EXPECT_GT(search["results"].size(), 5u) << "every video template while nothing is typed";
  run("type co");
  search = dump()["search"];
  EXPECT_EQ(search["query"], "co");
  ASSERT_GE(search["results"].size(), 2u);
  EXPECT_EQ(search["results"][0], "Colour correction");
  EXPECT_EQ(search["chosen"], 0);
  // Down past the end stays at the end; Up goes back.
  for (std::size_t i = 0; i < search["results"].size(); ++i) run("key Down");
  EXPECT_EQ(dump()["search"]["chosen"], static_cast<int>(search["results"].size()) - 1);
  run("key Up");
  run("key Up");
  run("key Down");
  EXPECT_EQ(dump()["search"]["chosen"], 1);
  const std::string chosen = dump()["search"]["results"][1];
  const std::size_t steps = session.edit()->undoDepth();
  run("key Return");
  const json after = dump();
  EXPECT_TRUE(after["search"].is_null());
  EXPECT_EQ(session.edit()->undoDepth(), steps + 1);
  std::string added;
  for (const json& w : after["wires"])
    if (w["from"] == "3.0.5") added = w["to"];
  ASSERT_NE(added, "2.0.2") << "the new effect sits between the matte and the picture in picture";
  EXPECT_EQ(node(after, added)["title"], "V2 : " + chosen);
  run("undo");
  EXPECT_EQ(session.edit()->undoDepth(), steps);

  // A letter that is no command opens the field with it; Escape closes it
  // and nothing is added; the field keeps the keys meanwhile.
  run("key w");
  EXPECT_EQ(dump()["search"]["query"], "w");
  run("key f");
  EXPECT_EQ(dump()["search"]["query"], "wf") << "f is text while the field is open";
  run("type \xc3\xa9 x");
  EXPECT_EQ(dump()["search"]["query"], "wf\xc3\xa9 x") << "typed text, blanks and all";
  run("key Escape");
  EXPECT_TRUE(dump()["search"].is_null());
  EXPECT_EQ(session.edit()->undoDepth(), steps);
}

TEST_F(PanelScript, TheNavigatorShowsTheWindowInTheWholeGraphAndMovesItWhereClicked) {
  auto middle = [](const json& b) {
    return std::make_pair((b[0].get<int>() + b[2].get<int>()) / 2, (b[1].get<int>() + b[3].get<int>()) / 2);
  };
  auto at = [](int x, int y) { return std::to_string(x) + " " + std::to_string(y); };
  for (const std::string orientation : {"LeftToRight", "BottomToTop"}) {
    SCOPED_TRACE(orientation);
    run("orientation " + orientation);
    run("wheel 3");
    json nav = dump()["navigator"];
    ASSERT_FALSE(nav.is_null()) << "the graph does not fit: the navigator shows";
    // A click puts the window's frame round the clicked point; a drag follows the mouse.
    const json& box = nav["pixels"];
    const int x = box[0].get<int>() + (box[2].get<int>() - box[0].get<int>()) / 3,
              y = box[1].get<int>() + (box[3].get<int>() - box[1].get<int>()) / 3;
    run("click " + at(x, y));
    auto [cx, cy] = middle(dump()["navigator"]["window"]);
    EXPECT_NEAR(cx, x, 2);
    EXPECT_NEAR(cy, y, 2);
    run("press " + at(x, y));
    run("move " + at(x + 8, y + 6));
    run("release " + at(x + 8, y + 6));
    std::tie(cx, cy) = middle(dump()["navigator"]["window"]);
    EXPECT_NEAR(cx, x + 8, 2);
    EXPECT_NEAR(cy, y + 6, 2);
    run("key f");
    EXPECT_TRUE(dump()["navigator"].is_null()) << "everything fits: hidden";
  }
  // Off by key and by the context menu, and it stays as set after a restart.
  run("wheel 3");
  ASSERT_FALSE(dump()["navigator"].is_null());
  run("key n");
  EXPECT_TRUE(dump()["navigator"].is_null());
  run("reopen");
  run("wheel 3");
  EXPECT_TRUE(dump()["navigator"].is_null());
  run("choose view Navigator");
  EXPECT_FALSE(dump()["navigator"].is_null());
}

// The pads a dangling wire is offered are exactly those where a click
// connects it, for a wire held at either end; each trial starts afresh.
TEST_F(PanelScript, TheOfferedPadsAreThoseWhereAClickConnects) {
  // Frees the Dissolve's A, the logo's Bg and the picture in picture's Bg,
  // then starts a wire at the picture in picture: from its output (it feeds
  // nothing, so its spare slot is 0) or from its freed Bg.
  auto setUpDrag = [&](bool fromInput) {
    run("reopen");
    for (const char* pad : {"2.0.1 in 0", "2.0.3 in 1", "2.0.2 in 1"}) {
      run(std::string("pad ") + pad);
      run("click " + emptyPixel());
    }
    run(fromInput ? "pad 2.0.2 in 1" : "pad 2.0.2 out 0");
    const json drag = dump()["drag"];
    EXPECT_EQ(drag["atInput"], fromInput);
    return drag["accepts"];
  };
  for (const bool fromInput : {false, true}) {
    SCOPED_TRACE(fromInput ? "held by an input" : "held by an output");
    const json accepts = setUpDrag(fromInput);
    const json d = dump();
    int offered = 0, tried = 0;
    for (const json& n : d["nodes"]) {
      std::vector<std::pair<std::string, int>> pads; // script pad, index
      if (fromInput) {
        pads.emplace_back("out", static_cast<int>(n["outputs"].size()) - 1);
      } else {
        for (const json& in : n["inputs"])
          if (in["from"].is_null()) pads.emplace_back("in", in["index"].get<int>());
      }
      for (const auto& pad : pads) {
        const std::string& end = pad.first;
        const int index = pad.second;
        const std::string id = n["id"];
        const bool isOffered = std::any_of(accepts.begin(), accepts.end(), [&](const json& a) {
          return a["node"] == id && a[fromInput ? "output" : "input"] == index;
        });
        setUpDrag(fromInput);
        run("pad " + id + " " + end + " " + std::to_string(index));
        const json after = dump();
        const bool connected =
            after["drag"].is_null() && std::any_of(after["wires"].begin(), after["wires"].end(), [&](const json& w) {
              return fromInput ? w["from"] == id && w["to"] == "2.0.2" && w["input"] == 1
                               : w["from"] == "2.0.2" && w["to"] == id && w["input"] == index;
            });
        EXPECT_EQ(isOffered, connected) << id << " " << end << " " << index;
        offered += isOffered;
        ++tried;
      }
    }
    EXPECT_GT(offered, 1);
    EXPECT_GT(tried, offered) << "its own pad refuses the wire";
  }
}

} // namespace

namespace {

// The close box through real events: with unsaved changes it asks, and
// each answer leaves the files as it says.
TEST_F(PanelScript, TheCloseBoxAsksAndTheAnswerDecidesWhatIsOnDisk) {
  const auto contents = [&] {
    std::ifstream in(edit, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  };
  const std::string before = contents();
  run("button close");
  EXPECT_TRUE(dump()["panel"].is_null()) << "nothing unsaved: it closes at once";
  run("reopen");
  run("node-click 2.0.2");
  EXPECT_TRUE(dump()["panel"]["unsaved"]);
  run("button close");
  json d = dump();
  ASSERT_FALSE(d["panel"].is_null()) << "it asks first";
  EXPECT_EQ(d["popups"].back()["type"], "QuestionPanel");
  EXPECT_EQ(d["messages"].back(), "Save the changes to \"Promo\" before closing?");
  run("key Escape");
  EXPECT_FALSE(dump()["panel"].is_null()) << "Cancel";
  run("button close");
  run("key d");
  EXPECT_TRUE(dump()["panel"].is_null()) << "Discard";
  EXPECT_EQ(contents(), before);
  run("reopen");
  run("node-click 2.0.2");
  run("button close");
  run("key s");
  EXPECT_TRUE(dump()["panel"].is_null()) << "Save";
  EXPECT_NE(contents(), before);
  run("reopen");
  EXPECT_FALSE(node(dump(), "2.0.2")["active"]) << "the switch was saved";
}

} // namespace
