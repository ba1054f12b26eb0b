// A file material's media in an edit file: where it lies in the edit.
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/edit/EditFile.h"
#include "host/edit/GraphNodeKinds.h"

namespace filemedia {

using nlohmann::json;

// An edit whose V1 shows `clip` from 4 s (under a mix) and from 10 s alone.
std::string editWith(const json& media) {
  return json{
      {"channels",
       {{{"id", "1.0.1"},
         {"cels",
          {{{"start", 4}, {"end", 8}, {"graph", "2.0.1"}}, {{"start", 10}, {"end", 12}, {"graph", "3.0.1"}}}}}}},
      {"nodes",
       {{{"id", "2.0.1"}, {"kind", "effect"}, {"tag", "mix"}, {"inputs", {"3.0.2", "3.0.1"}}},
        {{"id", "3.0.1"}, {"kind", "material"}, {"name", "Clip"}, {"media", media}},
        {{"id", "3.0.2"}, {"kind", "material"}, {"media", json::object({{"testcard", "bars"}})}}}}}
      .dump();
}

TEST(FileMedia, PlacementIsReadKeptAndSavedAsWritten) {
  struct Case {
    json media;
    double in, at, speed;
  } cases[] = {
      // Without "at", the first cel that shows the material starts its media.
      {json::object({{"file", "a.mp4"}}), 0, 4, 1},
      {json::object({{"file", "a.mp4"}, {"in", 1.5}, {"at", 2}, {"speed", 0}}), 1.5, 2, 0},
  };
  for (const Case& c : cases) {
    const EditFile::LoadResult r = EditFile::parse(editWith(c.media), "e.json", ".");
    ASSERT_TRUE(r.edit) << r.error;
    const auto clip = r.edit->openObject<MaterialUsageNode>(IdStamp(3, 0, 1));
    EXPECT_EQ(clip->placement().in, c.in);
    EXPECT_EQ(clip->placement().at, c.at);
    EXPECT_EQ(clip->placement().speed, c.speed);
    // Saved as it was written: a placement by the first cel stays one.
    const json saved = json::parse(EditFile::toJson(*r.edit));
    json media = saved["nodes"][1]["media"];
    EXPECT_EQ(media, c.media);
    r.edit->close();
  }
  for (const json& wrong : {json{{"file", "a.mp4"}, {"at", "soon"}}, json{{"file", "a.mp4"}, {"loop", true}},
                            json::object({{"testcard", "bars"}, {"in", 1}}), json{{"file", "a.mp4"}, {"in", -1}}}) {
    const EditFile::LoadResult r = EditFile::parse(editWith(wrong), "e.json", ".");
    EXPECT_FALSE(r.edit) << wrong.dump();
    EXPECT_NE(r.error.find("e.json:"), std::string::npos) << r.error;
  }
}

} // namespace filemedia
