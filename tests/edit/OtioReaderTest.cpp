// Timelines written here from the interchange format's published schema,
// read as edits.
#include "host/edit/OtioReader.h"

#include <cmath>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/edit/EditFile.h"
#include "host/edit/GraphNodeKinds.h"

namespace otio {

using nlohmann::json;

json rt(double value, double rate = 25) {
  return {{"OTIO_SCHEMA", "RationalTime.1"}, {"value", value}, {"rate", rate}};
}
json range(double start, double duration, double rate = 25) {
  return {{"OTIO_SCHEMA", "TimeRange.1"}, {"start_time", rt(start, rate)}, {"duration", rt(duration, rate)}};
}
json external(const std::string& url, json available = nullptr) {
  return {{"OTIO_SCHEMA", "ExternalReference.1"}, {"target_url", url}, {"available_range", available}};
}
json generator(const std::string& kind, json parameters = json::object()) {
  return {{"OTIO_SCHEMA", "GeneratorReference.1"}, {"generator_kind", kind}, {"parameters", parameters}};
}
json effect(const std::string& name, const std::string& effectName, json metadata = json::object(),
            bool enabled = true) {
  return {{"OTIO_SCHEMA", "Effect.1"},
          {"name", name},
          {"effect_name", effectName},
          {"metadata", metadata},
          {"enabled", enabled}};
}
// A clip of the newer kind, its media under the default key.
// Lists are vectors: a braced list of one item is then never taken for the item.
using List = std::vector<json>;

json clip(const std::string& name, double start, double frames, json ref, List effects = {}) {
  return {{"OTIO_SCHEMA", "Clip.2"},
          {"name", name},
          {"source_range", range(start, frames)},
          {"media_references", json::object({{"DEFAULT_MEDIA", ref}})},
          {"active_media_reference_key", "DEFAULT_MEDIA"},
          {"effects", effects},
          {"markers", json::array()},
          {"enabled", true},
          {"metadata", json::object()}};
}
json gap(double frames) { return {{"OTIO_SCHEMA", "Gap.1"}, {"source_range", range(0, frames)}}; }
json transition(double in, double out, const std::string& type = "SMPTE_Dissolve") {
  return {{"OTIO_SCHEMA", "Transition.1"},
          {"name", ""},
          {"transition_type", type},
          {"in_offset", rt(in)},
          {"out_offset", rt(out)}};
}
json track(const std::string& name, List children, const std::string& kind = "Video", List effects = {}) {
  return {{"OTIO_SCHEMA", "Track.1"}, {"name", name}, {"kind", kind}, {"children", children}, {"effects", effects}};
}
json stack(List children, const std::string& name = "") {
  return {{"OTIO_SCHEMA", "Stack.1"}, {"name", name}, {"children", children}};
}
json timeline(List tracks, const std::string& name = "Cut") {
  return {{"OTIO_SCHEMA", "Timeline.1"},
          {"name", name},
          {"global_start_time", rt(90000, 25)},
          {"tracks", stack(tracks, "tracks")}};
}

// The edit document a timeline makes, with lookups by name.
struct Read {
  explicit Read(const std::string& text) : result(OtioReader::toEditDocument(text, "cut.otio")) {
    if (result.error.empty()) doc = json::parse(result.document);
  }
  explicit Read(const json& t) : Read(t.dump()) {}

  const json& node(const std::string& id) const {
    for (const json& n : doc["nodes"])
      if (n["id"] == id) return n;
    static const json none;
    return none;
  }
  const json& channel(const std::string& name) const {
    for (const json& c : doc["channels"])
      if (c["name"] == name) return c;
    static const json none;
    return none;
  }
  // Node names from a graph's top down its first inputs.
  std::vector<std::string> chain(std::string id) const {
    std::vector<std::string> names;
    while (!node(id).is_null()) {
      names.push_back(node(id)["name"]);
      if (!node(id).contains("inputs") || node(id)["inputs"].empty()) break;
      id = node(id)["inputs"][0];
    }
    return names;
  }
  // Each cel of a channel as "start-end: top node's name".
  std::vector<std::string> cels(const std::string& name) const {
    std::vector<std::string> out;
    for (const json& c : channel(name)["cels"]) {
      char text[64];
      std::snprintf(text, sizeof text, "%g-%g: ", c["start"].get<double>(), c["end"].get<double>());
      out.push_back(text + node(c["graph"])["name"].get<std::string>());
    }
    return out;
  }
  bool warned(const std::string& part) const {
    for (const std::string& w : result.warnings)
      if (w.find(part) != std::string::npos) return true;
    return false;
  }

  OtioReader::Result result;
  json doc;
};

using Strings = std::vector<std::string>;

TEST(Timeline, ClipsDissolveAndEffectsMakeCelsAndGraphs) {
  const json blur = effect("Soft", "Blur", {{"size", 2.5}, {"vendor", {{"radius", 4}, {"label", "x"}}}});
  const json grade = effect("", "ColorCorrection", json::object(), false);
  const Read r(timeline({track("Main",
                               {clip("Interview", 100, 50, external("clips/a.mp4"), {blur, grade}), transition(10, 15),
                                clip("Street", 0, 50, external("file:clips/b.mp4"))},
                               "Video", {effect("Look", "LUT")})}));
  ASSERT_EQ(r.result.error, "");
  EXPECT_EQ(r.doc["name"], "Cut");
  EXPECT_EQ(r.doc["frameRate"], 25);
  // The overlap is the dissolve's; the track's effect is over every cel.
  EXPECT_EQ(r.cels("Main"), (Strings{"0-1.6: Look", "1.6-2.6: Look", "2.6-4: Look"}));
  const json& cels = r.channel("Main")["cels"];
  EXPECT_EQ(r.chain(cels[0]["graph"]), (Strings{"Look", "ColorCorrection", "Soft", "Interview"}));
  const json& dissolve = r.node(r.node(cels[1]["graph"])["inputs"][0]);
  EXPECT_EQ(dissolve["name"], "Dissolve");
  EXPECT_EQ(dissolve["tag"], "mix");
  EXPECT_EQ(dissolve["params"]["start"], 1.6);
  EXPECT_EQ(dissolve["params"]["end"], 2.6);
  // A is the outgoing clip under its effects, B the incoming one.
  EXPECT_EQ(r.chain(dissolve["inputs"][0]), (Strings{"ColorCorrection", "Soft", "Interview"}));
  EXPECT_EQ(r.chain(dissolve["inputs"][1]), (Strings{"Street"}));

  const json& soft = r.node(r.node(r.node(cels[0]["graph"])["inputs"][0])["inputs"][0]);
  EXPECT_EQ(soft["tag"], "Blur");
  EXPECT_EQ(soft["params"], (json{{"size", 2.5}, {"vendor.radius", 4}}));
  EXPECT_EQ(soft["active"], true);
  EXPECT_EQ(r.node(r.node(cels[0]["graph"])["inputs"][0])["active"], false) << "a disabled effect is bypassed";

  // The media's time at the clip's start is its source range's start.
  const json& interview = r.node(soft["inputs"][0]);
  EXPECT_EQ(interview["media"], (json{{"file", "clips/a.mp4"}, {"in", 4.0}, {"at", 0.0}}));
  EXPECT_EQ(r.node(dissolve["inputs"][1])["media"], (json{{"file", "clips/b.mp4"}, {"in", 0.0}, {"at", 2.0}}));

  // The document is an edit the edit file reader takes.
  const EditFile::LoadResult loaded = EditFile::parse(r.result.document, "cut.otio", ".");
  ASSERT_TRUE(loaded.edit) << loaded.error;
  EXPECT_EQ(loaded.edit->getNumChans(), 1);
  loaded.edit->close();
}

TEST(Timeline, TracksGapsDisabledItemsAndTransitionsAtBothEnds) {
  json disabled = clip("Hidden", 0, 25, external("c.mov"));
  disabled["enabled"] = false;
  const Read r(timeline({track("", {transition(0, 10), clip("Open", 0, 50, external("a.mov")), gap(25), disabled,
                                    clip("Close", 0, 50, external("b.mov")), transition(20, 0)}),
                         track("", {clip("Music", 0, 150, external("m.wav"))}, "Audio"),
                         track("", {clip("Title", 0, 25, generator("SolidColor", {{"color", {1, 0, 0}}}))})}));
  ASSERT_EQ(r.result.error, "");
  // Bottom first; empty names are numbered per kind.
  ASSERT_EQ(r.doc["channels"].size(), 3u);
  EXPECT_EQ(r.doc["channels"][0]["name"], "V1");
  EXPECT_EQ(r.doc["channels"][1]["name"], "A1");
  EXPECT_EQ(r.doc["channels"][1]["type"], "audio");
  EXPECT_EQ(r.doc["channels"][2]["name"], "V2");
  // A fade in from nothing, a gap and a disabled clip left empty, a fade out.
  EXPECT_EQ(r.cels("V1"), (Strings{"0-0.4: Dissolve", "0.4-2: Open", "4-5.2: Close", "5.2-6: Dissolve"}));
  const json& fadeIn = r.node(r.channel("V1")["cels"][0]["graph"]);
  EXPECT_EQ(fadeIn["inputs"][0], "0.0.0");
  EXPECT_EQ(r.node(fadeIn["inputs"][1])["name"], "Open");
  const json& fadeOut = r.node(r.channel("V1")["cels"][3]["graph"]);
  EXPECT_EQ(r.node(fadeOut["inputs"][0])["name"], "Close");
  EXPECT_EQ(fadeOut["inputs"][1], "0.0.0");
  EXPECT_EQ(r.node(r.channel("A1")["cels"][0]["graph"])["type"], "audio");
  const json& title = r.node(r.channel("V2")["cels"][0]["graph"]);
  EXPECT_EQ(title["kind"], "background");
  EXPECT_EQ(title["colour"], (json{1.0, 0.0, 0.0}));
}

TEST(Timeline, EveryKindOfMediaReference) {
  json older = {{"OTIO_SCHEMA", "Clip.1"},
                {"name", "Older"},
                {"source_range", range(0, 25)},
                {"media_reference", external("file:///media/old%20clip.mov")}};
  json proxy = clip("Proxy", 0, 25, external("full.mov"));
  proxy["media_references"]["LOW"] = external("low.mov");
  proxy["active_media_reference_key"] = "LOW";
  json noRange = clip("Whole", 0, 0, external("w.mov", range(86400 * 25, 75)));
  noRange.erase("source_range");
  const json sequence = {{"OTIO_SCHEMA", "ImageSequenceReference.1"},
                         {"target_url_base", "frames"},
                         {"name_prefix", "shot."},
                         {"name_suffix", ".png"},
                         {"start_frame", 1001},
                         {"frame_step", 1},
                         {"rate", 25},
                         {"frame_zero_padding", 4},
                         {"available_range", range(0, 100)}};
  const Read r(timeline({track("V", {older, proxy, noRange, clip("Web", 0, 25, external("https://example.com/a.mov")),
                                     clip("Lost", 0, 25, {{"OTIO_SCHEMA", "MissingReference.1"}}),
                                     clip("Bars", 0, 25, generator("SMPTEBars")),
                                     clip("Sky", 0, 25, generator("Noise")), clip("Plate", 10, 25, sequence)})}));
  ASSERT_EQ(r.result.error, "");
  std::vector<json> media;
  for (const json& c : r.channel("V")["cels"]) media.push_back(r.node(c["graph"]));
  ASSERT_EQ(media.size(), 8u);
  EXPECT_EQ(media[0]["media"]["file"], "/media/old clip.mov");
  EXPECT_EQ(media[1]["media"]["file"], "low.mov") << "the active reference, not the default";
  // A clip without a source range takes its media's available range,
  // whose start is the file's first frame.
  EXPECT_EQ(r.cels("V")[2], "2-5: Whole");
  EXPECT_EQ(media[2]["media"]["in"], 0.0);
  EXPECT_EQ(media[3]["media"]["file"], "") << "media that is not a local file is offline";
  EXPECT_TRUE(r.warned("https://example.com/a.mov"));
  EXPECT_EQ(media[4]["media"]["file"], "");
  EXPECT_EQ(media[4]["name"], "Lost");
  EXPECT_EQ(media[5]["media"], (json{{"testcard", "bars"}}));
  EXPECT_EQ(media[6]["kind"], "background");
  EXPECT_EQ(media[6]["name"], "Noise");
  EXPECT_EQ(media[7]["media"]["file"], "frames/shot.1011.png");
}

TEST(Timeline, TimeEffectsNameThemselvesAndPaceTheMedia) {
  const json warp = {
      {"OTIO_SCHEMA", "LinearTimeWarp.1"}, {"name", ""}, {"effect_name", "LinearTimeWarp"}, {"time_scalar", 2}};
  const json freeze = {
      {"OTIO_SCHEMA", "FreezeFrame.1"}, {"name", ""}, {"effect_name", "FreezeFrame"}, {"time_scalar", 0}};
  const Read r(timeline({track(
      "V", {clip("Fast", 0, 25, external("a.mov"), {warp}), clip("Still", 0, 25, external("b.mov"), {freeze})})}));
  ASSERT_EQ(r.result.error, "");
  const json& cels = r.channel("V")["cels"];
  EXPECT_EQ(r.chain(cels[0]["graph"]), (Strings{"Speed x2", "Fast"}));
  EXPECT_EQ(r.chain(cels[1]["graph"]), (Strings{"Freeze frame", "Still"}));
  EXPECT_EQ(r.node(r.node(cels[0]["graph"])["inputs"][0])["media"]["speed"], 2.0);
  EXPECT_EQ(r.node(r.node(cels[1]["graph"])["inputs"][0])["media"]["speed"], 0.0);
}

TEST(Timeline, NestedStacksAndTracksAreCompoundEffectsOverTheirOwnChannels) {
  json nested = stack({track("Back", {clip("Sky", 0, 50, external("sky.mov"))}),
                       track("Front", {gap(25), clip("Bird", 0, 25, external("bird.mov"))})},
                      "Comp");
  nested["source_range"] = range(25, 25); // its second second only
  json inner = track("Inner", {clip("Deep", 0, 50, external("deep.mov"))});
  inner["source_range"] = range(25, 25);
  const Read r(timeline({track("V1", {clip("Lead", 0, 25, external("lead.mov")), nested, inner})}));
  ASSERT_EQ(r.result.error, "");
  EXPECT_EQ(r.cels("V1"), (Strings{"0-1: Lead", "1-2: Comp", "2-3: Inner"}));
  const json& comp = r.node(r.channel("V1")["cels"][1]["graph"]);
  EXPECT_EQ(comp["tag"], "compound");
  EXPECT_EQ(comp["inputNames"], (json{"Back", "Front"}));
  EXPECT_EQ(comp["inputs"][0], r.channel("Comp: Back")["id"]);
  EXPECT_EQ(r.channel("Comp: Back")["group"], "Comp");
  // The stack's own second 1 lies at the edit's second 1.
  EXPECT_EQ(r.cels("Comp: Back"), (Strings{"1-2: Sky"}));
  EXPECT_EQ(r.cels("Comp: Front"), (Strings{"1-2: Bird"}));
  EXPECT_EQ(r.node(r.channel("Comp: Back")["cels"][0]["graph"])["media"]["in"], 0.0);
  EXPECT_EQ(r.node(r.channel("Comp: Back")["cels"][0]["graph"])["media"]["at"], 0.0)
      << "the sky's first frame would show at the edit's start";
  // A trimmed nested track shows its own second 1 at the edit's second 2.
  EXPECT_EQ(r.cels("Inner: Inner"), (Strings{"2-3: Deep"}));
  EXPECT_EQ(r.node(r.channel("Inner: Inner")["cels"][0]["graph"])["media"]["at"], 1.0);

  const EditFile::LoadResult loaded = EditFile::parse(r.result.document, "cut.otio", ".");
  ASSERT_TRUE(loaded.edit) << loaded.error;
  loaded.edit->close();
}

TEST(Timeline, TheFormatsOwnNumbersAndUnknownThingsAreRead) {
  const std::string text = R"({"OTIO_SCHEMA": "Timeline.1", "name": "Dialect", "colour_space": "rec709",
    "global_start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": NaN, "rate": 24},
    "tracks": {"OTIO_SCHEMA": "Stack.1", "children": [
      {"OTIO_SCHEMA": "Track.1", "name": "V", "kind": "Video", "children": [
        {"OTIO_SCHEMA": "Clip.2", "name": "A", "source_range": {"OTIO_SCHEMA": "TimeRange.1",
          "start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": 0, "rate": 24},
          "duration": {"OTIO_SCHEMA": "RationalTime.1", "value": 48, "rate": 24}},
         "media_references": {"DEFAULT_MEDIA": {"OTIO_SCHEMA": "MissingReference.1",
           "available_range": {"OTIO_SCHEMA": "TimeRange.1",
             "start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": -Inf, "rate": 24},
             "duration": {"OTIO_SCHEMA": "RationalTime.1", "value": Infinity, "rate": 24}}}},
         "effects": [{"OTIO_SCHEMA": "Effect.1", "effect_name": "Glow",
           "metadata": {"gain": Inf, "floor": -Infinity, "bad": NaN, "id": 123456789012345678901234567890,
                        "label": "NaN Inf", "ok": 0.5}}],
         "sparkle": true},
        {"OTIO_SCHEMA": "Hologram.3", "name": "?"},
        {"OTIO_SCHEMA": "Hologram.3", "name": "again"},
        {"OTIO_SCHEMA": "Gap.1", "source_range": {"OTIO_SCHEMA": "TimeRange.1",
          "start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": 0, "rate": 24},
          "duration": {"OTIO_SCHEMA": "RationalTime.1", "value": 24, "rate": 24}}},
        {"OTIO_SCHEMA": "Clip.9", "name": "Future", "source_range": {"OTIO_SCHEMA": "TimeRange.1",
          "start_time": {"OTIO_SCHEMA": "RationalTime.1", "value": 0, "rate": 24},
          "duration": {"OTIO_SCHEMA": "RationalTime.1", "value": 24, "rate": 24}}}]}]}})";
  const Read r(text);
  ASSERT_EQ(r.result.error, "");
  EXPECT_EQ(r.doc["frameRate"], 24) << "the rate of a start time whose value is not a number";
  EXPECT_EQ(r.cels("V"), (Strings{"0-2: Glow", "3-4: Future"}));
  const json& glow = r.node(r.channel("V")["cels"][0]["graph"]);
  EXPECT_EQ(glow["params"]["ok"], 0.5);
  EXPECT_NEAR(glow["params"]["id"].get<double>(), 1.2345678901234568e29, 1e15);
  EXPECT_FALSE(glow["params"].contains("gain"));
  EXPECT_FALSE(glow["params"].contains("bad"));
  // One line for each unknown thing, however often it appears.
  const auto count = [&](const std::string& part) {
    return std::count_if(r.result.warnings.begin(), r.result.warnings.end(),
                         [&](const std::string& w) { return w.find(part) != std::string::npos; });
  };
  EXPECT_EQ(count("\"Hologram.3\""), 1);
  EXPECT_EQ(count("\"sparkle\""), 1);
  EXPECT_EQ(count("\"colour_space\""), 1);
  EXPECT_EQ(count("Clip.9 is newer"), 1);
  for (const std::string& w : r.result.warnings) EXPECT_EQ(w.rfind("cut.otio: ", 0), 0u) << w;
}

TEST(Timeline, WhatIsNotATimelineIsRefusedInOneLine) {
  const std::pair<std::string, std::string> cases[] = {
      {"{\"OTIO_SCHEMA\": \"Timeline.1\",\n \"tracks\": [1, 2,,]}", "cut.otio:2: not valid JSON"},
      {"{\"OTIO_SCHEMA\": \"Timeline.1\",\n \"tracks\": {\"children\": [", "cut.otio:2: the text ends too soon"},
      {"[1, 2]", "cut.otio: not a timeline (the file holds no object)"},
      {R"({"OTIO_SCHEMA": "Clip.2", "name": "x"})", "cut.otio: not a timeline (its top object is a Clip.2)"},
      {R"({"name": "Promo", "channels": []})", "cut.otio: not a timeline (its top object has no OTIO_SCHEMA)"},
      {R"({"OTIO_SCHEMA": "SerializableCollection.1", "children": []})",
       "cut.otio: not a timeline (a collection without one)"},
      {std::string(300, '[') + std::string(300, ']'), "cut.otio:1: values nested deeper than 256 levels"},
      {"", "cut.otio:1: the text ends too soon"},
      {R"({"OTIO_SCHEMA": "Timeline.1", "global_start_time": 1e400})", "cut.otio: a number out of range"},
  };
  for (const auto& [text, error] : cases) {
    const Read r(text);
    EXPECT_EQ(r.result.error, error) << text.substr(0, 60);
    EXPECT_EQ(r.result.document, "");
  }
  // A collection opens its first timeline and says so.
  const Read collection(
      json{{"OTIO_SCHEMA", "SerializableCollection.1"}, {"children", {timeline({}, "First"), timeline({}, "Second")}}});
  EXPECT_EQ(collection.doc["name"], "First");
  EXPECT_TRUE(collection.warned("the first is opened"));
}

TEST(Timeline, DamagedTimelinesNeverFailTheReader) {
  // Every cut of a real timeline's text is refused cleanly or read whole.
  const std::string text = timeline({track("V", {clip("A", 0, 50, external("a.mov"), {effect("", "Blur")}),
                                                 transition(5, 5), clip("B", 0, 50, external("b.mov"))}),
                                     track("", {stack({track("", {clip("C", 0, 10, generator("SMPTEBars"))})})})})
                               .dump(1);
  for (std::size_t cut = 0; cut < text.size(); cut += 7) {
    const OtioReader::Result r = OtioReader::toEditDocument(text.substr(0, cut), "cut.otio");
    EXPECT_NE(r.error, "") << cut;
  }
  // Fields of the wrong kind are read as absent.
  json odd = timeline({track("V", {clip("A", 0, 50, external("a.mov"))})});
  odd["tracks"]["children"][0]["children"][0]["source_range"]["duration"] = "long";
  // Times past what a double holds are no times: two clips of 1e308 seconds
  // would end the track at infinity.
  for (const char* name : {"Huge", "Huger"}) {
    odd["tracks"]["children"][0]["children"].push_back(clip(name, 0, 1e308, external("h.mov")));
    odd["tracks"]["children"][0]["children"].back()["source_range"]["duration"]["rate"] = 1;
  }
  odd["tracks"]["children"][0]["children"][0]["media_references"] = json::object({{"DEFAULT_MEDIA", 7}});
  odd["tracks"]["children"][0]["children"][0]["effects"] =
      json::array({json::object({{"OTIO_SCHEMA", "Effect.1"}, {"metadata", {1, 2}}})});
  const Read r(odd);
  EXPECT_EQ(r.result.error, "");
  const EditFile::LoadResult loaded = EditFile::parse(r.result.document, "cut.otio", ".");
  ASSERT_TRUE(loaded.edit) << loaded.error;
  loaded.edit->close();
}

} // namespace otio
