#include "app/NodeUICommand.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <ostream>
#include <sstream>

#include <nlohmann/json.hpp>

#include "app/PositionRecordsJson.h"
#include "host/core/JsonNesting.h"
#include "host/notify/Log.h"
#include "host/stream/BoundedRead.h"
#include "host/stream/ObjectsFile.h"
#include "host/stream/StreamTraceSink.h"
#include "node_ui/NodeUIPosManager.h"

namespace fxgraph {
namespace {

const char* resultMeaning(int code) {
  switch (code) {
  case StreamResult::packed:
    return "packed";
  case StreamResult::layerRead:
    return "read";
  case StreamResult::error:
    return "error";
  case StreamResult::wrongLayerName:
    return "wrong layer name, rest of object skipped";
  case StreamResult::unexpectedEof:
    return "unexpected end of file";
  default:
    return "not read";
  }
}

// The line and column of a byte offset in a text, counted from 1.
std::string lineAndColumn(const std::string& text, std::size_t offset) {
  std::size_t line = 1, column = 1;
  for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else {
      ++column;
    }
  }
  return "line " + std::to_string(line) + ", column " + std::to_string(column);
}

// Records files are small: a bound keeps a device or a runaway file from
// being read into memory whole.
constexpr std::size_t largestRecordsFile = std::size_t(64) << 20;

bool readTextFile(const std::string& path, std::string& text, std::string& why) {
  if (readBoundedFile(path, largestRecordsFile, text, why)) return true;
  why = "cannot read " + path + ": " + why;
  return false;
}

int pack(const std::string& jsonPath, const std::string& outPath, std::ostream& out, std::ostream& err) {
  std::string text, why;
  if (!readTextFile(jsonPath, text, why)) {
    err << "fxgraph: " << why << "\n";
    return 1;
  }
  if (const std::size_t at = jsonTooDeepAt(text); at != std::string::npos) {
    err << "fxgraph: " << jsonPath << ": " << lineAndColumn(text, at) << ": values nested deeper than "
        << maxJsonNesting << " levels\n";
    return 1;
  }
  nlohmann::json doc;
  try {
    doc = nlohmann::json::parse(text);
  } catch (const nlohmann::json::parse_error& e) {
    err << "fxgraph: " << jsonPath << ": " << lineAndColumn(text, e.byte > 0 ? e.byte - 1 : 0) << ": not valid JSON\n";
    return 1;
  } catch (const nlohmann::json::out_of_range&) {
    err << "fxgraph: " << jsonPath << ": a number out of range\n";
    return 1;
  } catch (const nlohmann::json::exception&) {
    err << "fxgraph: " << jsonPath << ": not valid JSON\n";
    return 1;
  }
  Ux::Ptr<NodeUIPosManager> manager(new NodeUIPosManager());
  if (!recordsFromJson(doc, *manager, why)) {
    err << "fxgraph: " << jsonPath << ": " << why << "\n";
    return 1;
  }
  LightweightString<char> failure;
  if (!ObjectsFile::save(outPath, {{NodeUIPosManager::bindingName, manager}}, failure)) {
    err << "fxgraph: cannot write " << outPath << ":" << failure.c_str() << "\n";
    return 1;
  }
  out << "wrote " << manager->recordCount() << " position records to " << outPath << "\n";
  return 0;
}

// Reads the file with the position manager read in place, so that the records
// read before any failure are still there to show.
struct ReadBack {
  ObjectsFile::ReadResult file;
  Ux::Ptr<NodeUIPosManager> manager{new NodeUIPosManager()};
  int managerResult = 0;
  bool found = false;
  std::vector<std::string> logWarnings;
};

ReadBack readBack(const std::string& path, StreamTraceSink* trace) {
  ReadBack r;
  LogChannel::Capture log(Log::channel());
  std::map<LightweightString<char>, Ux::Ptr<Streamable>> into{{NodeUIPosManager::bindingName, r.manager}};
  PStream s;
  if (!s.openRead(path)) {
    r.file.problem = s.errorText();
    return r;
  }
  s.setTraceSink(trace);
  r.file = ObjectsFile::read(s, &into);
  for (const auto& e : r.file.entries) {
    if (e.name == NodeUIPosManager::bindingName) {
      r.found = true;
      r.managerResult = e.result;
    }
  }
  r.logWarnings = log.messages();
  return r;
}

// Read to the end with no error text: anything less is damage.
bool clean(const ReadBack& r) {
  if (!r.file.complete || !r.found || r.managerResult != StreamResult::layerRead) return false;
  for (const auto& e : r.file.entries)
    if (!e.errorText.empty()) return false;
  return true;
}

// One line: messages are joined by spaces and trimmed.
std::string trimmed(std::string s) {
  for (char& c : s)
    if (c == '\n' || c == '\r') c = ' ';
  const auto b = s.find_first_not_of(' ');
  const auto e = s.find_last_not_of(' ');
  return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

int dump(const std::string& path, std::ostream& out, std::ostream& err) {
  ReadBack r = readBack(path, nullptr);
  nlohmann::ordered_json doc = recordsToJson(*r.manager);
  doc["result"] = r.managerResult;
  std::string errorText;
  for (const auto& e : r.file.entries) errorText += e.errorText.str();
  doc["errorText"] = trimmed(errorText);
  nlohmann::ordered_json warnings = nlohmann::ordered_json::array();
  for (const auto& w : r.logWarnings) warnings.push_back(trimmed(w));
  for (const auto& w : r.file.warnings) warnings.push_back(w.str());
  doc["warnings"] = warnings;
  doc["complete"] = r.file.complete;
  if (!r.file.problem.empty()) doc["problem"] = trimmed(r.file.problem.str());
  // The error text may quote bytes of the file that are not UTF-8.
  out << doc.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
  if (clean(r)) return 0;
  if (!r.file.problem.empty())
    err << "fxgraph: " << path << ": " << trimmed(r.file.problem.str()) << "\n";
  else if (!r.found)
    err << "fxgraph: " << path << ": holds no \"" << NodeUIPosManager::bindingName << "\"\n";
  else if (r.managerResult != StreamResult::layerRead)
    err << "fxgraph: " << path << ": position records read with result " << r.managerResult << " ("
        << resultMeaning(r.managerResult) << ")\n";
  else
    err << "fxgraph: " << path << ": position records read, but damaged: " << doc["errorText"].get<std::string>()
        << "\n";
  return 1;
}

// A layer name as read from the file, printable on one line.
std::string printable(const LightweightString<char>& name) {
  if (name.empty()) return "(none)";
  std::string out;
  for (unsigned char c : name.str()) {
    if (c >= 0x20 && c < 0x7F)
      out += static_cast<char>(c);
    else {
      char hex[5];
      std::snprintf(hex, sizeof hex, "\\x%02X", c);
      out += hex;
    }
  }
  return out;
}

// Collects the chunk tree as the reader walks it.
class ChunkTree : public StreamTraceSink {
public:
  struct Chunk {
    StreamTraceSink::Header header;
    std::size_t depth = 0;
    int result = 0;
    uint64_t end = 0;
  };
  void chunkHeader(const Header& h) override {
    chunks.push_back({h, open_.size()});
    open_.push_back(chunks.size() - 1);
  }
  void chunkEnd(int code, uint64_t position) override {
    if (open_.empty()) return;
    chunks[open_.back()].result = code;
    chunks[open_.back()].end = position;
    open_.pop_back();
  }
  std::vector<Chunk> chunks;

private:
  std::vector<std::size_t> open_;
};

int inspect(const std::string& path, std::ostream& out, std::ostream& err) {
  ChunkTree tree;
  ReadBack r = readBack(path, &tree);
  PStream sizeProbe;
  if (!sizeProbe.openRead(path)) {
    // No chunks to list: the file could not be read at all.
    err << "fxgraph: " << path << ": " << trimmed(sizeProbe.errorText().str()) << "\n";
    return 1;
  }
  out << path << ": " << sizeProbe.size() << " bytes, " << r.file.declaredCount << " object(s) declared\n";
  out << std::left << std::setw(10) << "offset" << std::setw(24) << "layer" << std::setw(9) << "version"
      << std::setw(12) << "own size" << std::setw(12) << "total size"
      << "result\n";
  std::size_t next = 0;
  for (const auto& e : r.file.entries) {
    out << "object \"" << printable(e.name) << "\" (" << printable(e.kind) << ") at " << e.offset << "\n";
    for (; next < tree.chunks.size() &&
           tree.chunks[next].header.offset < (&e == &r.file.entries.back() ? UINT64_MAX : (&e + 1)->offset);
         ++next) {
      const auto& c = tree.chunks[next];
      std::ostringstream version, name;
      version << c.header.major << "." << c.header.minor;
      name << std::string(2 * c.depth + 2, ' ') << printable(c.header.name);
      out << std::left << std::setw(10) << c.header.offset << std::setw(24) << name.str() << std::setw(9)
          << version.str() << std::setw(12) << c.header.ownSize << std::setw(12) << c.header.totalSize << c.result
          << " " << resultMeaning(c.result) << "\n";
    }
  }
  for (const auto& w : r.logWarnings) out << "log: " << trimmed(w) << "\n";
  for (const auto& w : r.file.warnings) out << "warning: " << w.c_str() << "\n";
  if (r.file.complete) {
    out << "read to the end: stopped at offset " << r.file.stoppedAt << "\n";
  } else {
    out << "reading stopped at offset " << r.file.stoppedAt << ": " << trimmed(r.file.problem.str()) << "\n";
  }
  if (clean(r)) return 0;
  err << "fxgraph: " << path << ": damaged; see the chunk list above\n";
  return 1;
}

} // namespace

int runNodeUICommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  if (args.size() == 3 && args[0] == "pack") return pack(args[1], args[2], out, err);
  if (args.size() == 2 && args[0] == "dump") return dump(args[1], out, err);
  if (args.size() == 2 && args[0] == "inspect") return inspect(args[1], out, err);
  err << "fxgraph: usage: fxgraph nodeui pack RECORDS.json OUT | dump IN | inspect IN\n";
  return 2;
}

} // namespace fxgraph
