// Scripted runs of `fxgraph render` on the examples, checked through the
// state dump (and the picture) the program writes.
#include <cmath>
#include <filesystem>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "host/draw/UxImage.h"
#include "tests/support/Program.h"

namespace {

using testsupport::readJson;
using testsupport::runProgram;
using testsupport::TempFolder;
using json = nlohmann::json;

// A render of an edit copy with a script; the dump after the script.
struct Render {
  TempFolder folder;
  std::string edit;
  std::string prefs;

  explicit Render(const std::string& example = "examples/promo.json") {
    edit = folder.copyIn(example);
    folder.copyIn("examples/logo.png");
    prefs = folder.path("prefs");
  }
  json run(const std::string& script, const std::vector<std::string>& extra = {}) {
    const std::string dump = folder.path("dump.json");
    std::vector<std::string> args{"render", edit, "--time", "5", "--prefs", prefs, "--dump", dump};
    if (!script.empty()) args.insert(args.end(), {"--script", folder.write("script.txt", script)});
    args.insert(args.end(), extra.begin(), extra.end());
    last = runProgram(args);
    EXPECT_EQ(last.status, 0) << last.err;
    return readJson(dump);
  }
  testsupport::ProgramRun last;
};

const json* node(const json& dump, const std::string& id) {
  for (const json& n : dump["nodes"])
    if (n["id"] == id) return &n;
  return nullptr;
}

bool hasWire(const json& dump, const std::string& from, const std::string& to, int input) {
  for (const json& w : dump["wires"])
    if (w["from"] == from && w["to"] == to && w["input"] == input) return true;
  return false;
}

// The example as the program shows it; where each node lies, in either
// orientation, is checked by the view's and the tidier's own tests.
TEST(RenderScript, TidiedExampleInBothOrientations) {
  Render r;
  const json ltr = r.run("");
  ASSERT_EQ(ltr["nodes"].size(), 8u) << "three trees at 5 s; the shared B-roll shown once";
  EXPECT_EQ(ltr["view"]["orientation"], "LeftToRight");
  const json& dissolve = *node(ltr, "2.0.1");
  EXPECT_EQ(dissolve["kind"], "FXGraphViewNode");
  EXPECT_EQ((*node(ltr, "3.0.3"))["kind"], "FXGraphViewImageNode");
  EXPECT_EQ(dissolve["title"], "V1 : Dissolve");
  EXPECT_TRUE(dissolve["primary"]);
  EXPECT_EQ(dissolve["pos"], json::array({0.0, 0.0}));
  EXPECT_TRUE(hasWire(ltr, "3.0.2", "2.0.2", 0));
  const json btt = r.run("orientation BottomToTop\n");
  EXPECT_EQ(btt["view"]["orientation"], "BottomToTop");
  const json& turned = *node(btt, "2.0.1");
  EXPECT_EQ(turned["inputs"][0]["pos"][1], turned["pixels"][1]) << "inputs on the bottom edge";
  EXPECT_EQ(turned["outputs"][0]["pos"][1], turned["pixels"][3]) << "the output on the top edge";
}

TEST(RenderScript, HandPlacedNodeSurvivesSaveAndReopen) {
  Render r;
  const json before = r.run("node-drag 3.0.5 70 -40\nsave\n");
  const json& placed = *node(before, "3.0.5");
  // The next process opens the edit with its saved positions.
  const json after = r.run("");
  ASSERT_TRUE(node(after, "3.0.5"));
  EXPECT_EQ((*node(after, "3.0.5"))["pos"], placed["pos"]);
  EXPECT_NE(placed["pos"], json::array({-0.375, -0.3125})) << "the drag moved it from its tidy place";
  EXPECT_EQ((*node(after, "2.0.1"))["pos"], (*node(before, "2.0.1"))["pos"]);
  // In the same process too: close, reopen.
  const json again = r.run("close\nreopen\n");
  EXPECT_EQ((*node(again, "3.0.5"))["pos"], placed["pos"]);
}

// The pad, drag and undo fields of the dump as the program writes them.
TEST(RenderScript, WirePickedUpDroppedElsewhereThenUndone) {
  Render r("tests/e2e/fixtures/wiring.json");
  // Picking up the wire into Mix's input B leaves it hanging from Green.
  const json picked = r.run("pad 2.0.1 in 1\n");
  ASSERT_FALSE(picked["drag"].is_null());
  EXPECT_EQ(picked["drag"]["anchor"], "3.0.2");
  EXPECT_FALSE(picked["drag"]["atInput"]);
  EXPECT_FALSE(hasWire(picked, "3.0.2", "2.0.1", 1));
  EXPECT_TRUE(picked["undo"]["canUndo"]);

  const json dropped = r.run("pad 2.0.1 in 1\npad 2.0.2 in 1\n");
  EXPECT_TRUE(dropped["drag"].is_null());
  EXPECT_TRUE(hasWire(dropped, "3.0.2", "2.0.2", 1));

  // The drop and the pick-up are an undo step each.
  const json once = r.run("pad 2.0.1 in 1\npad 2.0.2 in 1\nundo\n");
  EXPECT_FALSE(hasWire(once, "3.0.2", "2.0.2", 1));
  EXPECT_FALSE(hasWire(once, "3.0.2", "2.0.1", 1));
  const json twice = r.run("pad 2.0.1 in 1\npad 2.0.2 in 1\nundo\nundo\n");
  EXPECT_TRUE(hasWire(twice, "3.0.2", "2.0.1", 1));
  EXPECT_TRUE(twice["undo"]["canRedo"]);
}

TEST(RenderScript, WheelZoomsAndDraggingEmptyCanvasPans) {
  Render r;
  const json start = r.run("");
  const json& w = start["view"]["window"];
  const int midX = (w[0].get<int>() + w[2].get<int>()) / 2, midY = (w[1].get<int>() + w[3].get<int>()) / 2;
  const std::string middle = std::to_string(midX) + " " + std::to_string(midY);
  // In three steps and out two, from where the run began (a run starts at
  // the zoom the last one left).
  const std::string before = r.folder.path("before.json"), in = r.folder.path("in.json");
  const json zoomed = r.run("move " + middle + "\ndump " + before + "\nwheel 3\ndump " + in + "\nwheel -2\n");
  const double z0 = readJson(before)["view"]["zoom"], z1 = readJson(in)["view"]["zoom"];
  EXPECT_NEAR(z1, std::min(1.0, z0 + 0.3), 1e-12);
  EXPECT_NEAR(zoomed["view"]["zoom"].get<double>(), z1 - 0.2, 1e-12);

  // Zoomed right out the graph is small and the corners are empty canvas: a
  // press there pans, and the graph follows the mouse.
  const json out = r.run("move " + middle + "\nwheel -10\n");
  const int x = w[0].get<int>() + 30, y = w[3].get<int>() - 30;
  auto at = [](int px, int py) { return std::to_string(px) + " " + std::to_string(py); };
  const json panned = r.run("move " + middle + "\nwheel -10\npress " + at(x, y) + "\nmove " + at(x + 20, y - 20) +
                            "\nmove " + at(x + 30, y - 30) + "\nrelease " + at(x + 30, y - 30) + "\n");
  const double scale = out["view"]["scale"];
  EXPECT_NEAR(panned["view"]["centre"][0].get<double>(), out["view"]["centre"][0].get<double>() - 30 / scale, 1e-9);
  EXPECT_NEAR(panned["view"]["centre"][1].get<double>(), out["view"]["centre"][1].get<double>() + 30 / scale, 1e-9);
}

TEST(RenderScript, PictureShowsWhatTheDumpSays) {
  Render r;
  const std::string png = r.folder.path("graph.png");
  const json dump = r.run("", {"--png", png, "--size", "900x600"});
  std::string why;
  Ux::Ptr<UxImage> picture = UxImage::loadPNG(png, &why);
  ASSERT_TRUE(picture) << why;
  EXPECT_EQ(picture->width(), 900);
  EXPECT_EQ(picture->height(), 600);
  // View pixels are bottom-up from the view's origin; PNG rows run from the top.
  const int ox = dump["view"]["origin"][0], oy = dump["view"]["origin"][1];
  auto colourAt = [&](const json& box) {
    const int x = ox + (box[0].get<int>() + box[2].get<int>()) / 2;
    const int y = oy + (box[1].get<int>() + box[3].get<int>()) / 2;
    return picture->pixel(x, picture->height() - 1 - y);
  };
  auto expectColour = [](Colour got, const json& want, const char* what) {
    EXPECT_NEAR(got.r, want[0].get<double>(), 0.02) << what;
    EXPECT_NEAR(got.g, want[1].get<double>(), 0.02) << what;
    EXPECT_NEAR(got.b, want[2].get<double>(), 0.02) << what;
  };
  // A node well inside the view area, off its title text: a sixteenth of
  // the way across the bar (the framed graph's boxes are small).
  const json& broll = *node(dump, "3.0.2");
  json bar = broll["titleBar"]["pixels"];
  bar[2] = bar[0].get<int>() + (bar[2].get<int>() - bar[0].get<int>()) / 8;
  expectColour(colourAt(bar), broll["titleBar"]["colour"], "title bar");
  const json& matte = *node(dump, "3.0.5");
  expectColour(colourAt(matte["thumbnail"]["pixels"]), matte["thumbnail"]["colour"], "matte thumbnail");
  expectColour(colourAt(matte["thumbnail"]["pixels"]), json::array({0.1, 0.25, 0.75}), "the matte's own colour");
}

// The routing of the compound example, track by track: the video page first,
// an audio page per channel, effects bypassed and reordered by the mouse.
TEST(RenderScript, RoutingDialogueOfTheCompoundExample) {
  Render r("examples/compound.json");
  const json opened = r.run("routing\n");
  const json& routing = opened["routing"];
  ASSERT_FALSE(routing.is_null());
  EXPECT_EQ(routing["pages"], json::parse(R"([{"title": "Video", "id": "1.0.1"}, {"title": "A1", "id": "1.0.2"},
                                              {"title": "A2", "id": "1.0.3"}])"));
  EXPECT_TRUE(routing["tabs"]);
  EXPECT_EQ(routing["selected"], 0);
  EXPECT_EQ(routing["showing"], "video");
  EXPECT_EQ(opened["popups"].back()["type"], "MultiTrackRoutingView");

  const json a1 = r.run("routing\ntab 1\n")["routing"];
  EXPECT_EQ(a1["showing"], "audio");
  ASSERT_EQ(a1["rows"].size(), 4u);
  EXPECT_EQ(a1["rows"][0], (json{{"text", "Gain"}, {"id", "4.0.1"}, {"active", true}, {"movable", true}}));
  EXPECT_FALSE(a1["rows"][1]["movable"]) << "the crossfade";
  EXPECT_EQ(a1["rows"][3]["id"], "5.0.1");

  // The crossfade keeps its place; a click bypasses Gain, and undo brings it back.
  const json swapped = r.run("routing\ntab 1\nrow-swap 0 1\nrow-click 0\n");
  EXPECT_EQ(swapped["routing"]["rows"][0]["id"], "4.0.1");
  EXPECT_FALSE(swapped["routing"]["rows"][0]["active"]);
  EXPECT_TRUE(r.run("routing\ntab 1\nrow-click 0\nundo\n")["routing"]["rows"][0]["active"]);
}

TEST(RenderScript, BadInputGetsOneLineAndAStatus) {
  Render r;
  const std::string script = r.folder.write("bad.txt", "time 1\n# a comment\nfly 3 4\n");
  testsupport::ProgramRun run = runProgram({"render", r.edit, "--script", script, "--prefs", r.prefs});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("bad.txt:3: unknown command \"fly\""), std::string::npos) << run.err;

  const std::string broken = r.folder.write("broken.json", "{\"name\": \"x\",\n \"nodes\": 7}\n");
  run = runProgram({"render", broken, "--prefs", r.prefs});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.err.find("broken.json:2: \"nodes\" must be a list"), std::string::npos) << run.err;
  EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;

  run = runProgram({"render", r.edit, "--size", "huge"});
  EXPECT_EQ(run.status, 2);
  // A time no clock reaches is no time, on the command line as in scripts.
  run = runProgram({"render", r.edit, "--time", "inf"});
  EXPECT_EQ(run.status, 2);

  // What is echoed back is cut short, and bytes that are no text are shown
  // as codes: a megabyte of nonsense gives one short line.
  std::string nonsense = "fly\xff\x01" + std::string(1 << 20, 'z') + "\n";
  const std::string long_ = r.folder.write("long.txt", nonsense);
  run = runProgram({"render", r.edit, "--script", long_, "--prefs", r.prefs});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err.size();
  EXPECT_LT(run.err.size(), 300u);
  EXPECT_NE(run.err.find("unknown command \"fly\\xff\\x01zzz"), std::string::npos) << run.err.substr(0, 300);
  EXPECT_EQ(run.err.find('\xff'), std::string::npos);
}

TEST(RenderScript, InputsThatAreNoFilesAreRefusedAtOnce) {
  Render r;
  const std::string fifo = r.folder.path("fifo"), folder = r.folder.path("folder");
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  std::filesystem::create_directory(folder);
  // A pipe nobody writes to, an endless device and a folder, as each of the
  // files the program reads: one line, a failing status, no hang.
  const std::vector<std::vector<std::string>> runs = {
      {"render", fifo, "--prefs", r.prefs},
      {"render", "/dev/zero", "--prefs", r.prefs},
      {"render", folder, "--prefs", r.prefs},
      {"render", r.edit, "--prefs", r.prefs, "--script", folder},
      {"render", r.edit, "--prefs", r.prefs, "--script", fifo},
      {"render", r.edit, "--prefs", folder},
      {"nodeui", "dump", fifo},
      {"nodeui", "inspect", "/dev/zero"},
  };
  for (const auto& args : runs) {
    const testsupport::ProgramRun run = runProgram(args);
    EXPECT_EQ(run.status, 1) << args[1] << " " << args.back();
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_NE(run.err.find("not a regular file"), std::string::npos) << run.err;
  }
}

TEST(RenderScript, StoredPositionsThatAreNoPlaceAreToldAndPlacedAfresh) {
  Render r;
  const std::string cookie = readJson(r.edit)["cookie"];
  const std::string records = r.folder.write("records.json", R"({"records": [
    {"node": "2.0.1", "cookie": ")" + cookie + R"(", "draw": ["Infinity", 0.5]},
    {"node": "2.0.2", "cookie": ")" + cookie + R"(", "draw": ["NaN", 0.5]},
    {"node": "2.0.3", "cookie": ")" + cookie + R"(", "draw": [0.1, 0.5], "manual": [1e308, 0], "manualSet": true}]})");
  ASSERT_EQ(runProgram({"nodeui", "pack", records, r.edit + ".objects"}).status, 0);
  const json dump = r.run("");
  EXPECT_EQ(std::count(r.last.err.begin(), r.last.err.end(), '\n'), 3) << r.last.err;
  for (const char* id : {"2.0.1", "2.0.2", "2.0.3"})
    EXPECT_NE(r.last.err.find(std::string("promo.json.objects: Position records: node ") + id), std::string::npos)
        << r.last.err;
  EXPECT_GT(dump["view"]["scale"].get<double>(), 0);
  for (const json& n : dump["nodes"])
    for (const json& v : n["pos"]) EXPECT_TRUE(v.is_number() && std::isfinite(v.get<double>())) << n["id"];
}

TEST(RenderScript, PicturesAndDumpsAreWrittenWholeOrNotAtAll) {
  Render r;
  // Outputs that cannot be replaced: a device, a folder, a missing folder.
  // Each gets one line with the reason, a failing status, and is left as it was.
  const std::string folder = r.folder.path("pictures");
  std::filesystem::create_directory(folder);
  const std::pair<std::string, std::string> cases[] = {
      {"--png", "/dev/null"},
      {"--svg", folder},
      {"--dump", r.folder.path("missing/dump.json")},
  };
  for (const auto& [option, target] : cases) {
    const testsupport::ProgramRun run = runProgram({"render", r.edit, "--prefs", r.prefs, option, target});
    EXPECT_EQ(run.status, 1) << option;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_TRUE(run.err.find("not a regular file") != std::string::npos ||
                run.err.find("No such file or directory") != std::string::npos)
        << run.err;
  }
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_TRUE(std::filesystem::is_directory(folder));
  // A picture replaced through the user's link: the link stays, the file changes.
  const std::string real = r.folder.write("real.svg", "old");
  std::filesystem::create_symlink(real, r.folder.path("link.svg"));
  const testsupport::ProgramRun run =
      runProgram({"render", r.edit, "--prefs", r.prefs, "--svg", r.folder.path("link.svg")});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_TRUE(std::filesystem::is_symlink(r.folder.path("link.svg")));
  EXPECT_EQ(testsupport::readText(real).rfind("<?xml", 0), 0u);
  EXPECT_TRUE(r.folder.leftovers().empty());
}

} // namespace
