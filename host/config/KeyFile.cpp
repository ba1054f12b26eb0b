#include "host/config/KeyFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

#include "host/notify/Log.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r'; }

std::string_view trimmed(std::string_view s) {
  while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
  return s;
}

} // namespace

bool KeyFile::isUsableKey(std::string_view key) {
  if (key.empty() || key.front() == '#' || trimmed(key).size() != key.size()) return false;
  return key.find_first_of("=\n\r") == std::string_view::npos;
}

std::string KeyFile::encodeValue(std::string_view value) {
  const bool plain = value.empty() || (trimmed(value).size() == value.size() && value.front() != '"' &&
                                       value.find_first_of("\\\n\r\t") == std::string_view::npos);
  if (plain) return std::string(value);
  std::string out = "\"";
  for (char c : value) {
    switch (c) {
    case '\\':
      out += "\\\\";
      break;
    case '"':
      out += "\\\"";
      break;
    case '\n':
      out += "\\n";
      break;
    case '\r':
      out += "\\r";
      break;
    case '\t':
      out += "\\t";
      break;
    default:
      out += c;
    }
  }
  return out + '"';
}

std::optional<std::string> KeyFile::decodeValue(std::string_view text) {
  text = trimmed(text);
  if (text.empty() || text.front() != '"') return std::string(text);
  if (text.size() < 2 || text.back() != '"') return std::nullopt;
  text = text.substr(1, text.size() - 2);
  std::string out;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '"') return std::nullopt; // an unescaped quote inside
    if (c == '\\') {
      if (++i == text.size()) return std::nullopt;
      switch (text[i]) {
      case '\\':
        c = '\\';
        break;
      case '"':
        c = '"';
        break;
      case 'n':
        c = '\n';
        break;
      case 'r':
        c = '\r';
        break;
      case 't':
        c = '\t';
        break;
      default:
        return std::nullopt;
      }
    }
    out += c;
  }
  return out;
}

bool KeyFile::load(const std::string& path, const char* what, bool makeFolder) {
  path_ = path;
  what_ = what;
  makeFolder_ = makeFolder;
  lines_.clear();
  index_.clear();
  refusal_.clear();
  unsaved_.clear();
  std::error_code ec;
  if (!std::filesystem::exists(path, ec)) return true;
  // A file that cannot be read whole cannot be rewritten without loss.
  constexpr std::size_t largest = std::size_t(16) << 20;
  std::string all, why;
  if (!readBoundedFile(path, largest, all, why)) {
    refusal_ = path + ": not a " + what_ + " file (" + why + ")";
    return false;
  }
  if (all.find('\0') != std::string::npos) {
    refusal_ = path + ": not a " + what_ + " file (it holds binary data)";
    return false;
  }
  std::istringstream in(all);
  std::string text;
  for (std::size_t number = 1; std::getline(in, text); ++number) {
    Line line{text, {}};
    const std::string_view body = trimmed(text);
    if (!body.empty() && body.front() != '#') {
      const std::size_t eq = body.find('=');
      const std::string_view key = eq == std::string_view::npos ? std::string_view() : trimmed(body.substr(0, eq));
      std::optional<std::string> value;
      if (isUsableKey(key)) value = decodeValue(body.substr(eq + 1));
      if (!value) {
        // Not ours: whatever it is, it is left exactly as it is.
        lines_.clear();
        index_.clear();
        refusal_ = path + ": not a " + what_ + " file (line " + std::to_string(number) + " is not \"key = value\")";
        return false;
      }
      line.key = std::string(key);
      index_[line.key] = lines_.size();
    }
    lines_.push_back(std::move(line));
  }
  return true;
}

std::optional<std::string> KeyFile::get(std::string_view key) const {
  auto it = index_.find(key);
  if (it == index_.end()) return std::nullopt;
  const std::string& text = lines_[it->second].text;
  return decodeValue(std::string_view(text).substr(text.find('=') + 1));
}

std::vector<std::string> KeyFile::keys() const {
  std::vector<std::string> out;
  out.reserve(index_.size());
  for (const auto& entry : index_) out.push_back(entry.first);
  return out;
}

bool KeyFile::set(std::string_view key, std::string_view value) {
  if (!isUsableKey(key)) {
    Log::printf("%s: \"%.*s\" cannot be a key; not stored", what_, static_cast<int>(key.size()), key.data());
    return false;
  }
  std::string text = std::string(key) + " = " + encodeValue(value);
  auto it = index_.find(key);
  if (it != index_.end()) {
    // The same value again only retries a write that failed.
    if (lines_[it->second].text == text) return unsaved_.empty() || write();
    lines_[it->second].text = std::move(text);
  } else {
    index_.emplace(std::string(key), lines_.size());
    lines_.push_back({std::move(text), std::string(key)});
  }
  return write();
}

bool KeyFile::remove(std::string_view key) {
  auto it = index_.find(key);
  if (it == index_.end()) return true;
  // Earlier lines with the same key go too, or they would show through.
  std::erase_if(lines_, [&](const Line& l) { return l.key == key; });
  index_.clear();
  for (std::size_t i = 0; i < lines_.size(); ++i)
    if (!lines_[i].key.empty()) index_[lines_[i].key] = i;
  return write();
}

bool KeyFile::write() {
  if (path_.empty()) return false;
  if (!refusal_.empty()) {
    unsaved_ = refusal_;
    return false;
  }
  namespace fs = std::filesystem;
  const fs::path target(path_);
  std::error_code ec;
  if (makeFolder_ && target.has_parent_path()) fs::create_directories(target.parent_path(), ec);
  std::string text, why;
  for (const Line& l : lines_) {
    text += l.text;
    text += '\n';
  }
  if (!writeFileAtomically(path_, text, why)) {
    if (unsaved_.empty()) Log::printf("%s: %s; the change is kept until the program ends", what_, why.c_str());
    unsaved_ = why;
    return false;
  }
  unsaved_.clear();
  return true;
}
