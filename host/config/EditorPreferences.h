#pragma once
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "host/FxHostApi.h"
#include "host/config/KeyFile.h"
#include "host/core/LightweightString.h"
#include "host/core/XY.h"

// The user's preferences: typed values by literal key, kept in a KeyFile.
// Every change is written through to the file at once. Values are stored as
// text: bools as "true" / "false", numbers in decimal (doubles in the
// shortest form that reads back to the same value), wide text as UTF-8 and
// integer points as "(x,y)". A getter returns the default when the key is
// absent or its text is not of the type asked for.
class FXHOST_API EditorPreferences {
public:
  EditorPreferences() = default;
  explicit EditorPreferences(const std::string& path) { open(path); }
  EditorPreferences(const EditorPreferences&) = delete;
  EditorPreferences& operator=(const EditorPreferences&) = delete;

  // Reads another file; what was read before is dropped, nothing is written.
  // `makeFolder`: the first write makes the file's folder (the user's
  // configuration folder); a missing folder of a path given by hand is a
  // failed write instead.
  void open(const std::string& path, bool makeFolder = false);
  std::string path() const;
  // Why the file is neither read nor written (it is not a preferences
  // file), or empty.
  std::string refusal() const;
  // Why the file lacks the latest change, or empty when it holds them all.
  std::string unsaved() const;
  // Told, with unsaved(), when a write fails after the file held every
  // change: the host shows it once, not at every change that fails after.
  void setWriteFailureHandler(std::function<void(const std::string&)> handler);

  bool getPreference(const LightweightString<char>& key, bool fallback) const;
  int getPreference(const LightweightString<char>& key, int fallback) const;
  double getPreference(const LightweightString<char>& key, double fallback) const;
  XY<int> getPreference(const LightweightString<char>& key, XY<int> fallback) const;
  LightweightString<char> getPreference(const LightweightString<char>& key,
                                        const LightweightString<char>& fallback) const;
  LightweightString<wchar_t> getPreference(const LightweightString<char>& key,
                                           const LightweightString<wchar_t>& fallback) const;
  // Without these a literal default would pick the bool overload.
  LightweightString<char> getPreference(const LightweightString<char>& key, const char* fallback) const {
    return getPreference(key, LightweightString<char>(fallback));
  }
  LightweightString<wchar_t> getPreference(const LightweightString<char>& key, const wchar_t* fallback) const {
    return getPreference(key, LightweightString<wchar_t>(fallback));
  }

  // Each returns whether the file was written.
  bool setPreference(const LightweightString<char>& key, bool value);
  bool setPreference(const LightweightString<char>& key, int value);
  bool setPreference(const LightweightString<char>& key, double value);
  bool setPreference(const LightweightString<char>& key, XY<int> value);
  bool setPreference(const LightweightString<char>& key, const LightweightString<char>& value);
  bool setPreference(const LightweightString<char>& key, const LightweightString<wchar_t>& value);
  bool setPreference(const LightweightString<char>& key, const char* value) {
    return setPreference(key, LightweightString<char>(value));
  }
  bool setPreference(const LightweightString<char>& key, const wchar_t* value) {
    return setPreference(key, LightweightString<wchar_t>(value));
  }

  bool hasPreference(const LightweightString<char>& key) const;
  bool removePreference(const LightweightString<char>& key);

private:
  std::optional<std::string> text(const LightweightString<char>& key) const;
  bool store(const LightweightString<char>& key, const std::string& value);

  mutable std::mutex mutex_;
  KeyFile file_;
  std::function<void(const std::string&)> onWriteFailure_;
};

// The process-wide preference store. On first use it reads
// $XDG_CONFIG_HOME/fxgraph/preferences (~/.config/fxgraph/preferences when
// that is not set), unless setPreferencesFile named another file first.
FXHOST_API EditorPreferences& prefs();
// Points the store at another file (the program's --prefs); an empty path
// goes back to the default file. A file named here that is not a
// preferences file is left alone (refusal() says so).
FXHOST_API void setPreferencesFile(const std::string& path);
// The folder of the user's fxgraph settings: $XDG_CONFIG_HOME/fxgraph or ~/.config/fxgraph.
FXHOST_API std::string userConfigFolder();
// The preferences file the store reads unless it is given another.
FXHOST_API std::string defaultPreferencesFile();
