#pragma once
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/FxHostApi.h"

// A plain-text file of "key = value" lines, the storage of the preference
// store and of the integer configuration.
//
// Format, one entry a line: the key, "=", the value; blanks round both are
// ignored. Lines that are blank or start with '#' are comments. A value with
// blanks at either end, a line break, a backslash or a leading double quote
// is written in double quotes with C escapes (\\ \" \n \r \t). A key is any
// text without '=', line breaks or blanks at its ends. When a key appears
// twice, the later line wins.
//
// The lines are kept as read, so comments survive a rewrite. A file that is
// there but is not one of these (binary bytes, or a line that is neither
// blank, a comment nor "key = value": an edit, a picture, a script named by
// mistake) is the user's, not ours: nothing is read from it and it is never
// written; changes stay in memory. Not thread-safe: its owner locks.
class FXHOST_API KeyFile {
public:
  KeyFile() = default;

  // Reads `path`; a missing file gives an empty store and is not an error.
  // `what` names the file in messages ("preferences", "configuration").
  // `makeFolder`: a write first makes the file's missing folders (for the
  // user's own configuration folder; a path given by hand whose folder is
  // missing is a failed write). Returns false when the file is there but is
  // not one that can be kept (refusal() says why).
  bool load(const std::string& path, const char* what, bool makeFolder = false);
  const std::string& path() const noexcept { return path_; }

  // Why the file is neither read nor written ("PATH: not a preferences file
  // (line 3 is not \"key = value\")"); empty when it is kept.
  const std::string& refusal() const noexcept { return refusal_; }
  // Why the file on disk lacks the latest change (the last write failed, or
  // the file is refused); empty when it holds every change.
  const std::string& unsaved() const noexcept { return unsaved_; }

  std::optional<std::string> get(std::string_view key) const;
  bool has(std::string_view key) const { return index_.count(key) != 0; }
  std::vector<std::string> keys() const;

  // Changes the value in memory and writes the whole file through a
  // temporary file renamed into place, so that a crash leaves either the old
  // file or the new one. Returns whether the file was written; an unusable
  // key is refused (false, with a log message) and changes nothing. A write
  // that fails keeps the change in memory and sets unsaved().
  bool set(std::string_view key, std::string_view value);
  bool remove(std::string_view key);

  static bool isUsableKey(std::string_view key);
  // The text of a value as it is written after "key = ", and back.
  static std::string encodeValue(std::string_view value);
  static std::optional<std::string> decodeValue(std::string_view text);

private:
  struct Line {
    std::string text; // as in the file
    std::string key;  // empty for comments and unreadable lines
  };
  bool write();

  std::string path_;
  const char* what_ = "settings";
  bool makeFolder_ = false;
  std::string refusal_;
  std::string unsaved_;
  std::vector<Line> lines_;
  std::map<std::string, std::size_t, std::less<>> index_; // key -> its (last) line
};
