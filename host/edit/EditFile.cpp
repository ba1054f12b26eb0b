#include "host/edit/EditFile.h"

#include "host/core/EchoedText.h"
#include "host/core/JsonNesting.h"

// Map
//   LineTrackingBuilder ... builds the JSON document while noting each value's line
//   Reader ................ turns the document into an edit, refusing what is wrong
//   toJson / save ......... the document of an edit; atomic writes of both files
#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <unistd.h>
#include <unordered_map>
#include <unordered_set>

#include <nlohmann/json.hpp>

#include "host/edit/EditFilePair.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/ProjectDatabase.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"
#include "host/stream/ObjectsFile.h"

using nlohmann::json;

namespace {

// The key under which a cel's unknown fields are kept: its start as the
// saved file writes it, whatever form the loaded file gave it.
std::string celKey(double start) { return nlohmann::json(start).dump(); }

// A parse error in plain words, with the text it stopped at (cut short,
// odd bytes escaped) rather than the library's own message.
std::string plainReason(const nlohmann::detail::exception& e, const std::string& token) {
  // The end of what was read is where the text went wrong.
  const std::string tail = token.size() > 24 ? token.substr(token.size() - 24) : token;
  std::string shown = token.size() > 24 ? "..." : "";
  for (const char ch : tail) {
    const auto c = static_cast<unsigned char>(ch);
    if (c >= 0x20 && c < 0x7f) {
      shown += ch;
    } else {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02x", c);
      shown += hex;
    }
  }
  const std::string what = e.what();
  std::string reason = "not valid JSON";
  if (e.id == 406)
    reason = "a number out of range";
  else if (what.find("unexpected end of input") != std::string::npos || token.empty())
    reason = "the text ends too soon";
  else if (what.find("invalid string") != std::string::npos)
    reason = "a string that is not valid";
  else if (what.find("invalid literal") != std::string::npos)
    reason = "a word that is not JSON";
  else if (what.find("invalid number") != std::string::npos)
    reason = "a number that is not valid";
  return shown.empty() ? reason : reason + " at \"" + shown + "\"";
}

// Builds the document through the parser's SAX events, noting the line of
// every value by its JSON pointer, so that a wrong value can be reported
// where it stands. The lexer has read the token when the event arrives, so
// the line is that of the token's end.
class LineTrackingBuilder : public nlohmann::json_sax<json> {
public:
  explicit LineTrackingBuilder(const std::size_t& line) : line_(line) {}

  bool null() override { return put(json(nullptr)); }
  bool boolean(bool v) override { return put(json(v)); }
  bool number_integer(number_integer_t v) override { return put(json(v)); }
  bool number_unsigned(number_unsigned_t v) override { return put(json(v)); }
  bool number_float(number_float_t v, const string_t&) override { return put(json(v)); }
  bool string(string_t& v) override { return put(json(v)); }
  bool binary(binary_t&) override { return put(json(nullptr)); }
  bool start_object(std::size_t) override { return open(json::object()); }
  bool key(string_t& k) override {
    key_ = k;
    return true;
  }
  bool end_object() override { return close(); }
  bool start_array(std::size_t) override { return open(json::array()); }
  bool end_array() override { return close(); }
  bool parse_error(std::size_t, const std::string& token, const nlohmann::detail::exception& e) override {
    errorLine = line_;
    error = plainReason(e, token);
    return false;
  }
  static constexpr std::size_t maxNesting = maxJsonNesting;

  json root;
  std::map<std::string, std::size_t> lines;
  std::size_t errorLine = 0;
  std::string error;

private:
  std::string childPointer() const {
    if (stack_.empty()) return "";
    const Frame& f = stack_.back();
    if (f.node->is_array()) return f.pointer + "/" + std::to_string(f.node->size());
    return f.pointer + "/" + key_;
  }
  json* place(json value) {
    if (stack_.empty()) {
      root = std::move(value);
      return &root;
    }
    json* parent = stack_.back().node;
    if (parent->is_array()) {
      parent->push_back(std::move(value));
      return &parent->back();
    }
    (*parent)[key_] = std::move(value);
    return &(*parent)[key_];
  }
  bool put(json value) {
    lines[childPointer()] = line_;
    place(std::move(value));
    return true;
  }
  bool open(json value) {
    // Deeper nesting than any edit has is refused before it costs memory
    // (each level's place is kept as text).
    if (stack_.size() >= maxNesting) {
      errorLine = line_;
      error = "values nested deeper than " + std::to_string(maxNesting) + " levels";
      return false;
    }
    const std::string pointer = childPointer();
    lines[pointer] = line_;
    json* node = place(std::move(value));
    stack_.push_back({node, pointer});
    return true;
  }
  bool close() {
    if (!stack_.empty()) stack_.pop_back();
    return true;
  }

  struct Frame {
    json* node;
    std::string pointer;
  };
  const std::size_t& line_;
  std::vector<Frame> stack_;
  std::string key_;
};

// Iterates over text, counting the lines it has passed.
class CountingIterator {
public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;

  CountingIterator(const char* p, std::size_t* line) : p_(p), line_(line) {}
  const char& operator*() const { return *p_; }
  CountingIterator& operator++() {
    if (*p_ == '\n') ++*line_;
    ++p_;
    return *this;
  }
  CountingIterator operator++(int) {
    CountingIterator before = *this;
    ++*this;
    return before;
  }
  bool operator==(const CountingIterator& o) const { return p_ == o.p_; }
  bool operator!=(const CountingIterator& o) const { return p_ != o.p_; }

private:
  const char* p_;
  std::size_t* line_;
};

struct Refusal {
  std::string pointer;
  std::string reason;
};

// Turns a document into an edit; throws Refusal for anything wrong.
class Reader {
public:
  Reader(const json& doc, const std::string& folder) : doc_(doc), folder_(folder) {}

  Ux::Ptr<Edit> read() {
    if (!doc_.is_object()) refuse("", "an edit is a JSON object");
    Cookie cookie = Cookie::generate(Cookie::editKind);
    if (doc_.contains("cookie")) cookie = readCookie(doc_["cookie"], "/cookie");
    const std::string name = text(doc_, "", "name", false);
    Ux::Ptr<Edit> edit(new Edit(cookie, toWide(name.empty() ? std::string("Untitled") : name)));
    edit->setFolder(folder_);
    if (doc_.contains("frameRate")) {
      const double fps = number(doc_["frameRate"], "/frameRate");
      if (!(fps >= 1 && fps <= 1000)) refuse("/frameRate", "the frame rate must be from 1 to 1000 frames a second");
      edit->setFrameRate(fps);
    }
    try {
      readNodes(*edit);
      readChannels(*edit);
      checkInputs(*edit);
      placeMedia(*edit);
      keepUnknownFields(*edit);
      // Any other JSON document (an interchange timeline, a layout, a dump)
      // is not opened as an empty edit; what is wrong with one that tries
      // to be an edit is said first.
      if (!doc_.contains("channels")) refuse("", "not an edit (it has no \"channels\")");
    } catch (...) {
      edit->close();
      throw;
    }
    return edit;
  }

private:
  [[noreturn]] static void refuse(const std::string& pointer, const std::string& reason) {
    throw Refusal{pointer, reason};
  }
  static std::string text(const json& obj, const std::string& at, const char* key, bool required) {
    if (!obj.contains(key)) {
      if (required) refuse(at, std::string("\"") + key + "\" is missing");
      return {};
    }
    if (!obj[key].is_string()) refuse(at + "/" + key, std::string("\"") + key + "\" must be text");
    const std::string& value = obj[key].get_ref<const std::string&>();
    // Names, tags and file names are shown, measured and copied many times
    // over: a runaway one would cost far more than its size.
    if (value.size() > maxText)
      refuse(at + "/" + key, std::string("\"") + key + "\" is longer than " + std::to_string(maxText) + " bytes");
    return value;
  }
  static constexpr std::size_t maxText = 4096;
  static double number(const json& v, const std::string& at) {
    if (!v.is_number() || !std::isfinite(v.get<double>())) refuse(at, "a number is expected");
    return v.get<double>();
  }
  static bool flag(const json& obj, const std::string& at, const char* key, bool fallback) {
    if (!obj.contains(key)) return fallback;
    if (!obj[key].is_boolean()) refuse(at + "/" + key, std::string("\"") + key + "\" must be true or false");
    return obj[key].get<bool>();
  }
  static IdStamp id(const json& v, const std::string& at) {
    IdStamp out;
    if (!v.is_string() || !IdStamp::fromString(v.get<std::string>(), out))
      refuse(at, "an id (three numbers joined by \".\", such as \"2.0.1\") is expected");
    return out;
  }
  static Cookie readCookie(const json& v, const std::string& at) {
    Cookie out;
    if (!v.is_string() || !Cookie::fromString(v.get<std::string>(), out)) refuse(at, "not a cookie");
    return out;
  }
  static Colour colour(const json& v, const std::string& at) {
    if (!v.is_array() || v.size() < 3 || v.size() > 4) refuse(at, "a colour is [red, green, blue], each 0 to 1");
    double c[4] = {0, 0, 0, 1};
    for (std::size_t i = 0; i < v.size(); ++i) {
      c[i] = number(v[i], at + "/" + std::to_string(i));
      if (c[i] < 0 || c[i] > 1) refuse(at + "/" + std::to_string(i), "colour values run from 0 to 1");
    }
    return Colour(c[0], c[1], c[2], c[3]);
  }
  static TrackType trackType(const json& obj, const std::string& at) {
    const std::string t = text(obj, at, "type", false);
    if (t.empty() || t == "video") return TrackType::video;
    if (t == "audio") return TrackType::audio;
    refuse(at + "/type", "the type is \"video\" or \"audio\"");
  }

  void claim(const IdStamp& id, const std::string& at) {
    if (!id.valid()) refuse(at, "the id 0.0.0 means \"nothing\" and cannot name an object");
    if (!ids_.insert(id).second) refuse(at, "the id " + id.asString().str() + " is used twice");
  }

  void readNodes(Edit& edit) {
    if (!doc_.contains("nodes")) return;
    if (!doc_["nodes"].is_array()) refuse("/nodes", "\"nodes\" must be a list");
    for (std::size_t i = 0; i < doc_["nodes"].size(); ++i) {
      const std::string at = "/nodes/" + std::to_string(i);
      const json& n = doc_["nodes"][i];
      if (!n.is_object()) refuse(at, "a node is an object");
      if (!n.contains("id")) refuse(at, "\"id\" is missing");
      const IdStamp nodeId = id(n["id"], at + "/id");
      claim(nodeId, at + "/id");
      edit.addNode(makeNode(n, at, nodeId));
    }
  }

  Ux::Ptr<FXGraphNodeBase> makeNode(const json& n, const std::string& at, const IdStamp& nodeId) {
    const std::string kind = text(n, at, "kind", true);
    const LightweightString<wchar_t> name = toWide(text(n, at, "name", false));
    const TrackType type = trackType(n, at);
    if (kind == "material") {
      // A material is a source: nothing feeds it.
      for (const char* field : {"inputs", "inputNames"})
        if (n.contains(field) && !(n[field].is_array() && n[field].empty()))
          refuse(at + "/" + field, "a material has no inputs");
      static const char* mediaForms =
          "a material's \"media\" is one of {\"testcard\": ...}, {\"file\": ...} (with \"in\", \"at\" and "
          "\"speed\" if wanted), {\"tone\": ...}";
      if (!n.contains("media") || !n["media"].is_object() || n["media"].empty()) refuse(at + "/media", mediaForms);
      const json& mediaField = n["media"];
      const std::string mediaKind = mediaField.begin().key();
      const json& value = mediaField.begin().value();
      // Only a file has more to say than its source: where it lies in the edit.
      if (mediaField.size() != 1 && !mediaField.contains("file")) refuse(at + "/media", mediaForms);
      MaterialUsageNode::Media media;
      std::string source;
      MediaPlacement placement;
      if (mediaKind == "testcard" && value.is_string()) {
        media = MaterialUsageNode::Media::testCard;
        source = value.get<std::string>();
      } else if (mediaField.contains("file")) {
        media = MaterialUsageNode::Media::file;
        source = text(mediaField, at + "/media", "file", true);
        placement = readPlacement(mediaField, at + "/media");
      } else if (mediaKind == "tone" && value.is_number()) {
        media = MaterialUsageNode::Media::tone;
        source = std::to_string(value.get<double>());
      } else {
        refuse(at + "/media", mediaForms);
      }
      Ux::Ptr<MaterialUsageNode> m(new MaterialUsageNode(nodeId, name, media, source, type));
      m->setPlacement(placement);
      m->setMaterialCookie(n.contains("cookie") ? readCookie(n["cookie"], at + "/cookie")
                                                : Cookie::generate(Cookie::materialKind));
      // The project database knows every shot an edit uses.
      dbrecord& shot = EditManager::getProjdb().recordFor(m->getMaterialCookie());
      shot.set_field("name", toUTF8(name).str());
      shot.set_field("media", mediaKind);
      shot.set_field("source", source);
      if (n.contains("materialKind")) {
        const json& k = n["materialKind"];
        if (!k.is_array() || k.size() != 2 || !k[0].is_number_integer() || !k[1].is_number_integer())
          refuse(at + "/materialKind", "the material kind is a pair of whole numbers");
        m->setMaterialKind({k[0].get<int>(), k[1].get<int>()});
      }
      return m;
    }
    Ux::Ptr<EffectInstance> effect;
    if (kind == "effect") {
      effect = new EffectInstance(nodeId, name, LightweightString<char>(text(n, at, "tag", false)), type);
    } else if (kind == "image") {
      effect = new ImageImportEffect(nodeId, name, LightweightString<char>(text(n, at, "file", true)));
    } else if (kind == "alias") {
      effect = new AliasedInputEffect(nodeId, name);
    } else if (kind == "background") {
      const std::string mode = text(n, at, "mode", false);
      if (!mode.empty() && mode != "flat" && mode != "gradient")
        refuse(at + "/mode", "a background's mode is \"flat\" or \"gradient\"");
      if (!n.contains("colour")) refuse(at, "\"colour\" is missing");
      const Colour first = colour(n["colour"], at + "/colour");
      const Colour second = n.contains("colour2") ? colour(n["colour2"], at + "/colour2") : first;
      effect = new ComplexBackgroundEffect(nodeId, name,
                                           mode == "gradient" ? ComplexBackgroundEffect::Mode::gradient
                                                              : ComplexBackgroundEffect::Mode::flat,
                                           first, second);
      if (n.contains("tag")) effect->setTagTypeId(LightweightString<char>(text(n, at, "tag", false)));
    } else {
      refuse(at + "/kind", "unknown kind " + echoedText(kind) + " (effect, material, image, alias or background)");
    }
    readEffectFields(*effect, n, at, kind == "alias");
    return effect;
  }

  static MediaPlacement readPlacement(const json& media, const std::string& at) {
    for (const auto& [key, unused] : media.items())
      if (key != "file" && key != "in" && key != "at" && key != "speed")
        refuse(at + "/" + key, "a file's media has \"file\", \"in\", \"at\" and \"speed\" only");
    MediaPlacement p;
    if (media.contains("in")) p.in = number(media["in"], at + "/in");
    if (media.contains("at")) {
      p.at = number(media["at"], at + "/at");
      p.placed = true;
    }
    if (media.contains("speed")) p.speed = number(media["speed"], at + "/speed");
    if (p.in < 0) refuse(at + "/in", "a time in the media is 0 or more");
    if (std::abs(p.speed) > 1000) refuse(at + "/speed", "the speed is at most 1000 times either way");
    return p;
  }

  // A file material that does not say where its media lies starts it with
  // the first cel that shows it: each material is claimed by the earliest
  // cel whose graph reaches it.
  void placeMedia(Edit& edit) const {
    bool unplaced = false;
    for (const auto& node : edit.allNodes())
      if (const auto* m = dynamic_cast<const MaterialUsageNode*>(node.get()))
        unplaced = unplaced || (m->getMedia() == MaterialUsageNode::Media::file && !m->placement().placed);
    if (!unplaced) return;
    std::vector<const Cel*> cels;
    for (int i = 0; i < edit.getNumChans(); ++i)
      for (const Cel& cel : edit.getChan(i).cels)
        if (cel.kind != Cel::Kind::black) cels.push_back(&cel);
    std::stable_sort(cels.begin(), cels.end(), [](const Cel* a, const Cel* b) { return a->start < b->start; });
    std::unordered_set<IdStamp> met;
    for (const Cel* cel : cels) {
      std::vector<IdStamp> todo{cel->ref};
      while (!todo.empty()) {
        const IdStamp id = todo.back();
        todo.pop_back();
        if (!met.insert(id).second) continue;
        const Ux::Ptr<FXGraphNodeBase> node = edit.openNode(id);
        if (!node) continue;
        if (auto* m = dynamic_cast<MaterialUsageNode*>(node.get())) {
          if (m->getMedia() == MaterialUsageNode::Media::file && !m->placement().placed) {
            MediaPlacement p = m->placement();
            p.at = cel->start;
            m->setPlacement(p);
          }
          continue;
        }
        for (unsigned i = 0; i < node->getNumInputs(); ++i) todo.push_back(node->getInputTrackId(i));
      }
    }
  }

  void readEffectFields(EffectInstance& e, const json& n, const std::string& at, bool alias) {
    e.setActive(flag(n, at, "active", true));
    e.setConnectionEditable(flag(n, at, "connectionEditable", true));
    if (n.contains("description")) e.setDescription(toWide(text(n, at, "description", false)));
    if (n.contains("inputs")) {
      const json& in = n["inputs"];
      if (!in.is_array()) refuse(at + "/inputs", "\"inputs\" must be a list of ids");
      if (alias && in.size() != 1) refuse(at + "/inputs", "an alias has exactly one input");
      if (in.size() > 255) refuse(at + "/inputs", "an effect has at most 255 inputs");
      e.setNumInputs(static_cast<unsigned>(in.size()));
      for (std::size_t i = 0; i < in.size(); ++i) {
        const std::string where = at + "/inputs/" + std::to_string(i);
        e.setInputTrackId(static_cast<unsigned>(i), id(in[i], where), false);
        inputs_.push_back({e.getId(), static_cast<unsigned>(i), where});
      }
    }
    if (n.contains("inputNames")) {
      const json& names = n["inputNames"];
      if (!names.is_array()) refuse(at + "/inputNames", "\"inputNames\" must be a list of names");
      if (names.size() != e.getNumInputs())
        refuse(at + "/inputNames", "there are " + std::to_string(names.size()) + " input names for " +
                                       std::to_string(e.getNumInputs()) + " inputs");
      for (std::size_t i = 0; i < names.size(); ++i) {
        if (!names[i].is_string() || names[i].get_ref<const std::string&>().size() > maxText)
          refuse(at + "/inputNames/" + std::to_string(i),
                 "a name must be text of at most " + std::to_string(maxText) + " bytes");
        e.setInputName(static_cast<unsigned>(i), toWide(names[i].get<std::string>()));
      }
    }
    if (n.contains("params")) {
      const json& p = n["params"];
      if (!p.is_object()) refuse(at + "/params", "\"params\" must be an object of numbers");
      for (const auto& [key, value] : p.items()) {
        const std::string where = at + "/params/" + key;
        std::vector<double> values;
        if (value.is_array())
          for (std::size_t i = 0; i < value.size(); ++i)
            values.push_back(number(value[i], where + "/" + std::to_string(i)));
        else
          values.push_back(number(value, where));
        e.setParam(key, values);
      }
    }
  }

  void readChannels(Edit& edit) {
    if (!doc_.contains("channels")) return;
    if (!doc_["channels"].is_array()) refuse("/channels", "\"channels\" must be a list");
    for (std::size_t i = 0; i < doc_["channels"].size(); ++i) {
      const std::string at = "/channels/" + std::to_string(i);
      const json& c = doc_["channels"][i];
      if (!c.is_object()) refuse(at, "a channel is an object");
      EditChannel channel;
      if (!c.contains("id")) refuse(at, "\"id\" is missing");
      channel.id = id(c["id"], at + "/id");
      claim(channel.id, at + "/id");
      channel.type = trackType(c, at);
      channel.name = toWide(text(c, at, "name", false));
      channel.group = toWide(text(c, at, "group", false));
      if (c.contains("subtype")) {
        if (!c["subtype"].is_number_integer()) refuse(at + "/subtype", "the subtype is a whole number");
        channel.subtype = c["subtype"].get<int>();
      }
      if (c.contains("cels")) {
        if (!c["cels"].is_array()) refuse(at + "/cels", "\"cels\" must be a list");
        for (std::size_t k = 0; k < c["cels"].size(); ++k)
          channel.cels.push_back(readCel(edit, c["cels"][k], at + "/cels/" + std::to_string(k), channel));
      }
      edit.addChannel(std::move(channel));
    }
  }

  Cel readCel(const Edit& edit, const json& c, const std::string& at, const EditChannel& channel) {
    if (!c.is_object()) refuse(at, "a cel is an object");
    Cel cel;
    if (!c.contains("start") || !c.contains("end")) refuse(at, "a cel needs \"start\" and \"end\"");
    cel.start = number(c["start"], at + "/start");
    cel.end = number(c["end"], at + "/end");
    if (cel.start < 0) refuse(at + "/start", "times are seconds from the start of the edit: 0 or more");
    if (!(cel.end > cel.start)) refuse(at + "/end", "a cel must end after it starts");
    if (!channel.cels.empty() && cel.start < channel.cels.back().end)
      refuse(at + "/start", "cels must be in time order and must not overlap");
    const int kinds = int(c.contains("graph")) + int(c.contains("material")) + int(flag(c, at, "black", false));
    if (kinds != 1) refuse(at, "a cel is exactly one of \"graph\", \"material\" or \"black\": true");
    if (c.contains("graph")) {
      cel.kind = Cel::Kind::graph;
      cel.ref = id(c["graph"], at + "/graph");
      if (!edit.openNode(cel.ref)) refuse(at + "/graph", "no node has the id " + cel.ref.asString().str());
    } else if (c.contains("material")) {
      cel.kind = Cel::Kind::material;
      cel.ref = id(c["material"], at + "/material");
      if (!edit.openObject<MaterialUsageNode>(cel.ref))
        refuse(at + "/material", "no material has the id " + cel.ref.asString().str());
    }
    return cel;
  }

  // Inputs may name nodes or channels, so they are checked once both are known.
  void checkInputs(const Edit& edit) {
    for (const auto& in : inputs_) {
      const IdStamp slot = edit.openNode(in.node)->getInputTrackId(in.index);
      if (slot == in.node) refuse(in.pointer, "a node cannot be its own input");
      if (slot.valid() && !edit.openNode(slot) && edit.findChan(slot) < 0)
        refuse(in.pointer, "no node or channel has the id " + slot.asString().str());
    }
    checkForCycles(edit);
  }

  // The editor never makes a graph in which a node feeds itself, directly
  // or through other nodes or the channels its inputs name (at any time):
  // such a file is refused at the input that closes the circle.
  void checkForCycles(const Edit& edit) {
    std::map<IdStamp, std::vector<std::size_t>> inputsOf; // node -> its entries in inputs_
    for (std::size_t k = 0; k < inputs_.size(); ++k) inputsOf[inputs_[k].node].push_back(k);
    auto reaches = [&](const IdStamp& slot) {
      std::vector<IdStamp> out;
      if (edit.openNode(slot)) {
        out.push_back(slot);
      } else if (const int c = edit.findChan(slot); c >= 0) {
        for (const Cel& cel : edit.getChan(c).cels)
          if (cel.kind != Cel::Kind::black && cel.ref.valid()) out.push_back(cel.ref);
      }
      return out;
    };
    enum class State : uint8_t { unseen, onPath, done };
    std::unordered_map<IdStamp, State> state;
    struct Frame {
      IdStamp node;
      std::size_t input = 0;        // next of the node's inputs
      std::vector<IdStamp> targets; // what that input reaches
      std::size_t target = 0;       // next of those
    };
    for (const auto& [start, unused] : inputsOf) {
      if (state[start] != State::unseen) continue;
      std::vector<Frame> path{{start, 0, {}, 0}};
      state[start] = State::onPath;
      while (!path.empty()) {
        Frame& f = path.back();
        const std::vector<std::size_t>& ins = inputsOf[f.node];
        if (f.target == f.targets.size()) {
          if (f.input == ins.size()) {
            state[f.node] = State::done;
            path.pop_back();
            continue;
          }
          const InputRef& in = inputs_[ins[f.input]];
          f.targets = reaches(edit.openNode(in.node)->getInputTrackId(in.index));
          f.target = 0;
          ++f.input;
          continue;
        }
        const IdStamp next = f.targets[f.target++];
        State& s = state[next];
        if (s == State::onPath)
          refuse(inputs_[ins[f.input - 1]].pointer,
                 "this input closes a cycle: " + next.asString().str() + " would feed itself");
        if (s == State::unseen) {
          s = State::onPath;
          path.push_back({next, 0, {}, 0});
        }
      }
    }
  }

  // Fields a later version wrote are kept with the edit, by the object
  // they belong to, and written back when it is saved.
  void keepUnknownFields(Edit& edit) const {
    static const std::set<std::string> editFields{"name", "cookie", "frameRate", "channels", "nodes", "objects"};
    static const std::set<std::string> nodeFields{
        "id",         "kind",  "name",   "type",    "media",  "cookie",      "materialKind",       "tag",
        "file",       "mode",  "colour", "colour2", "active", "description", "connectionEditable", "inputs",
        "inputNames", "params"};
    static const std::set<std::string> channelFields{"id", "type", "name", "group", "subtype", "cels"};
    static const std::set<std::string> celFields{"start", "end", "graph", "material", "black"};
    auto unknown = [](const json& object, const std::set<std::string>& known) {
      json extra = json::object();
      for (const auto& [key, value] : object.items())
        if (!known.count(key)) extra[key] = value;
      return extra;
    };
    json extras = json::object();
    if (json top = unknown(doc_, editFields); !top.empty()) extras["edit"] = std::move(top);
    for (const char* list : {"nodes", "channels"}) {
      if (!doc_.contains(list)) continue;
      for (const json& item : doc_[list])
        if (json extra = unknown(item, std::string(list) == "nodes" ? nodeFields : channelFields); !extra.empty())
          extras[list][item["id"].get<std::string>()] = std::move(extra);
    }
    // A cel is known by its channel and its start: cels never overlap.
    if (doc_.contains("channels"))
      for (const json& channel : doc_["channels"])
        if (channel.contains("cels"))
          for (const json& cel : channel["cels"])
            if (json extra = unknown(cel, celFields); !extra.empty())
              extras["cels"][channel["id"].get<std::string>()][celKey(cel["start"].get<double>())] = std::move(extra);
    if (!extras.empty()) edit.setFileExtras(extras.dump());
  }

  struct InputRef {
    IdStamp node;
    unsigned index;
    std::string pointer;
  };
  const json& doc_;
  std::string folder_;
  std::unordered_set<IdStamp> ids_;
  std::vector<InputRef> inputs_;
};

// A reader's message as one line of plain text: line ends and other
// control characters become spaces, runs of spaces one.
std::string oneLine(const std::string& text) {
  std::string out;
  for (const char ch : text) {
    const char c = static_cast<unsigned char>(ch) < 0x20 || ch == 0x7f ? ' ' : ch;
    if (c == ' ' && (out.empty() || out.back() == ' ')) continue;
    out += c;
  }
  while (!out.empty() && out.back() == ' ') out.pop_back();
  return out;
}

std::string folderOf(const std::string& path) {
  const auto slash = path.find_last_of('/');
  return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

// The line of the nearest value that the document's pointer (or one of its
// parents) was noted at.
std::size_t lineOf(const std::map<std::string, std::size_t>& lines, std::string pointer) {
  for (;;) {
    if (auto it = lines.find(pointer); it != lines.end()) return it->second;
    if (pointer.empty()) return 1;
    pointer = pointer.substr(0, pointer.find_last_of('/'));
  }
}

} // namespace

EditFile::LoadResult EditFile::parse(const std::string& text, const std::string& name, const std::string& folder) {
  LoadResult r;
  // Lines are wanted only to say where an edit is wrong, and noting every
  // value's line costs more than reading the edit: a document is read
  // plainly first, and again, noting lines, only when it is refused.
  json root;
  // Text nested deeper than an edit may be goes the long way, which says where.
  bool plain = jsonTooDeepAt(text, LineTrackingBuilder::maxNesting) == std::string_view::npos;
  if (plain) {
    root = json::parse(text, nullptr, false);
    plain = !root.is_discarded();
  }
  std::size_t line = 1;
  LineTrackingBuilder builder(line);
  auto trackLines = [&] {
    line = 1;
    return json::sax_parse(CountingIterator(text.data(), &line), CountingIterator(text.data() + text.size(), &line),
                           &builder);
  };
  if (!plain) {
    if (!trackLines()) {
      r.error = name + ":" + std::to_string(builder.errorLine) + ": " +
                (builder.error.empty() ? "not valid JSON" : builder.error);
      return r;
    }
    root = std::move(builder.root);
  }
  try {
    r.edit = Reader(root, folder).read();
    if (root.contains("objects")) {
      const json& o = root["objects"];
      if (!o.is_object() || !o.contains("stamp") || !o["stamp"].is_string())
        throw Refusal{"/objects", "\"objects\" is {\"stamp\": text}"};
      r.objectsStamp = o["stamp"].get<std::string>();
    }
  } catch (const Refusal& refusal) {
    if (r.edit) r.edit->close();
    r.edit.reset();
    if (plain) {
      root = json();
      trackLines();
    }
    r.error = name + ":" + std::to_string(lineOf(builder.lines, refusal.pointer)) + ": " + refusal.reason;
  }
  return r;
}

EditFile::LoadResult EditFile::load(const std::string& path) {
  // An edit file is text of a few megabytes at most.
  constexpr std::size_t largest = std::size_t(256) << 20;
  std::string text, failure;
  if (!readBoundedFile(path, largest, text, failure)) {
    LoadResult r;
    r.error = path + ": " + failure;
    return r;
  }
  // An edit opened through a link is the file the link names: its media
  // and its objects lie beside that file.
  LoadResult r = parse(text, path, folderOf(finalTargetOf(path)));
  if (!r.edit) return r;

  std::string sidecar = sidecarPath(path);
  // Where a save through a link put the objects before they went beside
  // the edit itself: still used when they are the ones the edit names.
  const std::string besideLink = path + ".objects";
  std::vector<std::string> candidates{sidecar};
  if (!r.objectsStamp.empty()) candidates.push_back(sidecar + ".prev");
  if (besideLink != sidecar) candidates.push_back(besideLink);
  auto there = [](const std::string& file) { return ::access(file.c_str(), F_OK) == 0; };
  if (r.objectsStamp.empty()) {
    // An edit saved before edits named their objects takes the sidecar there is.
    const auto found = std::find_if(candidates.begin(), candidates.end(), there);
    // An edit never saved with positions simply has no sidecar yet.
    if (found == candidates.end()) return r;
    sidecar = *found;
  } else {
    if (std::none_of(candidates.begin(), candidates.end(), there)) {
      r.warnings.push_back(sidecar + ": missing; the edit is loaded without its saved objects");
      return r;
    }
    // The objects saved with this edit: the sidecar, or, after a save cut
    // short between its two renames, the one it replaced.
    auto belongs = [&](const std::string& file) {
      std::string bytes, ignored;
      return readBoundedFile(file, std::size_t(256) << 20, bytes, ignored) && stampOf(bytes) == r.objectsStamp;
    };
    const auto found = std::find_if(candidates.begin(), candidates.end(), belongs);
    if (found == candidates.end()) {
      r.warnings.push_back(sidecar + ": not the one saved with the edit (damaged, or saved at another time); "
                                     "the edit is loaded without its saved objects");
      return r;
    }
    sidecar = *found;
  }
  ObjectsFile::ReadResult objects = ObjectsFile::load(sidecar);
  bool damaged = !objects.complete;
  std::string why = oneLine(objects.problem.str());
  for (const auto& e : objects.entries)
    if (!e.errorText.empty() || !e.object) {
      damaged = true;
      if (why.empty()) {
        const std::string reason = oneLine(e.errorText.str());
        why = "object \"" + oneLine(e.name.str()) + "\": " + (reason.empty() ? "it could not be read" : reason);
      }
    }
  if (damaged) {
    if (why.empty()) why = "it ends before its last object";
    r.warnings.push_back(sidecar + ": damaged (" + why + "); the edit is loaded without its saved objects");
    return r;
  }
  for (const auto& e : objects.entries)
    if (auto taggable = Ux::dynamicCast<Taggable>(e.object)) r.edit->bindObjectToEdit(e.name, taggable);
  for (const auto& w : objects.warnings) r.warnings.push_back(sidecar + ": " + oneLine(w.str()));
  return r;
}

namespace {

nlohmann::ordered_json colourJson(const Colour& c) {
  nlohmann::ordered_json j = {c.r, c.g, c.b};
  if (c.a != 1) j.push_back(c.a);
  return j;
}

nlohmann::ordered_json nodeJson(const FXGraphNodeBase& node) {
  nlohmann::ordered_json n;
  n["id"] = node.getId().asString().str();
  if (const auto* m = dynamic_cast<const MaterialUsageNode*>(&node)) {
    n["kind"] = "material";
    n["name"] = toUTF8(m->getName()).str();
    if (m->getTrackType() == TrackType::audio) n["type"] = "audio";
    const std::string source = m->getSource().str();
    switch (m->getMedia()) {
    case MaterialUsageNode::Media::testCard:
      n["media"] = {{"testcard", source}};
      break;
    case MaterialUsageNode::Media::file: {
      // Where the media lies is written only when the file said it, so
      // that an edit keeps placing its media by its first cel.
      const MediaPlacement& p = m->placement();
      n["media"] = {{"file", source}};
      if (p.in != 0) n["media"]["in"] = p.in;
      if (p.placed) n["media"]["at"] = p.at;
      if (p.speed != 1) n["media"]["speed"] = p.speed;
      break;
    }
    case MaterialUsageNode::Media::tone:
      n["media"] = {{"tone", std::strtod(source.c_str(), nullptr)}};
      break;
    }
    n["cookie"] = m->getMaterialCookie().asString().str();
    const auto kind = m->getMaterialKind();
    if (kind.first || kind.second) n["materialKind"] = {kind.first, kind.second};
    return n;
  }
  const auto& e = dynamic_cast<const EffectInstance&>(node);
  if (const auto* image = dynamic_cast<const ImageImportEffect*>(&e)) {
    n["kind"] = "image";
    n["file"] = image->getFile().str();
  } else if (dynamic_cast<const AliasedInputEffect*>(&e)) {
    n["kind"] = "alias";
  } else if (const auto* bg = dynamic_cast<const ComplexBackgroundEffect*>(&e)) {
    n["kind"] = "background";
    n["mode"] = bg->isFlat() ? "flat" : "gradient";
    n["colour"] = colourJson(bg->getColour(0, 0));
    if (!bg->isFlat()) n["colour2"] = colourJson(bg->getColour(0, 1));
    if (e.tagTypeId() != (bg->isFlat() ? ComplexBackgroundEffect::flatTag : ComplexBackgroundEffect::gradientTag))
      n["tag"] = e.tagTypeId().str();
  } else {
    n["kind"] = "effect";
    n["tag"] = e.tagTypeId().str();
  }
  n["name"] = toUTF8(e.getName()).str();
  if (e.getTrackType() == TrackType::audio) n["type"] = "audio";
  if (!e.getDescription().empty() && !(e.getDescription() == e.getName()))
    n["description"] = toUTF8(e.getDescription()).str();
  if (e.getNumInputs() > 0 && !dynamic_cast<const ImageImportEffect*>(&e)) {
    nlohmann::ordered_json inputs = nlohmann::ordered_json::array(), names = nlohmann::ordered_json::array();
    for (unsigned i = 0; i < e.getNumInputs(); ++i) {
      inputs.push_back(e.getInputTrackId(i).asString().str());
      names.push_back(toUTF8(e.getInputName(i)).str());
    }
    n["inputs"] = inputs;
    n["inputNames"] = names;
  }
  n["active"] = e.isActive();
  n["connectionEditable"] = e.isConnectionEditable();
  if (!e.params().empty()) {
    nlohmann::ordered_json params = nlohmann::ordered_json::object();
    for (const auto& [key, values] : e.params()) {
      if (values.size() == 1)
        params[key] = values.front();
      else
        params[key] = values;
    }
    n["params"] = params;
  }
  return n;
}

} // namespace

std::string EditFile::stampOf(const std::string& bytes) {
  // FNV-1a, 64 bits: enough to tell one save's objects from another's.
  uint64_t h = 0xcbf29ce484222325ull;
  for (const char c : bytes) {
    h ^= static_cast<unsigned char>(c);
    h *= 0x100000001b3ull;
  }
  char text[17];
  std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(h));
  return text;
}

std::string EditFile::sidecarPath(const std::string& path) { return EditFilePair::objectsPath(path); }

std::string EditFile::toJson(const Edit& edit, const std::string& objectsStamp, const std::string& replacedStamp) {
  nlohmann::ordered_json doc;
  doc["name"] = toUTF8(edit.getName()).str();
  doc["cookie"] = edit.getCookie().asString().str();
  doc["frameRate"] = edit.getFrameRate();
  if (!objectsStamp.empty()) {
    doc["objects"] = {{"stamp", objectsStamp}};
    if (!replacedStamp.empty()) doc["objects"]["replaced"] = replacedStamp;
  }
  nlohmann::ordered_json channels = nlohmann::ordered_json::array();
  for (int i = 0; i < edit.getNumChans(); ++i) {
    const EditChannel& c = edit.getChan(i);
    nlohmann::ordered_json cj;
    cj["id"] = c.id.asString().str();
    cj["type"] = c.type == TrackType::audio ? "audio" : "video";
    cj["name"] = toUTF8(c.name).str();
    if (!c.group.empty()) cj["group"] = toUTF8(c.group).str();
    if (c.subtype) cj["subtype"] = c.subtype;
    nlohmann::ordered_json cels = nlohmann::ordered_json::array();
    for (const Cel& cel : c.cels) {
      nlohmann::ordered_json k = {{"start", cel.start}, {"end", cel.end}};
      if (cel.kind == Cel::Kind::graph)
        k["graph"] = cel.ref.asString().str();
      else if (cel.kind == Cel::Kind::material)
        k["material"] = cel.ref.asString().str();
      else
        k["black"] = true;
      cels.push_back(k);
    }
    cj["cels"] = cels;
    channels.push_back(cj);
  }
  doc["channels"] = channels;
  nlohmann::ordered_json nodes = nlohmann::ordered_json::array();
  for (const auto& node : edit.allNodes()) nodes.push_back(nodeJson(*node));
  doc["nodes"] = nodes;
  // What a later version wrote goes back where it was, after what this one knows.
  const nlohmann::ordered_json extras = nlohmann::ordered_json::parse(edit.getFileExtras(), nullptr, false);
  if (extras.is_object()) {
    auto add = [](nlohmann::ordered_json& to, const nlohmann::ordered_json& from) {
      for (const auto& [key, value] : from.items())
        if (!to.contains(key)) to[key] = value;
    };
    if (extras.contains("edit")) add(doc, extras["edit"]);
    for (const char* list : {"nodes", "channels"})
      if (extras.contains(list))
        for (nlohmann::ordered_json& item : doc[list])
          if (extras[list].contains(item["id"].get<std::string>()))
            add(item, extras[list][item["id"].get<std::string>()]);
    if (extras.contains("cels"))
      for (nlohmann::ordered_json& channel : doc["channels"]) {
        const auto ofChannel = extras["cels"].find(channel["id"].get<std::string>());
        if (ofChannel == extras["cels"].end()) continue;
        for (nlohmann::ordered_json& cel : channel["cels"]) {
          const auto ofCel = ofChannel->find(celKey(cel["start"].get<double>()));
          if (ofCel != ofChannel->end()) add(cel, *ofCel);
        }
      }
  }
  // A name that came in as bytes that are not UTF-8 is saved with U+FFFD
  // in their place rather than not saved at all.
  return doc.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

bool EditFile::save(const EditPtr& edit, const std::string& path, std::string& error) {
  if (!edit) {
    error = "no edit to save";
    return false;
  }
  PStream objects;
  std::vector<ObjectsFile::Binding> bindings;
  for (const auto& [name, object] : edit->boundObjects()) bindings.push_back({name, object});
  LightweightString<char> why;
  if (!ObjectsFile::write(objects, bindings, why)) {
    error = sidecarPath(path) + ": " + why.str();
    return false;
  }
  const std::string sidecarBytes(objects.bytes().begin(), objects.bytes().end());
  // What is on disk now decides which file the save may keep as its backup.
  EditFilePair onDisk(path);
  const EditFilePair::SavePlan plan = onDisk.planSave();
  const std::string document = toJson(*edit, stampOf(sidecarBytes), plan.replaced);
  // The sidecar goes in place first, keeping the one it replaces until the
  // edit that names it is in place too.
  if (!writeFilesAtomically({{onDisk.objects(), sidecarBytes.data(), sidecarBytes.size(), plan.keepObjects},
                             {path, document.data(), document.size()}},
                            error))
    return false;
  onDisk.finishSave(plan);
  edit->setDirty(false);
  return true;
}
