// Runs of `fxgraph render` against the user's own files on disk: a path
// named by mistake, a save that cannot finish, a file of the user's at one
// of the program's names, an edit reached through a link, settings that
// cannot be written and layout records of other edits. Nothing the user
// had is lost, and every failure is one line and a non-zero status.
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/Program.h"

namespace {

namespace fs = std::filesystem;
using json = nlohmann::json;
using testsupport::readJson;
using testsupport::readText;
using testsupport::runProgram;
using testsupport::TempFolder;

const char* const dragAndSave = "node-drag 3.0.5 70 -40\nsave\n";

// The example in a folder of its own, rendered with its preferences there.
struct Files {
  TempFolder folder;
  std::string edit, prefs;

  Files() {
    edit = folder.copyIn("examples/promo.json");
    folder.copyIn("examples/logo.png");
    prefs = folder.path("prefs");
  }
  testsupport::ProgramRun render(const std::string& editPath, const std::string& script,
                                 std::vector<std::string> extra = {}) {
    std::vector<std::string> args{"render", editPath, "--prefs", prefs};
    if (!script.empty()) args.insert(args.end(), {"--script", folder.write("script.txt", script)});
    args.insert(args.end(), extra.begin(), extra.end());
    return runProgram(args);
  }
  // Where node 3.0.5 stands when the program opens the edit.
  json placeOf(const std::string& editPath, std::string* warnings = nullptr) {
    const std::string dump = folder.path("dump.json");
    const auto run = render(editPath, "", {"--dump", dump});
    EXPECT_EQ(run.status, 0) << run.err;
    if (warnings) *warnings = run.err;
    const json state = readJson(dump);
    for (const json& n : state["nodes"])
      if (n["id"] == "3.0.5") return n["pos"];
    return nullptr;
  }
};

int lineCount(const std::string& text) { return static_cast<int>(std::count(text.begin(), text.end(), '\n')); }

// A file attribute set with chattr for the test's length.
class Attribute {
public:
  Attribute(std::string path, char flag) : path_(std::move(path)), flag_(flag) {
    set_ = std::system(("chattr +" + std::string(1, flag_) + " '" + path_ + "' 2>/dev/null").c_str()) == 0;
  }
  ~Attribute() { clear(); }
  Attribute(const Attribute&) = delete;
  Attribute& operator=(const Attribute&) = delete;
  bool set() const { return set_; }
  void clear() {
    if (set_) std::system(("chattr -" + std::string(1, flag_) + " '" + path_ + "'").c_str());
    set_ = false;
  }

private:
  std::string path_;
  char flag_;
  bool set_ = false;
};

#define SKIP_UNLESS_SET(attribute)                                                                                     \
  if (!(attribute).set()) GTEST_SKIP() << "this file system refuses chattr (needs ext4 or the like, and the right)"

// --layout and --prefs that name a file of the user's leave it as it was:
// the run stops with one line naming it. So do outputs that name an input.
TEST(UserFiles, AFileNamedByMistakeIsNeverWritten) {
  Files f;
  ASSERT_EQ(f.render(f.edit, dragAndSave).status, 0);
  const std::string script = f.folder.write("keys.txt", "key f\n");
  f.folder.write("prefs", "Video Routing : Zoom = 0.5\n");
  const std::string image = f.folder.path("logo.png");
  struct Case {
    std::vector<std::string> args;
    std::string file;
  };
  const std::vector<Case> cases = {
      {{"--layout", f.edit}, f.edit},   {{"--layout", f.edit + ".objects"}, f.edit + ".objects"},
      {{"--layout", image}, image},     {{"--layout", script}, script},
      {{"--layout", f.prefs}, f.prefs}, {{"--prefs", f.edit}, f.edit},
      {{"--prefs", image}, image},      {{"--png", f.edit}, f.edit},
      {{"--dump", script}, script},
  };
  for (const Case& c : cases) {
    const std::string before = readText(c.file);
    std::vector<std::string> args{"render", f.edit, "--prefs", f.prefs, "--script", script};
    // A later --prefs is the one taken.
    args.insert(args.end(), c.args.begin(), c.args.end());
    const auto run = runProgram(args);
    EXPECT_NE(run.status, 0) << c.args[0] << " " << c.file;
    EXPECT_EQ(lineCount(run.err), 1) << run.err;
    EXPECT_NE(run.err.find(c.file), std::string::npos) << run.err;
    EXPECT_EQ(readText(c.file), before) << c.args[0] << " " << c.file << " was written over";
  }
}

// The edit cannot be replaced but its objects can: the saves fail, and the
// objects that the edit on disk names are still there for the next start.
TEST(UserFiles, FailedSavesKeepTheObjectsTheEditNames) {
  for (const char flag : {'i', 'a'}) {
    Files f;
    ASSERT_EQ(f.render(f.edit, dragAndSave).status, 0);
    const json placed = f.placeOf(f.edit);
    Attribute fixed(f.edit, flag);
    SKIP_UNLESS_SET(fixed);
    for (int attempt = 0; attempt < 2; ++attempt) {
      const auto run = f.render(f.edit, "node-drag 3.0.5 -30 20\nsave\n");
      EXPECT_NE(run.status, 0) << "chattr +" << flag;
      EXPECT_EQ(lineCount(run.err), 1) << run.err;
    }
    fixed.clear();
    std::string warnings;
    EXPECT_EQ(f.placeOf(f.edit, &warnings), placed) << "chattr +" << flag;
    EXPECT_EQ(warnings, "");
  }
}

// The program's backup is told by its stamp: a file of the user's that
// bears its name survives saves.
TEST(UserFiles, AUsersFileAtTheBackupsNameIsLeftAlone) {
  Files f;
  const std::string notes = f.folder.write("promo.json.objects.prev", "my notes\n");
  ASSERT_EQ(f.render(f.edit, dragAndSave).status, 0);
  const json placed = f.placeOf(f.edit);
  ASSERT_EQ(f.render(f.edit, "node-drag 3.0.5 -30 20\nsave\n").status, 0);
  EXPECT_EQ(readText(notes), "my notes\n");
  EXPECT_NE(f.placeOf(f.edit), placed) << "the second save is what opens";
}

// Saved through a link, the edit and its objects stay side by side, and
// both the link and the edit itself open with the positions.
TEST(UserFiles, AnEditOpenedThroughALinkKeepsItsPairTogether) {
  Files f;
  fs::create_directory(f.folder.path("real"));
  fs::rename(f.edit, f.folder.path("real/promo.json"));
  fs::rename(f.folder.path("logo.png"), f.folder.path("real/logo.png"));
  const std::string link = f.folder.path("cut.json");
  fs::create_symlink("real/promo.json", link);
  ASSERT_EQ(f.render(link, dragAndSave).status, 0);
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_FALSE(fs::exists(link + ".objects"));
  EXPECT_TRUE(fs::exists(f.folder.path("real/promo.json.objects")));
  std::string warnings;
  const json throughLink = f.placeOf(link, &warnings);
  EXPECT_EQ(warnings, "");
  EXPECT_EQ(f.placeOf(f.folder.path("real/promo.json"), &warnings), throughLink);
  EXPECT_EQ(warnings, "");
  EXPECT_NE(throughLink, json(nullptr));
}

// Layout and preferences that cannot be written are one line each and a
// non-zero status, naming the file.
TEST(UserFiles, SettingsThatCannotBeWrittenAreReported) {
  Files f;
  ASSERT_EQ(f.render(f.edit, "").status, 0) << "a layout and preferences to fix in place";
  const std::string layout = f.folder.path("layout");
  auto expectReported = [&](const std::string& prefs, const std::string& layoutPath, const std::string& named) {
    // Both change: the view is fitted, the templates list hidden.
    const auto run = runProgram({"render", f.edit, "--prefs", prefs, "--layout", layoutPath, "--script",
                                 f.folder.write("change.txt", "key f\nbutton ToggleTemplates\n")});
    EXPECT_NE(run.status, 0) << named;
    EXPECT_EQ(lineCount(run.err), 1) << run.err;
    EXPECT_NE(run.err.find(named), std::string::npos) << run.err;
  };
  fs::create_symlink(f.folder.path("gone/layout"), f.folder.path("dangling"));
  for (const std::string& path :
       {f.folder.path("missing/layout"), f.folder.path("dangling"), f.folder.path(std::string(300, 'x'))})
    expectReported(f.prefs, path, path);
  expectReported(f.folder.path("missing/prefs"), layout, f.folder.path("missing/prefs"));
  {
    Attribute fixed(layout, 'i');
    SKIP_UNLESS_SET(fixed);
    expectReported(f.prefs, layout, layout);
  }
  {
    Attribute fixed(f.prefs, 'i');
    SKIP_UNLESS_SET(fixed);
    expectReported(f.prefs, layout, f.prefs);
  }
  fs::create_directory(f.folder.path("shut"));
  Attribute fixed(f.folder.path("shut"), 'i');
  SKIP_UNLESS_SET(fixed);
  expectReported(f.prefs, f.folder.path("shut/layout"), f.folder.path("shut/layout"));
}

// Records of other edits and other panels go back into the layout as they
// were; the edit opened gets its tool all the same.
TEST(UserFiles, LayoutRecordsNotRestoredAreKept) {
  Files f;
  const json others = json::parse(R"([
    {"TYPE": "FXGraphTool", "EDIT_COOKIE": "00000000000000000000000000000abc.1.0", "GROUPID": "other",
     "X": "10", "Y": "10", "W": "400", "H": "300", "VIEW_ZOOM": "0.5"},
    {"TYPE": "EditViewer", "title": "Viewer", "X": "5", "extra": [1, 2, {"z": null}]},
    {"TYPE": "FXGraphTool", "EDIT_COOKIE": "00000000000000000000000000000abc.1.0", "VOB_GROUP_ID": "7"}])");
  const std::string layout = f.folder.write("layout.json", json{{"globs", others}}.dump());
  for (int start = 0; start < 2; ++start) {
    const std::string dump = f.folder.path("dump.json");
    const auto run = f.render(f.edit, "", {"--layout", layout, "--dump", dump});
    ASSERT_EQ(run.status, 0) << run.err;
    const json state = readJson(dump);
    ASSERT_FALSE(state["panel"].is_null()) << "the edit opened has its tool";
    EXPECT_EQ(state["panel"]["title"], "Effect graph : Promo");
    EXPECT_EQ(state["panels"].size(), 1u);
    const json saved = readJson(layout)["globs"];
    ASSERT_EQ(saved.size(), 4u) << saved.dump();
    for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(saved[i], others[i]);
    EXPECT_EQ(saved[3]["TYPE"], "FXGraphTool");
    EXPECT_EQ(saved[3]["GROUPID"], "main");
  }
  // Two records of the one vob make one tool: a vob has one at most.
  const json mine = {{"TYPE", "FXGraphTool"}, {"EDIT_COOKIE", "5f1c0a3e9b7d4e21a8c6f0b2d4e6a8c0.1.0"},
                     {"GROUPID", "main"}};
  f.folder.write("layout.json", json{{"globs", {mine, mine}}}.dump());
  const auto run = f.render(f.edit, "", {"--layout", layout, "--dump", f.folder.path("dump.json")});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(readJson(f.folder.path("dump.json"))["panels"].size(), 1u);
}

} // namespace
