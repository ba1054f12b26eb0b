// The program on a timeline: opened, rendered, saved beside itself and
// imported as an edit file.
#include <filesystem>

#include <gtest/gtest.h>

#include "tests/support/Program.h"

namespace timelines {

using json = nlohmann::json;
using testsupport::readJson;
using testsupport::readText;
using testsupport::runProgram;
using testsupport::TempFolder;

struct Cut {
  TempFolder folder;
  std::string timeline;
  Cut() {
    timeline = folder.copyIn("examples/cut.otio");
    std::filesystem::create_directory(folder.path("media"));
    for (const char* clip : {"sunrise.mp4", "starfield.mp4"})
      std::filesystem::copy_file(testsupport::sourcePath(std::string("examples/media/") + clip),
                                 folder.path(std::string("media/") + clip));
  }
  testsupport::ProgramRun render(const std::string& script, double time = 2.8) {
    std::vector<std::string> args{"render",  timeline,
                                  "--time",  std::to_string(time),
                                  "--prefs", folder.path("prefs"),
                                  "--dump",  folder.path("dump.json")};
    if (!script.empty()) args.insert(args.end(), {"--script", folder.write("script.txt", script)});
    return runProgram(args);
  }
};

std::vector<std::string> titles(const json& dump) {
  std::vector<std::string> out;
  for (const json& n : dump["nodes"]) out.push_back(n["title"]);
  std::sort(out.begin(), out.end());
  return out;
}

TEST(TimelineProgram, OpensRendersAndSavesBesideTheTimeline) {
  Cut cut;
  const std::string original = readText(cut.timeline);
  // In the dissolve: both clips, the second under its two effects.
  const auto run = cut.render("node-drag 2.0.3 40 30\nsave\n");
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.err, "") << "the example is read without a warning";
  const json dump = readJson(cut.folder.path("dump.json"));
  EXPECT_EQ(titles(dump), (std::vector<std::string>{"Starfield : V1", "Sunrise : V1", "V1 : Dissolve", "V1 : Glow",
                                                    "V1 : Night grade"}));
  EXPECT_EQ(readText(cut.timeline), original) << "the timeline is never written";
  ASSERT_TRUE(std::filesystem::exists(cut.timeline + ".json"));
  EXPECT_TRUE(std::filesystem::exists(cut.timeline + ".json.objects"));

  // Opened again, the timeline brings back what was saved from it.
  const auto again = cut.render("");
  ASSERT_EQ(again.status, 0) << again.err;
  EXPECT_NE(again.err.find("the arrangement saved from it is opened"), std::string::npos) << again.err;
  const json reopened = readJson(cut.folder.path("dump.json"));
  auto pos = [](const json& d, const std::string& id) {
    for (const json& n : d["nodes"])
      if (n["id"] == id) return n["pos"];
    return json();
  };
  EXPECT_EQ(pos(reopened, "2.0.3"), pos(dump, "2.0.3"));
}

TEST(TimelineProgram, ImportWritesAnEditWhoseMediaAreFoundFromWhereItLies) {
  Cut cut;
  std::filesystem::create_directory(cut.folder.path("edits"));
  const std::string out = cut.folder.path("edits/night.json");
  const auto run = runProgram({"import", cut.timeline, out});
  ASSERT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("1 channel, 5 graph nodes"), std::string::npos) << run.out;
  const json edit = readJson(out);
  EXPECT_EQ(edit["name"], "Night falls");
  std::vector<std::string> files;
  for (const json& n : edit["nodes"])
    if (n.contains("media") && n["media"].contains("file")) files.push_back(n["media"]["file"]);
  EXPECT_EQ(files, (std::vector<std::string>{"../media/sunrise.mp4", "../media/starfield.mp4"}));
  // The edit opens like any other.
  const auto render = runProgram({"render", out, "--time", "1", "--prefs", cut.folder.path("prefs")});
  EXPECT_EQ(render.status, 0) << render.err;
  // Never over the timeline itself.
  EXPECT_EQ(runProgram({"import", cut.timeline, cut.timeline}).status, 1);
}

TEST(TimelineProgram, WhatIsNotATimelineIsRefusedInOneLine) {
  TempFolder folder;
  const std::string edit = folder.copyIn("examples/promo.json");
  const std::string posing = folder.path("promo.otio");
  std::filesystem::copy_file(edit, posing);
  const std::string damaged = folder.write("damaged.otio", "{\"OTIO_SCHEMA\": \"Timeline.1\", \"tracks\": {");
  for (const auto& [file, reason] :
       {std::pair{posing, "not a timeline (its top object has no OTIO_SCHEMA)"}, {damaged, "the text ends too soon"}}) {
    const auto run = runProgram({"render", file, "--prefs", folder.path("prefs")});
    EXPECT_EQ(run.status, 1);
    EXPECT_NE(run.err.find(file), std::string::npos) << run.err;
    EXPECT_NE(run.err.find(reason), std::string::npos) << run.err;
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    EXPECT_FALSE(std::filesystem::exists(file + ".json"));
  }
}

} // namespace timelines
