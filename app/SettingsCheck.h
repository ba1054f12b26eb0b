#pragma once
#include <string>
#include <vector>

#include "host/config/EditorPreferences.h"
#include "host/config/configb.h"

namespace fxgraph {

// The tool's settings as the preference and layout files give them, checked
// before the tool reads them: a size, place or zoom out of range is brought
// into it, and a value that is none of its kind is left out (the default
// stands), each with one line that names the file, the key or record, and
// the reason. The tool then never starts from a size, place or zoom that no
// screen can show.
class SettingsCheck {
public:
  // Mends the tool's preferences in the store (which writes them back).
  // The lines say what was mended; none when all was well.
  static std::vector<std::string> mendPreferences(EditorPreferences& preferences);
  // Mends a layout record of the tool before it is restored; `where` names
  // it in the lines ("FILE: record 3").
  static std::vector<std::string> mendRecord(configb& record, const std::string& where);
};

} // namespace fxgraph
