// Runs of `fxgraph render` on what the program promises its automation and
// its users: a panel restored from a layout, the dump's fields, a wire held
// while the edit changes, and files and text that are not what they say.
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/Program.h"

// Named: the folder's tests build as one unit.
namespace programcontract {

namespace fs = std::filesystem;
using json = nlohmann::json;
using testsupport::readJson;
using testsupport::readText;
using testsupport::runProgram;
using testsupport::TempFolder;

const char* const promoCookie = "5f1c0a3e9b7d4e21a8c6f0b2d4e6a8c0.1.0";

// The example in a folder of its own, with its preferences and layout there.
struct Session {
  TempFolder folder;
  std::string edit, prefs, layout;
  testsupport::ProgramRun last;

  explicit Session(const std::string& example = "examples/promo.json") {
    edit = folder.copyIn(example);
    folder.copyIn("examples/logo.png");
    prefs = folder.path("prefs");
    layout = folder.path("layout");
  }
  void writeLayout(const json& globs) const { std::ofstream(layout) << json{{"globs", globs}}.dump(); }
  json render(const std::string& script, std::vector<std::string> extra = {}) {
    const std::string dump = folder.path("dump.json");
    fs::remove(dump);
    std::vector<std::string> args{"render", edit, "--prefs", prefs, "--layout", layout, "--dump", dump};
    if (!script.empty()) args.insert(args.end(), {"--script", folder.write("script.txt", script)});
    args.insert(args.end(), extra.begin(), extra.end());
    last = runProgram(args);
    return readJson(dump);
  }
};

bool hasNode(const json& dump, const std::string& id) {
  for (const json& n : dump["nodes"])
    if (n["id"] == id) return true;
  return false;
}

bool hasWire(const json& dump, const std::string& from, const std::string& to, int input) {
  for (const json& w : dump["wires"])
    if (w["from"] == from && w["to"] == to && w["input"] == input) return true;
  return false;
}

json toolRecord(json more) {
  json r = {{"TYPE", "FXGraphTool"}, {"EDIT_COOKIE", promoCookie}, {"GROUPID", "main"}};
  r.update(more);
  return r;
}

// A record without a size takes the size preference, and one without a
// zoom, the first panel of the process, the zoom preference; neither is
// written over at exit.
TEST(ProgramContract, ARestoredPanelWithoutSizeOrZoomTakesThePreferences) {
  Session r;
  r.folder.write("prefs", "Effect graph tool size = (640,480)\nVideo Routing : Zoom = 0.5\n");
  r.writeLayout(json::array({toolRecord({{"W", "0"}, {"H", "0"}})}));
  const json state = r.render("");
  ASSERT_EQ(r.last.status, 0) << r.last.err;
  EXPECT_EQ(state["panel"]["w"], 640);
  EXPECT_EQ(state["panel"]["h"], 480);
  EXPECT_EQ(state["view"]["zoom"], 0.5);
  const std::string prefs = readText(r.prefs);
  EXPECT_NE(prefs.find("Effect graph tool size = (640,480)"), std::string::npos) << prefs;
  EXPECT_NE(prefs.find("Video Routing : Zoom = 0.5"), std::string::npos) << prefs;
}

// lastMessage holds the panel's own answer; a message keeps its blanks.
TEST(ProgramContract, ButtonsAndMessagesReportThePanelsAnswer) {
  Session r;
  EXPECT_EQ(r.render("button ToggleTemplates\n")["lastMessage"],
            (json{{"text", "ToggleTemplates"}, {"handled", false}}));
  EXPECT_EQ(r.render("button TidyNodes\n")["lastMessage"], (json{{"text", "TidyNodes"}, {"handled", true}}));
  const json off = r.render("message AutoPos On\nmessage AutoPos \n");
  EXPECT_EQ(off["lastMessage"], (json{{"text", "AutoPos "}, {"handled", true}}));
  EXPECT_FALSE(off["panel"]["autoPosition"]) << "\"AutoPos \" with nothing after turns it off";
}

// A panel that the layout restores onto a numbered vob of the edit is the
// panel: the dump shows it and the script acts on it.
TEST(ProgramContract, APanelOnAnotherVobIsThePanel) {
  Session r;
  r.writeLayout(json::array({toolRecord({{"VOB_GROUP_ID", "7"}, {"W", "700"}, {"H", "500"}})}));
  const json state = r.render("button TidyNodes\nnode-drag 3.0.5 20 20\ntime 12\n");
  ASSERT_EQ(r.last.status, 0) << r.last.err;
  ASSERT_FALSE(state["panel"].is_null());
  EXPECT_EQ(state["panel"]["w"], 700);
  EXPECT_EQ(state["lastMessage"]["handled"], true);
  EXPECT_TRUE(hasNode(state, "2.0.4")) << "the time moved on the panel's vob";
}

// The edit opens at the time the layout saved, unless --time says otherwise.
TEST(ProgramContract, TheSavedLayoutsTimeOpensTheEdit) {
  Session r;
  r.writeLayout(json::array({toolRecord({{"CURRENT_TIME", "12"}})}));
  // Colour correction plays from 10 s, the logo over the sky until then.
  const json later = r.render("");
  EXPECT_TRUE(hasNode(later, "2.0.4"));
  EXPECT_FALSE(hasNode(later, "2.0.3"));
  r.writeLayout(json::array({toolRecord({{"CURRENT_TIME", "12"}})}));
  const json given = r.render("", {"--time", "3"});
  EXPECT_TRUE(hasNode(given, "2.0.3"));
}

// With the tool closed the dump still has every key.
TEST(ProgramContract, WithNoPanelTheDumpHasEveryKey) {
  Session r;
  const json open = r.render("");
  const json closed = r.render("menu 2.0.1 Cycle inputs\nclose\n");
  ASSERT_EQ(r.last.status, 0) << r.last.err;
  std::vector<std::string> openKeys, closedKeys;
  for (const auto& [key, value] : open.items()) openKeys.push_back(key);
  for (const auto& [key, value] : closed.items()) closedKeys.push_back(key);
  EXPECT_EQ(closedKeys, openKeys);
  EXPECT_TRUE(closed["view"].is_null());
  EXPECT_TRUE(closed["drag"].is_null());
  EXPECT_EQ(closed["nodes"], json::array());
  EXPECT_EQ(closed["wires"], json::array());
  EXPECT_TRUE(closed["undo"]["canUndo"]) << "the command was a step";
}

// An undo, by the panel's button, the keys or the host, while a wire is
// held: the edit gets the wire back and the view holds nothing.
TEST(ProgramContract, AHeldWireIsLetGoWhenTheEditChanges) {
  Session r("tests/e2e/fixtures/wiring.json");
  for (const char* undo : {"button undoBtn", "key z ctrl", "undo"}) {
    const json state = r.render(std::string("pad 2.0.1 in 1\n") + undo + "\n");
    ASSERT_EQ(r.last.status, 0) << r.last.err;
    EXPECT_TRUE(state["drag"].is_null()) << undo;
    EXPECT_TRUE(hasWire(state, "3.0.2", "2.0.1", 1)) << undo;
  }
}

// A JSON document that is not an edit is refused with one line.
TEST(ProgramContract, AJsonDocumentThatIsNotAnEditIsRefused) {
  Session r;
  const std::string timeline = r.folder.write(
      "cut.json",
      R"({"OTIO_SCHEMA": "Timeline.1", "name": "Cut", "tracks": {"OTIO_SCHEMA": "Stack.1", "children": []}})");
  const auto run = runProgram({"render", timeline, "--prefs", r.prefs, "--dump", r.folder.path("dump.json")});
  EXPECT_NE(run.status, 0);
  EXPECT_EQ(run.err, "fxgraph: " + timeline + ":1: not an edit (it has no \"channels\")\n");
  EXPECT_FALSE(fs::exists(r.folder.path("dump.json")));
}

// Sizes, places and zooms no screen can show are mended with a line each;
// a layout with more panels than anyone uses restores the first 64.
TEST(ProgramContract, SettingsOutOfRangeAreMendedAndSaid) {
  Session r;
  r.folder.write("prefs", "Effect graph tool size = (65536,2147483647)\nVideo Routing : Zoom = nan\n");
  json globs = json::array({toolRecord({{"W", "65536"}, {"H", "300"}, {"VIEW_ZOOM", "nan"}, {"X", "junk"}})});
  for (int i = 0; i < 100; ++i)
    globs.push_back(toolRecord({{"GROUPID", "group " + std::to_string(i)}, {"W", "480"}, {"H", "300"}}));
  r.writeLayout(globs);
  const json state = r.render("");
  ASSERT_EQ(r.last.status, 0) << r.last.err;
  auto said = [&](const std::string& what) { return r.last.err.find(what) != std::string::npos; };
  EXPECT_TRUE(said(r.prefs + ": \"Effect graph tool size\" = \"(65536,2147483647)\" is out of range")) << r.last.err;
  EXPECT_TRUE(said(r.prefs + ": \"Video Routing : Zoom\" = \"nan\" is not a zoom")) << r.last.err;
  EXPECT_TRUE(said(r.layout + ": record 1: W = \"65536\" is out of range")) << r.last.err;
  EXPECT_TRUE(said(r.layout + ": record 1: VIEW_ZOOM = \"nan\" is not a zoom")) << r.last.err;
  EXPECT_TRUE(said(r.layout + ": record 1: X = \"junk\" is not a place")) << r.last.err;
  EXPECT_TRUE(said(r.layout + ": 101 tool panels for this edit; the first 64 are restored")) << r.last.err;
  EXPECT_EQ(state["panels"].size(), 64u);
  EXPECT_EQ(state["panel"]["w"], 8192);
  EXPECT_EQ(state["view"]["zoom"], 0.75);
  EXPECT_EQ(readJson(r.layout)["globs"].size(), 101u) << "the records not restored are kept";
}

// The user's own settings files that are not what they say (junk, NUL
// bytes, a cut line) are kept aside, never written over.
TEST(ProgramContract, DefaultSettingsFilesThatAreNotOnesAreKeptAside) {
  Session r;
  const std::string config = r.folder.path("config/fxgraph");
  fs::create_directories(config);
  const std::string junk("\x89PNG\0\0junk", 10);
  r.folder.write("config/fxgraph/preferences", junk);
  r.folder.write("config/fxgraph/layout", "{\"globs\": [{\"TYPE\": \"FXGra");
  const auto run = runProgram({"render", r.edit, "--dump", r.folder.path("dump.json")},
                              {"XDG_CONFIG_HOME=" + r.folder.path("config")});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(readText(config + "/preferences.bad"), junk);
  EXPECT_EQ(readText(config + "/layout.bad"), "{\"globs\": [{\"TYPE\": \"FXGra");
  EXPECT_NE(run.err.find(config + "/preferences: not a preferences file"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("kept aside as " + config + "/layout.bad"), std::string::npos) << run.err;
  EXPECT_FALSE(readJson(config + "/layout")["globs"].empty()) << "a new layout was begun";
}

// Bytes that are not UTF-8 reach the dump replaced; typing far past what
// the search field holds is refused with a note, at no cost per key.
TEST(ProgramContract, TextIsValidUtf8AndTypingIsBounded) {
  Session r;
  const json state = r.render("message \xff\xfe"
                              "AutoPos On\n");
  ASSERT_EQ(r.last.status, 0) << r.last.err;
  EXPECT_EQ(state["lastMessage"]["text"], "\xef\xbf\xbd\xef\xbf\xbd"
                                          "AutoPos On");
  const json typed = r.render("type " + std::string(100000, 'q') + "\n");
  ASSERT_EQ(r.last.status, 0) << r.last.err;
  ASSERT_FALSE(typed["search"].is_null());
  EXPECT_EQ(typed["search"]["query"].get<std::string>(), std::string(256, 'q'));
}

} // namespace programcontract
