#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/core/iObject.h"

// One entry of a menu that a glob offers (Glob::getMenuItems). Choosing it
// sends `message` to the glob as a text message; an item without a message
// sends the data message MenuData::changeMsg with a MenuData::Change instead.
struct MenuItem {
  LightweightString<wchar_t> label;
  LightweightString<char> message;
  // Tells the items of one data-message group apart from another's.
  LightweightString<char> tag;
  bool active = true;   // inactive items show greyed and cannot be chosen
  bool checked = false; // drawn with a tick
  // The key that does the same, shown at the right ("L", "Ctrl+S").
  LightweightString<wchar_t> keys;
  // A heading (what the entries below act on) or a line between groups:
  // neither can be chosen.
  enum class Kind { entry, heading, separator };
  Kind kind = Kind::entry;

  MenuItem() = default;
  MenuItem(LightweightString<wchar_t> label_, LightweightString<char> message_ = {}, LightweightString<char> tag_ = {})
      : label(std::move(label_)), message(std::move(message_)), tag(std::move(tag_)) {}
};

using MenuItems = std::vector<MenuItem>;

// A heading and a separator, as menus put them.
inline MenuItem menuHeading(LightweightString<wchar_t> label) {
  MenuItem m(std::move(label));
  m.kind = MenuItem::Kind::heading;
  m.active = false;
  return m;
}
inline MenuItem menuSeparator() {
  MenuItem m;
  m.kind = MenuItem::Kind::separator;
  m.active = false;
  return m;
}

namespace MenuData {

// The data of the message MenuData::changeMsg: which item was chosen. It is
// a counted object so that a handler can pass it on in a NotifyMsg.
class FXHOST_API Change : public iObject {
public:
  Change(LightweightString<wchar_t> label_, int index_, LightweightString<char> tag_)
      : label(std::move(label_)), index(index_), tag(std::move(tag_)) {}
  ~Change() override;

  LightweightString<wchar_t> label;
  int index; // in the menu, from 0 at the top
  LightweightString<char> tag;
};

inline constexpr const char* changeMsg = "MenuData::Change";

} // namespace MenuData
