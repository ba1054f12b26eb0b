#include <filesystem>
#include <fstream>
#include <string>

#include <gtest/gtest.h>

#include "host/config/EditorPreferences.h"
#include "host/notify/Log.h"
#include "tests/support/Program.h"

namespace fs = std::filesystem;

namespace {

// A folder of its own for each test, gone afterwards.
struct Preferences : ::testing::Test {
  testsupport::TempFolder folder;

  std::string file(const char* name) const { return folder.path(name); }
  static void write(const std::string& path, const std::string& text) { std::ofstream(path, std::ios::binary) << text; }
  static std::string read(const std::string& path) { return testsupport::readText(path); }
};

} // namespace

TEST_F(Preferences, EveryTypeReadsBackFromTheFileAsWritten) {
  const std::string path = file("preferences");
  {
    EditorPreferences p(path);
    EXPECT_TRUE(p.setPreference("Video Routing : Templates", false));
    EXPECT_TRUE(p.setPreference("Video Routing : Zoom", 0.1));
    EXPECT_TRUE(p.setPreference("Video Routing : Orientation", 1));
    EXPECT_TRUE(p.setPreference("Effect graph tool size", XY<int>{640, 480}));
    EXPECT_TRUE(p.setPreference("Video Routing : Position", XY<int>{-1234, -1234}));
    EXPECT_TRUE(p.setPreference("Last edit", L"Prömo \"cut\" "));
    EXPECT_TRUE(p.setPreference("Note", "two\nlines"));
  }
  EditorPreferences again(path);
  EXPECT_FALSE(again.getPreference("Video Routing : Templates", true));
  EXPECT_EQ(again.getPreference("Video Routing : Zoom", 0.75), 0.1);
  EXPECT_EQ(again.getPreference("Video Routing : Orientation", 0), 1);
  EXPECT_EQ(again.getPreference("Effect graph tool size", XY<int>{792, 550}), (XY<int>{640, 480}));
  EXPECT_EQ(again.getPreference("Video Routing : Position", XY<int>{0, 0}), (XY<int>{-1234, -1234}));
  EXPECT_EQ(again.getPreference("Last edit", L""), L"Prömo \"cut\" ");
  EXPECT_EQ(again.getPreference("Note", ""), "two\nlines");

  const std::string text = read(path);
  EXPECT_NE(text.find("Effect graph tool size = (640,480)\n"), std::string::npos);
  EXPECT_NE(text.find("Video Routing : Zoom = 0.1\n"), std::string::npos);
  EXPECT_NE(text.find("Note = \"two\\nlines\"\n"), std::string::npos);
  // Written through a temporary file that is renamed into place.
  EXPECT_EQ(std::distance(fs::directory_iterator(folder.path("")), fs::directory_iterator()), 1);
}

TEST_F(Preferences, CommentsSurviveARewrite) {
  const std::string path = file("preferences");
  const std::string handWritten = "# written by hand\n"
                                  "Video Routing : Zoom = 0.5\n"
                                  "\n"
                                  "Automatic FX positioning = true\n";
  write(path, handWritten);
  EditorPreferences p(path);
  EXPECT_TRUE(p.refusal().empty());
  EXPECT_EQ(p.getPreference("Video Routing : Zoom", 0.75), 0.5);
  EXPECT_TRUE(p.getPreference("Automatic FX positioning", false));
  EXPECT_TRUE(p.setPreference("Video Routing : Zoom", 1.0));
  std::string expected = handWritten;
  expected.replace(expected.find("0.5"), 3, "1");
  EXPECT_EQ(read(path), expected);
}

// Any other file (an edit, a picture, a script named by mistake) is the
// user's: nothing is taken from it and it is never written.
TEST_F(Preferences, AFileThatIsNotOneIsNeitherReadNorWritten) {
  const std::string pngBytes("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16);
  const std::pair<std::string, std::string> files[] = {
      {"{\n  \"name\": \"Promo\",\n  \"note\": \"a = b\"\n}\n", "line 1 is not \"key = value\""},
      {"Video Routing : Zoom = 0.5\nno separator here\n", "line 2 is not \"key = value\""},
      {"Title = \"unfinished\n", "line 1 is not \"key = value\""},
      {pngBytes, "binary data"},
  };
  for (const auto& [text, reason] : files) {
    const std::string path = file("not-preferences");
    write(path, text);
    EditorPreferences p(path);
    EXPECT_NE(p.refusal().find(path + ": not a preferences file"), std::string::npos) << p.refusal();
    EXPECT_NE(p.refusal().find(reason), std::string::npos) << p.refusal();
    EXPECT_EQ(p.getPreference("Video Routing : Zoom", 0.75), 0.75);
    EXPECT_FALSE(p.setPreference("Video Routing : Zoom", 1.0)) << "kept in memory only";
    EXPECT_EQ(p.getPreference("Video Routing : Zoom", 0.75), 1.0);
    EXPECT_FALSE(p.unsaved().empty());
    EXPECT_EQ(read(path), text);
  }
}

TEST_F(Preferences, AMissingFileGivesTheDefaultsAndTheFirstChangeMakesIt) {
  const std::string path = file("preferences");
  LogChannel::Capture log(Log::channel());
  EditorPreferences p(path);
  EXPECT_TRUE(log.messages().empty());
  EXPECT_EQ(p.getPreference("Video Routing : Zoom", 0.75), 0.75);
  EXPECT_FALSE(fs::exists(path));
  EXPECT_TRUE(p.setPreference("Video Routing : Zoom", 0.5));
  EXPECT_TRUE(fs::exists(path));

  // Text of another type gives the default.
  write(path, "n = 12abc\npoint = (3,4\nflag = yes\n");
  p.open(path);
  EXPECT_EQ(p.getPreference("n", 7), 7);
  EXPECT_EQ(p.getPreference("point", XY<int>{1, 1}), (XY<int>{1, 1}));
  EXPECT_TRUE(p.getPreference("flag", true));
  EXPECT_FALSE(p.getPreference("flag", false));

  // A key that the format cannot hold is refused.
  EXPECT_FALSE(p.setPreference("a = b", 1));
  EXPECT_FALSE(p.hasPreference("a = b"));
}

// The user's own folder is made at the first change; the missing folder of
// a file named by hand is a failed write, told once and retried.
TEST_F(Preferences, AMissingFolderIsMadeOnlyForTheUsersOwnFolder) {
  const std::string mine = file("config/fxgraph/preferences"), named = file("typo/preferences");
  EditorPreferences own;
  own.open(mine, true);
  EXPECT_TRUE(own.setPreference("Video Routing : Zoom", 0.5));
  EXPECT_TRUE(fs::exists(mine));

  EditorPreferences p(named);
  std::vector<std::string> told;
  p.setWriteFailureHandler([&](const std::string& why) { told.push_back(why); });
  EXPECT_FALSE(p.setPreference("Video Routing : Zoom", 0.5));
  EXPECT_FALSE(p.setPreference("Video Routing : Templates", false));
  ASSERT_EQ(told.size(), 1u) << "told once";
  EXPECT_NE(told[0].find(named), std::string::npos) << told[0];
  EXPECT_EQ(p.unsaved(), told[0]);
  EXPECT_FALSE(fs::exists(folder.path("typo")));
  fs::create_directory(folder.path("typo"));
  EXPECT_TRUE(p.setPreference("Video Routing : Templates", false));
  EXPECT_TRUE(p.unsaved().empty());
  EXPECT_EQ(read(named), "Video Routing : Zoom = 0.5\nVideo Routing : Templates = false\n");
}

TEST_F(Preferences, TheProcessStoreFollowsTheFileItIsGiven) {
  const std::string first = file("first"), second = file("second");
  write(first, "Video Routing : Zoom = 0.25\n");
  setPreferencesFile(first);
  EXPECT_EQ(prefs().path(), first);
  EXPECT_EQ(prefs().getPreference("Video Routing : Zoom", 0.75), 0.25);

  setPreferencesFile(second);
  EXPECT_EQ(prefs().getPreference("Video Routing : Zoom", 0.75), 0.75);
  prefs().setPreference("Video Routing : Templates", false);
  EXPECT_EQ(read(second), "Video Routing : Templates = false\n");
  EXPECT_EQ(read(first), "Video Routing : Zoom = 0.25\n");
}
