#pragma once
// The script language's words and numbers, as its commands read them.
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "host/ui/Event.h"

namespace fxgraph::scripttext {

inline std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> out;
  std::istringstream in(line);
  for (std::string w; in >> w;) out.push_back(w);
  return out;
}

// A key by the name scripts give it: one printable character, or the name
// of a key that is not text.
inline bool keyCode(const std::string& name, int& code) {
  static const std::pair<const char*, int> named[] = {
      {"Tab", Event::keyTab},       {"Return", Event::keyReturn}, {"Escape", Event::keyEscape},
      {"Delete", Event::keyDelete}, {"space", Event::keySpace},   {"Left", Event::arrowLeft},
      {"Right", Event::arrowRight}, {"Up", Event::arrowUp},       {"Down", Event::arrowDown}};
  for (const auto& [text, value] : named)
    if (name == text) {
      code = value;
      return true;
    }
  if (name.size() == 1 && name[0] > ' ' && name[0] < 127) {
    code = name[0];
    return true;
  }
  return false;
}

inline bool integer(const std::string& text, int& out) {
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), out);
  return ec == std::errc() && end == text.data() + text.size();
}

inline bool number(const std::string& text, double& out) {
  char* end = nullptr;
  out = std::strtod(text.c_str(), &end);
  return !text.empty() && end == text.c_str() + text.size() && std::isfinite(out);
}

inline std::string trimmed(std::string text) {
  text.erase(0, text.find_first_not_of(" \t\r"));
  text.erase(text.find_last_not_of(" \t\r") + 1);
  return text;
}

// What follows the word `after` on the line, blanks inside kept.
inline std::string rest(const std::string& line, const std::string& after) {
  const std::size_t at = line.find(after);
  return at == std::string::npos ? std::string() : trimmed(line.substr(at + after.size()));
}

// What follows the command word and the one blank after it, exactly: a
// message's own blanks, trailing ones too, are part of it ("AutoPos ").
inline std::string restVerbatim(const std::string& line, const std::string& command) {
  std::size_t at = line.find(command) + command.size() + 1;
  std::string text = at < line.size() ? line.substr(at) : std::string();
  // A script written with CR LF line ends.
  if (!text.empty() && text.back() == '\r') text.pop_back();
  return text;
}

} // namespace fxgraph::scripttext
