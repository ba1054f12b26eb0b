// Damaged position-record files: the hand-made corpus with its expected
// outcomes (corpus/expected.txt), every truncation and every single-byte
// flip of the valid file, read the way an edit is loaded.
#include <algorithm>
#include <bit>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <gtest/gtest.h>

#include "host/notify/Log.h"
#include "host/stream/ObjectsFile.h"
#include "host/stream/StreamTraceSink.h"
#include "node_ui/NodeUIPosManager.h"
#include "tests/support/Program.h"

using namespace testsupport;

namespace {

const std::string corpus = sourcePath("tests/node_ui/corpus");

std::vector<uint8_t> readFile(const std::string& name) {
  const std::string text = readText(corpus + "/" + name);
  EXPECT_FALSE(text.empty()) << name;
  return {text.begin(), text.end()};
}

// A record as bits, so that NaN payloads and signed zeros compare exactly.
struct RecordBits {
  IdStamp node;
  Cookie cookie;
  uint64_t drawX = 0, drawY = 0, manualX = 0, manualY = 0;
  bool manualSet = false;
  friend bool operator==(const RecordBits&, const RecordBits&) = default;
};

uint64_t bits(double v) { return std::bit_cast<uint64_t>(v); }

std::vector<RecordBits> recordsOf(const NodeUIManagerBase& m) {
  std::vector<RecordBits> out;
  for (const NodeUIRecBase* base : m.records().as<NodeUIRecBase>()) {
    const auto* r = dynamic_cast<const NodeUIPosRec*>(base);
    if (!r) continue;
    out.push_back({r->getNodeId(), r->getCookie(), bits(r->getDrawPosition().x), bits(r->getDrawPosition().y),
                   bits(r->getManualPos().x), bits(r->getManualPos().y), r->isManualPosSet()});
  }
  return out;
}

struct TraceHeader {
  uint64_t offset, dataStart;
  std::string name;
  std::size_t depth;
};

class Trace : public StreamTraceSink {
public:
  void chunkHeader(const Header& h) override { headers.push_back({h.offset, h.dataStart, h.name.str(), depth++}); }
  void chunkEnd(int, uint64_t) override { --depth; }
  // The n-th header of that name at that depth, counted from 0.
  const TraceHeader& find(const std::string& name, std::size_t atDepth, int n = 0) const {
    for (const TraceHeader& h : headers)
      if (h.name == name && h.depth == atDepth && n-- == 0) return h;
    throw std::runtime_error("no such header: " + name);
  }
  std::vector<TraceHeader> headers;
  std::size_t depth = 0;
};

// One read of a file as the edit loader does it: the position manager read
// in place, the other objects built from their registered readers.
struct Outcome {
  ObjectsFile::ReadResult file;
  Ux::Ptr<NodeUIPosManager> manager{new NodeUIPosManager()};
  int result = 0; // of "NodePosManager"
  int second = 0; // of "Spare"
  std::string errorText;
  std::vector<std::string> warnings; // the log's, then the file reader's
  Trace trace;

  explicit Outcome(const std::vector<uint8_t>& bytes, bool inPlace = true) {
    std::map<LightweightString<char>, Ux::Ptr<Streamable>> into{{"NodePosManager", manager}};
    PStream s(bytes);
    s.setTraceSink(&trace);
    LogChannel::Capture log(Log::channel());
    file = ObjectsFile::read(s, inPlace ? &into : nullptr);
    warnings = log.messages();
    for (const auto& w : file.warnings) warnings.push_back(w.str());
    for (const auto& e : file.entries) {
      if (e.name == "NodePosManager") {
        result = e.result;
        errorText = e.errorText.str();
      }
      if (e.name == "Spare") second = e.result;
    }
  }
  bool clean() const {
    if (!file.complete) return false;
    for (const auto& e : file.entries)
      if (e.result != StreamResult::layerRead || !e.errorText.empty()) return false;
    return true;
  }
};

struct Base {
  std::vector<uint8_t> bytes = readFile("base.objects");
  Outcome read{bytes};
  std::vector<RecordBits> records = recordsOf(*read.manager);
};
const Base& base() {
  static const Base b;
  return b;
}

// What must hold however a file is damaged.
void checkInvariants(const std::vector<uint8_t>& bytes) {
  const Outcome o(bytes);
  const std::set<int> defined{0, StreamResult::layerRead, StreamResult::error, StreamResult::wrongLayerName,
                              StreamResult::unexpectedEof};
  EXPECT_LE(o.file.stoppedAt, bytes.size());
  for (std::size_t i = 0; i < o.file.entries.size(); ++i) {
    const auto& e = o.file.entries[i];
    EXPECT_TRUE(defined.count(e.result)) << e.result;
    auto manager = Ux::dynamicCast<NodeUIManagerBase>(e.object);
    if (!manager) continue;
    // No more records than the count the reader found in this object's "N".
    const uint64_t end = i + 1 < o.file.entries.size() ? o.file.entries[i + 1].offset : UINT64_MAX;
    uint64_t count = 0;
    for (const TraceHeader& h : o.trace.headers)
      if (h.name == "N" && h.depth == 0 && h.offset >= e.offset && h.offset < end) {
        count = h.dataStart + 4 <= bytes.size() ? u32At(bytes, h.dataStart) : UINT64_MAX;
        break;
      }
    EXPECT_LE(manager->recordCount(), count);
    // Whatever was kept writes and reads back the same, bit for bit.
    PStream out;
    ASSERT_EQ(out.writeObject(*manager), StreamResult::packed);
    PStream in(out.bytes());
    NodeUIPosManager back;
    EXPECT_EQ(in.readObject(back), StreamResult::layerRead);
    EXPECT_TRUE(in.errorText().empty());
    EXPECT_EQ(recordsOf(back), recordsOf(*manager));
  }
  // Built rather than read in place: only result 6 discards, and where both
  // reads use the same reader (in place ignores the kind) the results agree.
  const Outcome built(bytes, false);
  for (std::size_t i = 0; i < built.file.entries.size(); ++i) {
    const auto& e = built.file.entries[i];
    if (e.result != 0) {
      EXPECT_EQ(e.object == nullptr, e.result == StreamResult::error);
    }
    if (i >= o.file.entries.size() || e.kind != o.file.entries[i].kind) break;
    if (e.name != "NodePosManager" || e.kind == "$.T.N.J") {
      EXPECT_EQ(e.result, o.file.entries[i].result);
    }
  }
}

std::map<std::string, std::multimap<std::string, std::string>> expectations() {
  std::ifstream in(corpus + "/expected.txt");
  std::map<std::string, std::multimap<std::string, std::string>> all;
  std::multimap<std::string, std::string> block;
  auto flush = [&] {
    if (!block.empty()) all[block.find("file")->second] = block;
    block.clear();
  };
  for (std::string line; std::getline(in, line);) {
    if (line.empty()) flush();
    if (line.empty() || line[0] == '#') continue;
    const auto colon = line.find(": ");
    if (colon != std::string::npos) block.emplace(line.substr(0, colon), line.substr(colon + 2));
  }
  flush();
  return all;
}

std::vector<std::string> words(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> out;
  for (std::string w; in >> w;)
    if (w != "-") out.push_back(w);
  return out;
}

std::string withoutBlanks(const std::string& text) {
  std::string out;
  for (char c : text)
    if (!std::isspace(static_cast<unsigned char>(c))) out += c;
  return out;
}

// Whether the error text is exactly these messages in order, blanks aside; a
// message ending in "*" matches its start and whatever follows up to the next.
bool sameMessages(const std::string& errorText, const std::vector<std::string>& messages) {
  const std::string text = withoutBlanks(errorText);
  std::size_t at = 0;
  for (std::size_t i = 0; i < messages.size(); ++i) {
    std::string m = withoutBlanks(messages[i]);
    const bool open = !m.empty() && m.back() == '*';
    if (open) m.pop_back();
    if (text.compare(at, m.size(), m) != 0) return false;
    at += m.size();
    if (!open) continue;
    if (i + 1 == messages.size()) return true;
    at = text.find(withoutBlanks(messages[i + 1]), at);
    if (at == std::string::npos) return false;
  }
  return at == text.size();
}

TEST(DamagedRecords, BaseFileReadsCleanlyAndWritesBackByteForByte) {
  const Base& b = base();
  ASSERT_TRUE(b.read.clean()) << b.read.file.problem.c_str();
  EXPECT_TRUE(b.read.warnings.empty());
  ASSERT_EQ(b.records.size(), 3u);
  EXPECT_EQ(b.records[2].node, IdStamp(3, 0, 2));

  const Outcome built(b.bytes, false);
  ASSERT_EQ(built.file.entries.size(), 2u);
  std::vector<ObjectsFile::Binding> bindings;
  for (const auto& e : built.file.entries) bindings.push_back({e.name, e.object});
  PStream out;
  LightweightString<char> why;
  ASSERT_TRUE(ObjectsFile::write(out, bindings, why)) << why.c_str();
  EXPECT_EQ(out.bytes(), b.bytes);
}

TEST(DamagedRecords, EveryCorpusFileHasItsExpectedOutcome) {
  const auto all = expectations();
  std::set<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(corpus))
    if (entry.path().extension() == ".objects") files.insert(entry.path().filename().string());
  for (const auto& [name, block] : all) EXPECT_TRUE(files.count(name)) << name << " is expected but missing";

  for (const std::string& name : files) {
    SCOPED_TRACE(name);
    auto found = all.find(name);
    ASSERT_NE(found, all.end()) << "no expected outcome for " << name;
    const auto& want = found->second;
    auto one = [&](const char* key) {
      auto it = want.find(key);
      return it == want.end() ? std::string() : it->second;
    };
    const std::vector<uint8_t> bytes = readFile(name);
    const Outcome o(bytes);

    EXPECT_EQ(std::to_string(o.result), one("result"));
    EXPECT_EQ(std::to_string(o.second), one("second"));
    EXPECT_EQ(o.file.complete ? "yes" : "no", one("complete"));

    const std::vector<RecordBits> kept = recordsOf(*o.manager);
    std::vector<std::string> keptIds;
    for (const RecordBits& r : kept) keptIds.push_back(r.node.asString().str());
    EXPECT_EQ(keptIds, words(one("records")));
    const std::vector<std::string> positionsLost = words(one("positions-lost")), cookieLost = words(one("cookie-lost")),
                                   positionsDamaged = words(one("positions-damaged"));
    for (const RecordBits& r : kept) {
      const std::string id = r.node.asString().str();
      RecordBits expected{};
      if (r.node.valid()) {
        auto same = std::find_if(base().records.begin(), base().records.end(),
                                 [&](const RecordBits& b) { return b.node == r.node; });
        ASSERT_NE(same, base().records.end()) << id;
        expected = *same;
        if (std::count(positionsLost.begin(), positionsLost.end(), id))
          expected = RecordBits{expected.node, expected.cookie};
        if (std::count(positionsDamaged.begin(), positionsDamaged.end(), id)) {
          EXPECT_EQ(std::pair(r.node, r.cookie), std::pair(expected.node, expected.cookie)) << id;
          continue;
        }
        if (std::count(cookieLost.begin(), cookieLost.end(), id)) expected.cookie = invalid_cookie;
      }
      EXPECT_TRUE(r == expected) << id << " differs from what was written";
    }

    std::vector<std::string> errors;
    for (auto [it, end] = want.equal_range("error"); it != end; ++it)
      if (it->second != "-") errors.push_back(it->second);
    EXPECT_TRUE(sameMessages(o.errorText, errors)) << o.errorText;
    std::string warnings;
    for (const auto& w : o.warnings) warnings += w + "\n";
    for (auto [it, end] = want.equal_range("warning"); it != end; ++it) {
      if (it->second == "-")
        EXPECT_TRUE(o.warnings.empty()) << warnings;
      else
        EXPECT_NE(warnings.find(it->second), std::string::npos) << warnings << "lacks: " << it->second;
    }
    checkInvariants(bytes);
  }
}

TEST(DamagedRecords, TruncationAtEveryOffset) {
  const Base& b = base();
  const uint64_t spare = b.read.file.entries[1].offset;
  for (std::size_t cut = 0; cut < b.bytes.size(); ++cut) {
    SCOPED_TRACE("cut at " + std::to_string(cut));
    const std::vector<uint8_t> bytes(b.bytes.begin(), b.bytes.begin() + static_cast<std::ptrdiff_t>(cut));
    const Outcome o(bytes);
    EXPECT_FALSE(o.clean());
    // Whole records survive a cut as they were; the one cut through keeps
    // what it read before the end, and nothing is made up after it.
    const std::vector<RecordBits> kept = recordsOf(*o.manager);
    ASSERT_LE(kept.size(), b.records.size());
    for (std::size_t i = 0; i + 1 < kept.size(); ++i) EXPECT_TRUE(kept[i] == b.records[i]) << i;
    if (!kept.empty()) {
      const RecordBits& last = kept.back();
      const RecordBits& was = b.records[kept.size() - 1];
      EXPECT_TRUE(!last.node.valid() || last.node == was.node);
      EXPECT_TRUE(last.cookie == invalid_cookie || last.cookie == was.cookie);
    }
    // Cut between the two objects: the first is whole, the file is not.
    if (cut == spare) {
      EXPECT_EQ(o.result, StreamResult::layerRead);
      EXPECT_TRUE(o.errorText.empty());
    }
    // Cut inside the last header's sizes (the total that ends the file, or
    // the own size): a size read short is no legitimate empty layer.
    const std::size_t missing = b.bytes.size() - cut;
    if (missing <= 5 && missing != 4) {
      EXPECT_EQ(o.second, StreamResult::unexpectedEof);
    }
    checkInvariants(bytes);
  }
}

TEST(DamagedRecords, EveryByteFlipped) {
  const Base& b = base();
  for (uint8_t mask : {0x01, 0x80, 0xFF})
    for (std::size_t at = 0; at < b.bytes.size(); ++at) {
      SCOPED_TRACE(formatText("byte %zu ^ 0x%02x", at, mask).str());
      std::vector<uint8_t> bytes = b.bytes;
      bytes[at] ^= mask;
      checkInvariants(bytes);
      if (HasFatalFailure()) return;
    }
}

TEST(DamagedRecords, FlippedBytesAtKnownPlaces) {
  const Base& b = base();
  const Trace& t = b.read.trace;
  auto flipped = [&](uint64_t at, uint8_t mask) {
    std::vector<uint8_t> bytes = b.bytes;
    bytes[at] ^= mask;
    return bytes;
  };
  // The manager's root major 2 becomes 3, an encoding nobody knows.
  const Outcome unknown(flipped(t.find("$", 0).offset + 5, 0x01));
  EXPECT_EQ(unknown.result, StreamResult::error);
  EXPECT_EQ(unknown.errorText, "Unrecognized version for Streamable base");
  EXPECT_EQ(unknown.manager->recordCount(), 0u);
  EXPECT_EQ(unknown.second, 0);

  // The first record's manual flag 0 becomes 0xFF, which reads as set.
  const Outcome flag(flipped(t.find("K", 1, 0).dataStart + 32, 0xFF));
  EXPECT_TRUE(flag.clean());
  std::vector<RecordBits> expected = b.records;
  expected[0].manualSet = true;
  EXPECT_EQ(recordsOf(*flag.manager), expected);
}

} // namespace
