#include "host/edit/OtioReader.h"

// Map
//   plainJson ........ the format's own numbers (NaN, Inf) made plain JSON; nesting bounded
//   Mapper ........... the timeline's objects turned into channels, cels and graph nodes
//   OtioReader ....... reading the file, then the edit file reader over the document
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <map>
#include <set>

#include <nlohmann/json.hpp>

#include "host/core/JsonNesting.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"

using nlohmann::json;

namespace {

constexpr std::size_t maxText = 4096; // as the edit file reader takes names
constexpr int maxCompoundDepth = 32;

struct Refusal {
  std::size_t line = 0; // 0: the reason is about the whole file
  std::string reason;
};

bool wordChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// The timeline format writes NaN, Inf, -Inf and Infinity as bare words,
// which JSON has not: they become null (no time or parameter is read from
// one). Integers beyond 64 bits need nothing: the JSON reader keeps them
// as floating point.
std::string plainJson(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (inString) {
      out += c;
      if (c == '\\' && i + 1 < text.size())
        out += text[++i];
      else if (c == '"')
        inString = false;
      continue;
    }
    if (c == '"') {
      inString = true;
    } else if ((c == 'N' || c == 'I' || c == '-') && (i == 0 || !wordChar(text[i - 1]))) {
      const std::size_t from = c == '-' ? i + 1 : i;
      for (const char* word : {"Infinity", "Inf", "NaN"}) {
        const std::size_t n = std::strlen(word);
        if (text.compare(from, n, word) == 0 && (from + n == text.size() || !wordChar(text[from + n]))) {
          out += "null";
          i = from + n - 1;
          goto next;
        }
      }
    }
    out += c;
  next:;
  }
  return out;
}

std::string fitted(std::string text) {
  if (text.size() <= maxText) return text;
  std::size_t cut = maxText;
  // Not inside a character's bytes.
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return text.substr(0, cut);
}

// Text from the file as one line of a message: control characters become
// spaces, and a runaway text is cut short.
std::string oneLine(const std::string& text) {
  std::string out = text.size() > 1000 ? fitted(text.substr(0, 1000)) + "..." : text;
  for (char& c : out)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) c = ' ';
  return out;
}

std::string numberText(double v) {
  char out[32];
  std::snprintf(out, sizeof out, "%g", v);
  return out;
}

// Seconds of a RationalTime; NaN when it is not one.
double seconds(const json* t) {
  if (!t || !t->is_object()) return NAN;
  const auto value = t->find("value");
  const auto rate = t->find("rate");
  if (value == t->end() || rate == t->end() || !value->is_number() || !rate->is_number()) return NAN;
  const double r = rate->get<double>();
  if (!(r > 0) || !std::isfinite(r)) return NAN;
  // A time beyond what a double holds (a huge value over a tiny rate) is no time.
  const double s = value->get<double>() / r;
  return std::isfinite(s) ? s : NAN;
}

double rateOf(const json* t) {
  if (!t || !t->is_object() || !t->contains("rate") || !(*t)["rate"].is_number()) return NAN;
  return (*t)["rate"].get<double>();
}

const json* field(const json& o, const char* key) {
  if (!o.is_object()) return nullptr;
  const auto it = o.find(key);
  return it == o.end() || it->is_null() ? nullptr : &*it;
}

std::string textField(const json& o, const char* key) {
  const json* v = field(o, key);
  return v && v->is_string() ? fitted(v->get<std::string>()) : std::string();
}

struct Range {
  double start = NAN, duration = NAN;
  bool valid() const { return std::isfinite(start) && std::isfinite(duration) && duration >= 0; }
};

Range rangeOf(const json* r) {
  Range out;
  if (!r || !r->is_object()) return out;
  out.start = seconds(field(*r, "start_time"));
  out.duration = seconds(field(*r, "duration"));
  return out;
}

// A local file's path from a reference's URL; false for a URL of any other
// kind (a web address, an asset system's).
bool localPath(const std::string& url, std::string& path) {
  std::string p = url;
  if (p.starts_with("file://")) {
    p = p.substr(7);
    if (p.starts_with("localhost/")) p = p.substr(9);
    // file://host/path names another machine's file.
    if (!p.empty() && p.front() != '/') return false;
  } else if (p.starts_with("file:")) {
    p = p.substr(5);
  } else {
    const auto colon = p.find(':');
    const auto slash = p.find('/');
    if (colon != std::string::npos && colon > 1 && (slash == std::string::npos || colon < slash)) return false;
  }
  std::string decoded;
  for (std::size_t i = 0; i < p.size(); ++i) {
    if (p[i] == '%' && i + 2 < p.size() && std::isxdigit(static_cast<unsigned char>(p[i + 1])) &&
        std::isxdigit(static_cast<unsigned char>(p[i + 2]))) {
      decoded += static_cast<char>(std::stoi(p.substr(i + 1, 2), nullptr, 16));
      i += 2;
    } else {
      decoded += p[i];
    }
  }
  path = fitted(decoded);
  return !path.empty();
}

// A colour from a generator's parameters: [r, g, b] from 0 to 1 (or to
// 255), {"r": ..., "g": ..., "b": ...}, or "#rrggbb".
bool colourOf(const json& v, double rgb[3]) {
  if (v.is_array() && v.size() >= 3 && v[0].is_number() && v[1].is_number() && v[2].is_number()) {
    for (int i = 0; i < 3; ++i) rgb[i] = v[static_cast<std::size_t>(i)].get<double>();
  } else if (v.is_object()) {
    const char* names[3][2] = {{"r", "red"}, {"g", "green"}, {"b", "blue"}};
    for (int i = 0; i < 3; ++i) {
      const json* c = field(v, names[i][0]);
      if (!c) c = field(v, names[i][1]);
      if (!c || !c->is_number()) return false;
      rgb[i] = c->get<double>();
    }
  } else if (v.is_string() && v.get<std::string>().size() == 7 && v.get<std::string>()[0] == '#') {
    const std::string hex = v.get<std::string>();
    for (int i = 0; i < 3; ++i) {
      const std::string pair = hex.substr(1 + 2 * static_cast<std::size_t>(i), 2);
      if (!std::isxdigit(static_cast<unsigned char>(pair[0])) || !std::isxdigit(static_cast<unsigned char>(pair[1])))
        return false;
      rgb[i] = std::stoi(pair, nullptr, 16);
    }
  } else {
    return false;
  }
  const bool bytes = std::max({rgb[0], rgb[1], rgb[2]}) > 1;
  for (int i = 0; i < 3; ++i) {
    if (!std::isfinite(rgb[i])) return false;
    rgb[i] = std::clamp(bytes ? rgb[i] / 255 : rgb[i], 0.0, 1.0);
  }
  return true;
}

// The timeline's objects as the edit's channels, cels and graph nodes.
class Mapper {
public:
  Mapper(const std::string& file, const std::string& mediaFolder, std::vector<std::string>& warnings)
      : file_(file), mediaFolder_(mediaFolder), warnings_(warnings) {}

  json map(const json& root, const std::string& fallbackName) {
    const json& timeline = findTimeline(root);
    const std::string name = textField(timeline, "name");
    checkFields(timeline, {"global_start_time", "tracks"});
    const json* tracks = field(timeline, "tracks");
    if (tracks && schema(*tracks).first != "Stack") {
      warn("the timeline's tracks are not a Stack; the timeline is empty");
      tracks = nullptr;
    }
    if (tracks) {
      checkFields(*tracks, {"children", "source_range", "effects", "markers", "enabled", "color"});
      if (const json* effects = field(*tracks, "effects"); effects && effects->is_array() && !effects->empty())
        warn("the timeline's own effects are left out");
      for (const json* track : childrenOf(*tracks)) {
        const bool audio = kindOf(*track) == "Audio";
        newChannel(audio, textField(*track, "name"), "");
        layTrack(*track, audio, channels_.size() - 1, 0, 0, 0, INFINITY, 0);
      }
    }
    json doc = json::object();
    doc["name"] = name.empty() ? fallbackName : name;
    double fps = rateOf(field(timeline, "global_start_time"));
    if (!(fps >= 1 && fps <= 1000)) fps = firstRate_;
    doc["frameRate"] = fps >= 1 && fps <= 1000 ? fps : 24.0;
    json channels = json::array();
    for (const Channel& c : channels_) {
      json cels = json::array();
      for (const Piece& p : c.cels) cels.push_back({{"start", p.start}, {"end", p.end}, {"graph", p.graph}});
      channels.push_back({{"id", c.id},
                          {"type", c.audio ? "audio" : "video"},
                          {"name", c.name},
                          {"group", c.group.empty() ? c.name : c.group},
                          {"cels", std::move(cels)}});
    }
    doc["channels"] = std::move(channels);
    doc["nodes"] = std::move(nodes_);
    return doc;
  }

private:
  struct Piece {
    double start, end;
    std::string graph;
  };
  struct Channel {
    std::string id, name, group;
    std::string shown; // its own name, without its compound's
    bool audio;
    std::vector<Piece> cels;
  };
  // An item of a track in the track's own time.
  struct Entry {
    const json* item = nullptr;
    std::string kind; // "Clip", "Gap", "Transition", "Stack", "Track", or "" for one left out
    double start = 0, end = 0;
    double in = 0, out = 0; // a transition's offsets
    std::string graph;      // what the item shows, without the track's effects
  };

  // ---- schemas and warnings ----

  void warn(const std::string& what) {
    if (said_.insert(what).second) warnings_.push_back(oneLine(file_ + ": " + what));
  }

  static std::pair<std::string, int> schema(const json& o) {
    const json* s = field(o, "OTIO_SCHEMA");
    if (!s || !s->is_string()) return {"", 0};
    const std::string text = s->get<std::string>();
    const auto dot = text.rfind('.');
    if (dot == std::string::npos) return {text, 0};
    return {text.substr(0, dot), std::atoi(text.c_str() + dot + 1)};
  }

  // The schema's name, with a warning for a version newer than this reader
  // knows (it is read as the newest known).
  std::string known(const json& o) {
    static const std::map<std::string, int> versions{{"Timeline", 1},
                                                     {"Stack", 1},
                                                     {"Track", 1},
                                                     {"Sequence", 1},
                                                     {"Clip", 2},
                                                     {"Gap", 1},
                                                     {"Filler", 1},
                                                     {"Transition", 1},
                                                     {"Effect", 1},
                                                     {"LinearTimeWarp", 1},
                                                     {"FreezeFrame", 1},
                                                     {"TimeEffect", 1},
                                                     {"ExternalReference", 1},
                                                     {"GeneratorReference", 1},
                                                     {"MissingReference", 1},
                                                     {"ImageSequenceReference", 1},
                                                     {"Marker", 2},
                                                     {"SerializableCollection", 1}};
    const auto [name, version] = schema(o);
    const auto it = versions.find(name);
    if (it == versions.end()) return "";
    if (version > it->second)
      warn(name + "." + std::to_string(version) + " is newer than this reader knows; read as " + name + "." +
           std::to_string(it->second));
    return name == "Sequence" ? "Track" : name == "Filler" ? "Gap" : name;
  }

  void unknownSchema(const json& o, const char* where) {
    const std::string s = textField(o, "OTIO_SCHEMA");
    warn(s.empty() ? std::string("an object without OTIO_SCHEMA in ") + where + " is left out"
                   : "unknown schema \"" + s + "\" in " + where + " is left out");
  }

  void checkFields(const json& o, std::initializer_list<const char*> own) {
    if (!o.is_object()) return;
    for (const auto& item : o.items()) {
      const std::string& key = item.key();
      if (key == "OTIO_SCHEMA" || key == "name" || key == "metadata") continue;
      if (std::none_of(own.begin(), own.end(), [&](const char* k) { return key == k; }))
        warn(textField(o, "OTIO_SCHEMA") + " field \"" + fitted(key) + "\" is left out");
    }
  }

  const json& findTimeline(const json& root) {
    if (!root.is_object()) throw Refusal{0, "not a timeline (the file holds no object)"};
    const auto [name, unused] = schema(root);
    if (name == "Timeline") return root;
    if (name == "SerializableCollection") {
      std::vector<const json*> timelines;
      if (const json* children = field(root, "children"); children && children->is_array())
        for (const json& c : *children)
          if (schema(c).first == "Timeline") timelines.push_back(&c);
      if (!timelines.empty()) {
        if (timelines.size() > 1)
          warn("the collection holds " + std::to_string(timelines.size()) + " timelines; the first is opened");
        return *timelines.front();
      }
      throw Refusal{0, "not a timeline (a collection without one)"};
    }
    if (name.empty()) throw Refusal{0, "not a timeline (its top object has no OTIO_SCHEMA)"};
    throw Refusal{0, "not a timeline (its top object is a " + fitted(textField(root, "OTIO_SCHEMA")) + ")"};
  }

  static std::string kindOf(const json& track) {
    const std::string kind = textField(track, "kind");
    return kind == "Audio" ? "Audio" : "Video";
  }

  static bool enabled(const json& o) {
    const json* e = field(o, "enabled");
    return !e || !e->is_boolean() || e->get<bool>();
  }

  // The objects of a composition's children list.
  static std::vector<const json*> childrenOf(const json& composition) {
    std::vector<const json*> out;
    if (const json* children = field(composition, "children"); children && children->is_array())
      for (const json& c : *children)
        if (c.is_object()) out.push_back(&c);
    return out;
  }

  // ---- output ----

  void newChannel(bool audio, const std::string& name, const std::string& group) {
    const int number = ++(audio ? audioChannels_ : videoChannels_);
    Channel c;
    c.id = "1.0." + std::to_string(channels_.size() + 1);
    c.audio = audio;
    c.shown = name.empty() ? (audio ? "A" : "V") + std::to_string(number) : name;
    c.name = group.empty() ? c.shown : fitted(group + ": " + c.shown);
    c.group = group;
    channels_.push_back(std::move(c));
  }

  std::string newNode(json node) {
    const std::string id = "2.0." + std::to_string(nodes_.size() + 1);
    node["id"] = id;
    nodes_.push_back(std::move(node));
    return id;
  }

  static std::string inputOf(const std::string& graph) { return graph.empty() ? "0.0.0" : graph; }

  // ---- tracks ----

  // Lays a track's items into channel `ch`: track time u shows at edit time
  // base + (u - from), within [lo, hi).
  void layTrack(const json& track, bool audio, std::size_t ch, double base, double from, double lo, double hi,
                int depth) {
    const std::string schemaName = known(track);
    if (schemaName == "Track") {
      checkFields(track, {"children", "source_range", "effects", "markers", "enabled", "color", "kind"});
      const Range trim = rangeOf(field(track, "source_range"));
      if (trim.valid()) {
        // A trimmed track shows only that part of itself.
        hi = std::min(hi, base + (trim.duration - from));
        from += trim.start;
      }
    }
    std::vector<Entry> entries;
    double at = 0;
    // A clip, gap or nested item directly in a stack is a track of its own.
    const std::vector<const json*> items = schemaName == "Track" ? childrenOf(track) : std::vector{&track};
    for (const json* item : items) {
      Entry e;
      e.item = item;
      e.kind = known(*item);
      if (e.kind == "Transition") {
        checkFields(*item, {"transition_type", "in_offset", "out_offset"});
        e.in = std::max(0.0, seconds(field(*item, "in_offset")));
        e.out = std::max(0.0, seconds(field(*item, "out_offset")));
        if (!std::isfinite(e.in)) e.in = 0;
        if (!std::isfinite(e.out)) e.out = 0;
        e.start = e.end = at;
        entries.push_back(e);
        continue;
      }
      if (e.kind != "Clip" && e.kind != "Gap" && e.kind != "Stack" && e.kind != "Track") {
        unknownSchema(*item, "a track");
        continue;
      }
      const double length = durationOf(*item, e.kind);
      // Items past the longest time a double holds have no place in the edit.
      if (!std::isfinite(at + length)) {
        warn("items that end beyond " + numberText(at) + " seconds are left out");
        break;
      }
      e.start = at;
      e.end = at + length;
      at = e.end;
      if (enabled(*item) && e.kind != "Gap") {
        const double outerStart = base + (e.start - from);
        // A nested track trims itself as it is laid.
        const double sourceStart = e.kind == "Track" ? 0 : startOf(*item, e.kind);
        if (e.kind == "Clip")
          e.graph = clipGraph(*item, audio, outerStart, sourceStart);
        else
          e.graph = compoundGraph(*item, e.kind, audio, outerStart, sourceStart, std::max(lo, outerStart),
                                  std::min(hi, base + (e.end - from)), depth + 1);
      } else if (e.kind == "Gap") {
        checkFields(*item, {"source_range", "effects", "markers", "enabled", "color"});
      }
      entries.push_back(e);
    }
    const json* trackEffects = schemaName == "Track" ? field(track, "effects") : nullptr;
    std::vector<Piece> pieces;
    for (std::size_t k = 0; k < entries.size(); ++k) {
      const Entry& e = entries[k];
      if (e.kind == "Transition") {
        const Entry* before = k > 0 && entries[k - 1].kind != "Transition" ? &entries[k - 1] : nullptr;
        const Entry* after = k + 1 < entries.size() && entries[k + 1].kind != "Transition" ? &entries[k + 1] : nullptr;
        const double s = std::max(e.start - e.in, before ? before->start : e.start);
        const double t = std::min(e.start + e.out, after ? after->end : e.start);
        if (t > s)
          pieces.push_back(
              {s, t,
               withEffects(transitionGraph(*e.item, audio, before ? before->graph : "", after ? after->graph : "",
                                           base + (s - from), base + (t - from)),
                           trackEffects, audio)});
        continue;
      }
      if (e.graph.empty()) continue;
      double s = e.start, t = e.end;
      // Transitions on either side take their overlap from the clip.
      if (k > 0 && entries[k - 1].kind == "Transition") s = std::max(s, e.start + entries[k - 1].out);
      if (k + 1 < entries.size() && entries[k + 1].kind == "Transition") t = std::min(t, e.end - entries[k + 1].in);
      if (t > s) pieces.push_back({s, t, withEffects(e.graph, trackEffects, audio)});
    }
    std::vector<Piece>& cels = channels_[ch].cels;
    for (Piece p : pieces) {
      p.start = std::max({base + (p.start - from), lo, 0.0});
      p.end = std::min(base + (p.end - from), hi);
      if (!cels.empty()) p.start = std::max(p.start, cels.back().end);
      if (p.end > p.start) cels.push_back(std::move(p));
    }
  }

  double durationOf(const json& item, const std::string& kind) {
    const Range r = rangeOf(field(item, "source_range"));
    if (std::isfinite(r.duration)) {
      noteRate(rateOf(field(*field(item, "source_range"), "duration")));
      return std::max(0.0, r.duration);
    }
    if (kind == "Clip") {
      if (const json* ref = activeReference(item)) {
        const Range available = rangeOf(field(*ref, "available_range"));
        if (std::isfinite(available.duration)) return std::max(0.0, available.duration);
      }
      warn("a clip without a source range or an available range takes no time");
      return 0;
    }
    if (kind == "Track") {
      double length = 0;
      for (const json* child : childrenOf(item)) {
        const std::string k = known(*child);
        if (k == "Clip" || k == "Gap" || k == "Stack" || k == "Track") length += durationOf(*child, k);
      }
      return length;
    }
    if (kind == "Stack") {
      double length = 0;
      for (const json* child : childrenOf(item)) {
        const std::string k = known(*child);
        if (k == "Clip" || k == "Gap" || k == "Stack" || k == "Track") length = std::max(length, durationOf(*child, k));
      }
      return length;
    }
    return 0;
  }

  // Where an item's own time starts: its source range's start, else its
  // media's first available time.
  double startOf(const json& item, const std::string& kind) {
    const Range r = rangeOf(field(item, "source_range"));
    if (std::isfinite(r.start)) return r.start;
    if (kind == "Clip")
      if (const json* ref = activeReference(item))
        if (const Range available = rangeOf(field(*ref, "available_range")); std::isfinite(available.start))
          return available.start;
    return 0;
  }

  void noteRate(double rate) {
    if (!(firstRate_ >= 1) && rate >= 1 && rate <= 1000) firstRate_ = rate;
  }

  // ---- graphs ----

  const json* activeReference(const json& clip) {
    if (const json* refs = field(clip, "media_references"); refs && refs->is_object()) {
      std::string key = textField(clip, "active_media_reference_key");
      if (key.empty()) key = "DEFAULT_MEDIA";
      const json* ref = field(*refs, key.c_str());
      return ref && ref->is_object() ? ref : nullptr;
    }
    const json* ref = field(clip, "media_reference");
    return ref && ref->is_object() ? ref : nullptr;
  }

  std::string clipGraph(const json& clip, bool audio, double outerStart, double sourceStart) {
    checkFields(clip, {"source_range", "effects", "markers", "enabled", "color", "media_reference", "media_references",
                       "active_media_reference_key"});
    const std::string name = textField(clip, "name");
    const json* effects = field(clip, "effects");
    double speed = 1;
    if (effects && effects->is_array())
      for (const json& e : *effects) {
        const std::string k = known(e);
        if (!enabled(e)) continue;
        if (k == "FreezeFrame") speed = 0;
        if (k == "LinearTimeWarp")
          if (const json* s = field(e, "time_scalar"); s && s->is_number() && std::isfinite(s->get<double>()))
            speed *= s->get<double>();
      }
    if (!(std::abs(speed) <= 1000)) speed = 1;
    return withEffects(mediaNode(clip, activeReference(clip), name, audio, outerStart, sourceStart, speed), effects,
                       audio);
  }

  json fileMaterial(const std::string& name, bool audio, const std::string& path) {
    const bool relative = !path.empty() && path.front() != '/';
    json m = {{"kind", "material"}, {"name", name}, {"media", {{"file", relative ? mediaFolder_ + path : path}}}};
    if (audio) m["type"] = "audio";
    return m;
  }

  std::string mediaNode(const json& clip, const json* ref, const std::string& clipName, bool audio, double outerStart,
                        double sourceStart, double speed) {
    const std::string name = clipName.empty() ? (ref ? textField(*ref, "name") : std::string()) : clipName;
    const std::string kind = ref ? known(*ref) : "MissingReference";
    const Range available = ref ? rangeOf(field(*ref, "available_range")) : Range{};
    const double mediaIn = std::max(0.0, sourceStart - (std::isfinite(available.start) ? available.start : 0.0));
    auto placed = [&](json m) {
      m["media"]["in"] = mediaIn;
      m["media"]["at"] = outerStart;
      if (speed != 1) m["media"]["speed"] = speed;
      return newNode(std::move(m));
    };
    if (kind == "ExternalReference") {
      checkFields(*ref, {"target_url", "available_range", "available_image_bounds"});
      std::string path;
      if (!localPath(textField(*ref, "target_url"), path)) {
        warn("media that is not a local file (\"" + textField(*ref, "target_url") + "\") is shown offline");
        path.clear();
      }
      return placed(fileMaterial(name, audio, path));
    }
    if (kind == "ImageSequenceReference") {
      checkFields(*ref, {"target_url_base", "name_prefix", "name_suffix", "start_frame", "frame_step", "rate",
                         "frame_zero_padding", "missing_frame_policy", "available_range", "available_image_bounds"});
      return newNode(fileMaterial(name, audio, sequenceFrame(*ref, mediaIn)));
    }
    if (kind == "GeneratorReference") {
      checkFields(*ref, {"generator_kind", "parameters", "available_range", "available_image_bounds"});
      const std::string generator = textField(*ref, "generator_kind");
      if (audio) return newNode({{"kind", "material"}, {"type", "audio"}, {"name", name}, {"media", {{"tone", 1000}}}});
      if (generator == "SMPTEBars")
        return newNode({{"kind", "material"}, {"name", name}, {"media", {{"testcard", "bars"}}}});
      double rgb[3] = {0.5, 0.5, 0.5};
      if (generator == "SolidColor") {
        const json* params = field(*ref, "parameters");
        const json* colour = params ? field(*params, "color") : nullptr;
        if (!colour && params) colour = field(*params, "colour");
        if (!colour || !colourOf(*colour, rgb)) warn("a SolidColor generator without a colour shows grey");
      }
      return newNode({{"kind", "background"},
                      {"name", generator == "SolidColor" || generator.empty() ? name : generator},
                      {"mode", "flat"},
                      {"colour", {rgb[0], rgb[1], rgb[2]}}});
    }
    if (kind != "MissingReference") unknownSchema(*ref, "a clip's media");
    (void)clip;
    return placed(fileMaterial(name, audio, ""));
  }

  // The picture of an image sequence at the clip's first frame.
  std::string sequenceFrame(const json& ref, double mediaIn) {
    auto whole = [&](const char* key, long long fallback) {
      const json* v = field(ref, key);
      return v && v->is_number_integer() ? v->get<long long>() : fallback;
    };
    double rate = 24;
    if (const json* r = field(ref, "rate"); r && r->is_number() && r->get<double>() > 0) rate = r->get<double>();
    const long long step = std::max(1LL, whole("frame_step", 1));
    const long long frame = whole("start_frame", 1) + static_cast<long long>(std::floor(mediaIn * rate)) * step;
    const int padding = static_cast<int>(std::clamp(whole("frame_zero_padding", 0), 0LL, 16LL));
    char digits[48];
    std::snprintf(digits, sizeof digits, "%0*lld", padding, frame);
    std::string base = textField(ref, "target_url_base");
    if (!base.empty() && base.back() != '/') base += '/';
    std::string path;
    if (!localPath(base + textField(ref, "name_prefix") + digits + textField(ref, "name_suffix"), path)) {
      warn("an image sequence that is not local files is shown offline");
      path.clear();
    }
    return path;
  }

  // Effects in list order over `graph`, the first nearest it.
  std::string withEffects(std::string graph, const json* effects, bool audio) {
    if (!effects || !effects->is_array()) return graph;
    for (const json& e : *effects) {
      const std::string kind = known(e);
      if (kind.empty()) {
        unknownSchema(e, "a list of effects");
        continue;
      }
      checkFields(e, {"effect_name", "enabled", "time_scalar"});
      const std::string effectName = textField(e, "effect_name");
      std::string name = textField(e, "name");
      json params = json::object();
      if (kind == "LinearTimeWarp" || kind == "FreezeFrame") {
        const json* s = field(e, "time_scalar");
        const double scalar = kind == "FreezeFrame" ? 0 : s && s->is_number() ? s->get<double>() : 1;
        if (name.empty()) name = kind == "FreezeFrame" ? "Freeze frame" : "Speed x" + numberText(scalar);
        if (std::isfinite(scalar)) params["speed"] = scalar;
      }
      if (name.empty()) name = effectName.empty() ? kind : effectName;
      numbersOf(field(e, "metadata"), params);
      json node = {{"kind", "effect"},
                   {"name", name},
                   {"tag", effectName.empty() ? kind : effectName},
                   {"active", enabled(e)},
                   {"inputs", {inputOf(graph)}},
                   {"inputNames", {"In"}}};
      if (audio) node["type"] = "audio";
      if (!params.empty()) node["params"] = std::move(params);
      graph = newNode(std::move(node));
    }
    return graph;
  }

  // The numbers of an effect's metadata as its parameters, nested names
  // joined with dots; values that are not finite numbers are left out.
  static void numbersOf(const json* metadata, json& params) {
    constexpr std::size_t maxParams = 64;
    if (!metadata) return;
    std::vector<std::pair<const json*, std::string>> todo{{metadata, ""}};
    while (!todo.empty() && params.size() < maxParams) {
      auto [v, path] = todo.back();
      todo.pop_back();
      if (v->is_number()) {
        if (std::isfinite(v->get<double>()) && !path.empty()) params[fitted(path)] = v->get<double>();
      } else if (v->is_array() && !v->empty() && v->size() <= 16 &&
                 std::all_of(v->begin(), v->end(),
                             [](const json& x) { return x.is_number() && std::isfinite(x.get<double>()); })) {
        if (!path.empty()) params[fitted(path)] = *v;
      } else if (v->is_object() && std::count(path.begin(), path.end(), '.') < 4) {
        for (auto it = v->rbegin(); it != v->rend(); ++it)
          todo.push_back({&*it, path.empty() ? it.key() : path + "." + it.key()});
      }
    }
  }

  std::string transitionGraph(const json& t, bool audio, const std::string& a, const std::string& b, double start,
                              double end) {
    const std::string type = textField(t, "transition_type");
    json node = {{"kind", "effect"}, {"inputs", {inputOf(a), inputOf(b)}}, {"inputNames", {"A", "B"}}};
    if (type == "SMPTE_Dissolve" || type.empty()) {
      node["name"] = audio ? "Crossfade" : "Dissolve";
      node["tag"] = audio ? "\\ZMV\\AUD\\FX\\XF" : "mix";
      // The mix runs from A to B over the transition.
      node["params"] = {{"amount", 0.5}, {"start", start}, {"end", end}};
    } else {
      node["name"] = type;
      node["tag"] = type;
    }
    if (audio) node["type"] = "audio";
    json params = node.contains("params") ? node["params"] : json::object();
    numbersOf(field(t, "metadata"), params);
    if (!params.empty()) node["params"] = std::move(params);
    return newNode(std::move(node));
  }

  // A nested stack or track: a compound effect over channels of its own,
  // one for each of its tracks, that the compound's inputs name.
  std::string compoundGraph(const json& item, const std::string& kind, bool audio, double outerStart,
                            double sourceStart, double lo, double hi, int depth) {
    std::string name = textField(item, "name");
    if (name.empty()) name = kind == "Stack" ? "Nested stack" : "Nested track";
    if (depth > maxCompoundDepth) {
      warn("stacks nested deeper than " + std::to_string(maxCompoundDepth) + " levels are left out");
      return "";
    }
    if (kind == "Stack") checkFields(item, {"children", "source_range", "effects", "markers", "enabled", "color"});
    std::vector<const json*> tracks = kind == "Stack" ? childrenOf(item) : std::vector{&item};
    json inputs = json::array(), names = json::array();
    for (const json* track : tracks) {
      const bool innerAudio = known(*track) == "Track" ? kindOf(*track) == "Audio" : audio;
      newChannel(innerAudio, textField(*track, "name"), name);
      const std::size_t ch = channels_.size() - 1;
      if (innerAudio == audio) {
        inputs.push_back(channels_[ch].id);
        names.push_back(channels_[ch].shown);
      }
      layTrack(*track, innerAudio, ch, outerStart, sourceStart, lo, hi, depth);
    }
    json node = {{"kind", "effect"}, {"name", name}, {"tag", "compound"}, {"inputs", inputs}, {"inputNames", names}};
    if (audio) node["type"] = "audio";
    // A nested track's own effects are laid over each of its clips; a
    // stack's go over the compound.
    return withEffects(newNode(std::move(node)), kind == "Stack" ? field(item, "effects") : nullptr, audio);
  }

  std::string file_;
  std::string mediaFolder_;
  std::vector<std::string>& warnings_;
  std::set<std::string> said_;
  std::vector<Channel> channels_;
  json nodes_ = json::array();
  int videoChannels_ = 0, audioChannels_ = 0;
  double firstRate_ = NAN;
};

std::string folderOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

std::string stemOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
  if (const auto dot = base.rfind('.'); dot != std::string::npos && dot > 0) base.resize(dot);
  return base;
}

} // namespace

OtioReader::Result OtioReader::toEditDocument(const std::string& text, const std::string& name,
                                              const std::string& mediaFolder) {
  Result r;
  try {
    // Deeper nesting than any timeline has is refused before it costs memory.
    if (const std::size_t at = jsonTooDeepAt(text); at != std::string_view::npos)
      throw Refusal{
          1 + static_cast<std::size_t>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(at), '\n')),
          "values nested deeper than " + std::to_string(maxJsonNesting) + " levels"};
    const std::string plain = plainJson(text);
    json root;
    try {
      root = json::parse(plain);
    } catch (const json::parse_error& e) {
      const std::size_t upTo = std::min<std::size_t>(e.byte, plain.size());
      const std::size_t line = 1 + static_cast<std::size_t>(std::count(plain.begin(), plain.begin() + upTo, '\n'));
      const std::string what = e.what();
      throw Refusal{line, what.find("unexpected end of input") != std::string::npos ? "the text ends too soon"
                                                                                    : "not valid JSON"};
    } catch (const json::exception&) {
      // The reader's other refusal: a number beyond what a double holds.
      throw Refusal{0, "a number out of range"};
    }
    r.document = Mapper(name, mediaFolder, r.warnings)
                     .map(root, stemOf(name))
                     .dump(1, ' ', false, json::error_handler_t::replace);
  } catch (const Refusal& refusal) {
    r.document.clear();
    r.warnings.clear();
    r.error =
        oneLine(name + (refusal.line ? ":" + std::to_string(refusal.line) : std::string()) + ": " + refusal.reason);
  }
  return r;
}

EditFile::LoadResult OtioReader::load(const std::string& path) {
  EditFile::LoadResult out;
  // A timeline is text of some megabytes at most, as an edit file is.
  std::string text, failure;
  if (!readBoundedFile(path, std::size_t(256) << 20, text, failure)) {
    out.error = path + ": " + failure;
    return out;
  }
  Result r = toEditDocument(text, path);
  if (!r.error.empty()) {
    out.error = r.error;
    return out;
  }
  out = EditFile::parse(r.document, path, folderOf(finalTargetOf(path)));
  if (!out.edit) {
    out.error = path + ": the timeline could not be made an edit (" + out.error + ")";
    return out;
  }
  out.warnings.insert(out.warnings.begin(), r.warnings.begin(), r.warnings.end());
  return out;
}

bool OtioReader::isTimelinePath(const std::string& path) { return path.ends_with(".otio"); }
