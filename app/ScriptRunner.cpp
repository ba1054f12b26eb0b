#include "app/ScriptRunner.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string_view>
#include <vector>

#include "app/StateDump.h"
#include "host/core/EchoedText.h"
#include "host/edit/EditFile.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"
#include "host/ui/Checkbox.h"
#include "host/ui/DropDownMenuButton.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "host/ui/ImageButton.h"
#include "host/ui/MenuGlob.h"
#include "host/ui/PushButton.h"
#include "host/ui/SentMessages.h"
#include "routing/MultiTrackRoutingView.h"

namespace fxgraph {
namespace {

std::vector<std::string> words(const std::string& line) {
  std::vector<std::string> out;
  std::istringstream in(line);
  for (std::string w; in >> w;) out.push_back(w);
  return out;
}

// A key by the name scripts give it: one printable character, or the name
// of a key that is not text.
bool keyCode(const std::string& name, int& code) {
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

bool integer(const std::string& text, int& out) {
  auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), out);
  return ec == std::errc() && end == text.data() + text.size();
}

bool number(const std::string& text, double& out) {
  char* end = nullptr;
  out = std::strtod(text.c_str(), &end);
  return !text.empty() && end == text.c_str() + text.size() && std::isfinite(out);
}

std::string trimmed(std::string text) {
  text.erase(0, text.find_first_not_of(" \t\r"));
  text.erase(text.find_last_not_of(" \t\r") + 1);
  return text;
}

// What follows the word `after` on the line, blanks inside kept.
std::string rest(const std::string& line, const std::string& after) {
  const std::size_t at = line.find(after);
  return at == std::string::npos ? std::string() : trimmed(line.substr(at + after.size()));
}

// What follows the command word and the one blank after it, exactly: a
// message's own blanks, trailing ones too, are part of it ("AutoPos ").
std::string restVerbatim(const std::string& line, const std::string& command) {
  std::size_t at = line.find(command) + command.size() + 1;
  std::string text = at < line.size() ? line.substr(at) : std::string();
  // A script written with CR LF line ends.
  if (!text.empty() && text.back() == '\r') text.pop_back();
  return text;
}

bool writeText(const std::string& path, const std::string& text, std::string& why) {
  return writeFileAtomically(path, text, why);
}

} // namespace

bool ScriptRunner::writableOutput(const std::string& file, std::string& why) const {
  UserFiles files = session_.userFiles();
  files.add(scriptPath_, "the script");
  const std::string what = files.clash(file);
  if (what.empty()) return true;
  why = echoedText(file) + " is " + what + "; it is not written over";
  return false;
}

bool ScriptRunner::runFile(const std::string& path, std::string& why) {
  scriptPath_ = path;
  constexpr std::size_t largest = std::size_t(16) << 20;
  std::string text, failure;
  if (!readBoundedFile(path, largest, text, failure)) {
    why = path + ": cannot run the script: " + failure;
    return false;
  }
  std::istringstream in(text);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    std::string reason;
    if (!runLine(line, reason)) {
      why = path + ":" + std::to_string(number) + ": " + reason;
      return false;
    }
  }
  return true;
}

XY<int> ScriptRunner::toScreen(XY<int> viewPixel) const {
  return session_.view() ? session_.view()->screenPos() + viewPixel : viewPixel;
}

bool ScriptRunner::mouse(int type, XY<int> viewPixel, int button, bool ctrl) {
  mouse_ = viewPixel;
  Event e;
  e.type = static_cast<Event::Type>(type);
  e.button = static_cast<Event::Button>(button);
  e.screen = toScreen(viewPixel);
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(ctrl ? Event::controlHeld : 0);
  return GlobManager::dispatch(e);
}

bool ScriptRunner::key(int code, unsigned modifiers) {
  Event e;
  e.type = Event::keyDown;
  e.key = code;
  e.modifiers = modifiers;
  e.screen = toScreen(mouse_);
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(modifiers);
  const bool taken = GlobManager::dispatch(e);
  e.type = Event::keyUp;
  GlobManager::dispatch(e);
  GlobManager::setKeyboardModifiers(0);
  GlobManager::processDeletions();
  return taken;
}

bool ScriptRunner::nodeCentre(const std::string& id, XY<int>& at, std::string& why) const {
  IdStamp node;
  if (!IdStamp::fromString(id, node)) {
    why = echoedText(id) + " is not a node id (a.b.c)";
    return false;
  }
  Ux::Ptr<FXGraphViewNode> n = session_.view() ? session_.view()->findViewRecForNode(node) : nullptr;
  if (!n) {
    why = "no node " + id + " in the view";
    return false;
  }
  bringIntoView(*n);
  // The middle of the box below the title bar: the body, clear of pads.
  const auto box = n->calcPixelExtents();
  const auto title = n->getTitleBarRect();
  at = {(box.x0 + box.x1) / 2, (box.y0 + std::min(box.y1, title.y0)) / 2};
  return true;
}

bool ScriptRunner::screenClick(XY<int> at, int button) {
  Event e;
  e.type = Event::mouseDown;
  e.button = static_cast<Event::Button>(button);
  e.screen = at;
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(0);
  const bool taken = GlobManager::dispatch(e);
  e.type = Event::mouseUp;
  GlobManager::dispatch(e);
  GlobManager::processDeletions();
  return taken;
}

Glob* ScriptRunner::panelWidget(const std::string& name) const {
  FXGraphTool* p = session_.panel();
  if (!p) return nullptr;
  if (name == "ToggleTemplates") return p->toggleTemplatesButton();
  if (name == "TidyNodes") return p->tidyButton();
  if (name == "undoBtn") return p->undoButton();
  if (name == "redoBtn") return p->redoButton();
  if (name == "autoPos") return p->autoPosCheckbox();
  if (name == "orientation") return p->orientationMenu();
  if (name == "view") return p->getView();
  if (name == "templatesList") return p->getTemplatesList();
  return nullptr;
}

std::string ScriptRunner::widgetNames() const {
  return "ToggleTemplates, TidyNodes, undoBtn, redoBtn, autoPos, orientation, view, templatesList";
}

std::string ScriptRunner::widgetMessage(Glob* widget) const {
  FXGraphTool* p = session_.panel();
  if (p && widget == p->autoPosCheckbox())
    return std::string(Checkbox::messagePrefix) + (p->autoPosCheckbox()->getState() ? "Off" : "On");
  if (auto* button = dynamic_cast<Button*>(widget)) return button->getMessage().str();
  return {};
}

bool ScriptRunner::pickMenuEntry(const std::string& entry, std::string& why) {
  MenuGlob* menu = MenuGlob::current();
  if (!menu) {
    why = "no menu came up";
    return false;
  }
  int index = -1;
  if (!integer(entry, index)) {
    const MenuItems& items = menu->items();
    for (std::size_t i = 0; i < items.size() && index < 0; ++i)
      if (toUTF8(items[i].label).str() == entry) index = static_cast<int>(i);
  }
  if (index < 0 || index >= static_cast<int>(menu->items().size())) {
    std::string offered;
    for (const MenuItem& item : menu->items())
      offered += (offered.empty() ? "\"" : ", \"") + toUTF8(item.label).str() + "\"";
    menu->close();
    GlobManager::processDeletions();
    why = "the menu has no entry " + echoedText(entry) + " (it offers " + offered + ")";
    return false;
  }
  const MenuItem item = menu->items()[static_cast<std::size_t>(index)];
  const Glob::PixelBox row = menu->itemBox(index);
  const XY<int> at = menu->screenPos() + XY<int>{(row.x0 + row.x1) / 2, (row.y0 + row.y1) / 2};
  const bool handled = screenClick(at, Event::left);
  session_.lastMessage = Session::LastMessage{item.message.empty() ? toUTF8(item.label).str() : item.message.str(),
                                              handled && item.active};
  return true;
}

bool ScriptRunner::choose(const std::string& name, const std::string& entry, std::string& why) {
  Glob* widget = panelWidget(name);
  if (!widget) {
    why = "the panel has no widget " + echoedText(name) + " (" + widgetNames() + ")";
    return false;
  }
  const XY<int> centre = widget->screenPos() + XY<int>{widget->width() / 2, widget->height() / 2};
  if (dynamic_cast<DropDownMenuButton*>(widget)) {
    screenClick(centre, Event::left);
  } else {
    // A context menu: a right click where the widget has nothing else.
    Event e;
    e.type = Event::mouseDown;
    e.button = Event::right;
    e.screen = widget == session_.view() ? toScreen(emptyViewPixel()) : centre;
    GlobManager::dispatch(e);
    e.type = Event::mouseUp;
    GlobManager::dispatch(e);
  }
  SentMessages sent;
  if (!pickMenuEntry(entry, why)) return false;
  // A drop-down tells its panel with a message of its own: the panel's
  // answer to it is what the choice got.
  if (dynamic_cast<DropDownMenuButton*>(widget) && session_.lastMessage) {
    session_.lastMessage->text = DropDownMenuButton::dropDownMenuButtonMsg;
    for (const SentMessages::Sent& m : sent.sent())
      if (m.text == DropDownMenuButton::dropDownMenuButtonMsg) session_.lastMessage->handled = m.handled;
  }
  return true;
}

bool ScriptRunner::dropTemplate(const std::string& name, XY<int> viewPixel, std::string& why) {
  DDVideoEffectsList* list = session_.panel()->getTemplatesList();
  if (!list) {
    why = "the templates list is hidden";
    return false;
  }
  int found = -1;
  for (int row = 0; row < list->rowCount() && found < 0; ++row) {
    list->scrollToRow(row, false);
    const Glob::PixelBox box = list->rowBox(row);
    const EffectTemplateSummary* t = list->templateAt({(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2});
    if (t && toUTF8(t->name).str() == name) found = row;
  }
  if (found < 0) {
    why = "the templates list offers no template " + echoedText(name);
    return false;
  }
  list->scrollToRow(found, true);
  const Glob::PixelBox box = list->rowBox(found);
  const XY<int> from = list->screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2};
  screenDrag(from, toScreen(viewPixel));
  return true;
}

void ScriptRunner::screenDrag(XY<int> from, XY<int> to) {
  Event e;
  e.button = Event::left;
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(0);
  e.type = Event::mouseDown;
  e.screen = from;
  GlobManager::dispatch(e);
  // In steps, as a hand moves, far enough to count as a drag; let go at the end.
  e.type = Event::mouseMove;
  for (int i = 1; i <= 4; ++i) {
    e.screen = {from.x + (to.x - from.x) * i / 4, from.y + (to.y - from.y) * i / 4};
    GlobManager::dispatch(e);
  }
  e.type = Event::mouseUp;
  e.screen = to;
  GlobManager::dispatch(e);
}

bool ScriptRunner::closePanel(std::string& why) { return session_.closePanel(why); }

void ScriptRunner::bringIntoView(const FXGraphViewNode& node) const {
  FXGraphView* view = session_.view();
  if (!view) return;
  // As a person brings the tool forward and scrolls to a node before
  // clicking it: re-centred only when part of its box lies outside the view area.
  if (FXGraphTool* panel = session_.panel(); panel && GlobManager::roots().back() != panel) panel->popToTop(false);
  const auto w = view->getWindowPos();
  const auto b = node.calcPixelExtents();
  if (b.x0 >= w.x0 && b.x1 <= w.x1 && b.y0 >= w.y0 && b.y1 <= w.y1) return;
  Vector<IdStamp> ids;
  ids.push_back(node.getNodeID());
  view->ensureNodeListVisible(ids, 2);
  view->redraw();
}

XY<int> ScriptRunner::emptyViewPixel() const {
  FXGraphView* view = session_.view();
  if (!view) return {};
  const auto w = view->getWindowPos();
  for (int y = w.y1 - 30; y > w.y0 + 30; y -= 10)
    for (int x = w.x0 + 30; x < w.x1 - 30; x += 10) {
      bool free = true;
      for (const auto& n : view->nodes()) {
        const auto b = n->pixelBox();
        free = free && !(x > b.x0 - 20 && x < b.x1 + 20 && y > b.y0 - 20 && y < b.y1 + 20);
      }
      if (free) return {x, y};
    }
  return {(w.x0 + w.x1) / 2, (w.y0 + w.y1) / 2};
}

bool ScriptRunner::runLine(const std::string& raw, std::string& why) {
  const std::string line = raw.substr(0, raw.find('#'));
  const std::vector<std::string> w = words(line);
  if (w.empty()) return true;
  const std::string& cmd = w[0];
  auto wants = [&](std::size_t least, std::size_t most, const char* form) {
    if (w.size() - 1 < least || w.size() - 1 > most) {
      why = "usage: " + std::string(form);
      return false;
    }
    return true;
  };
  auto needOpen = [&]() {
    if (session_.isOpen()) return true;
    why = cmd + ": no edit is open (after close, reopen first)";
    return false;
  };
  auto needPanel = [&]() {
    if (!needOpen()) return false;
    if (session_.panel()) return true;
    why = cmd + ": the tool is closed (reopen first)";
    return false;
  };
  auto point = [&](std::size_t at, XY<int>& p) {
    if (integer(w[at], p.x) && integer(w[at + 1], p.y)) return true;
    why = echoedText(w[at] + " " + w[at + 1]) + " is not a pixel position (two whole numbers)";
    return false;
  };

  if (cmd == "resize") {
    XY<int> size;
    if (!wants(2, 2, "resize W H") || !point(1, size)) return false;
    if (size.x < 64 || size.y < 64 || size.x > GlobManager::largestScreenSide ||
        size.y > GlobManager::largestScreenSide) {
      why = "the screen must be between 64 and " + std::to_string(GlobManager::largestScreenSide) + " pixels a side";
      return false;
    }
    GlobManager::resizeScreen(size.x, size.y);
    // Panels stay on the screen: one too big for it is made to fit.
    for (Glob* root : std::vector<Glob*>(GlobManager::roots())) {
      const int fitW = std::min<int>(root->width(), size.x), fitH = std::min<int>(root->height(), size.y);
      if (fitW != root->width() || fitH != root->height()) root->resize(fitW, fitH);
      const XY<int> at =
          GlobManager::getSafePosForGlob(root->canvas(), {root->getX(), root->getY()}, {root->width(), root->height()});
      root->setPos(at.x, at.y);
    }
    GlobManager::invalidate();
  } else if (cmd == "time") {
    double t = 0;
    if (!wants(1, 1, "time T") || !needOpen()) return false;
    if (!number(w[1], t) || t < 0) {
      why = echoedText(w[1]) + " is not a time (seconds, 0 or more)";
      return false;
    }
    session_.focusVob()->setCurrentTime(t);
  } else if (cmd == "tick") {
    int ms = 0;
    if (!wants(1, 1, "tick MS")) return false;
    if (!integer(w[1], ms) || ms < 0 || ms > 3600000) {
      why = echoedText(w[1]) + " is not a number of milliseconds (0 to 3600000)";
      return false;
    }
    // The clock moves in the loop's own steps, a tick at each.
    for (int done = 0; done < ms; done += GlobManager::tickMilliseconds) {
      HostClock::advance(static_cast<uint64_t>(std::min(GlobManager::tickMilliseconds, ms - done)));
      if (GlobManager::wantsTicks()) GlobManager::tick();
    }
  } else if (cmd == "press" || cmd == "move" || cmd == "release" || cmd == "click") {
    XY<int> p;
    if (cmd == "press") {
      if (!wants(2, 4, "press X Y [left|right] [ctrl]")) return false;
    } else if (!wants(2, 2, (cmd + " X Y").c_str())) {
      return false;
    }
    if (!needPanel() || !point(1, p)) return false;
    int button = Event::left;
    bool ctrl = false;
    for (std::size_t i = 3; i < w.size(); ++i) {
      if (w[i] == "left")
        button = Event::left;
      else if (w[i] == "right")
        button = Event::right;
      else if (w[i] == "ctrl")
        ctrl = true;
      else {
        why = "press: " + echoedText(w[i]) + " is not left, right or ctrl";
        return false;
      }
    }
    if (cmd == "press") {
      mouse(Event::mouseDown, p, button, ctrl);
      pressed_ = button;
    } else if (cmd == "move") {
      mouse(Event::mouseMove, p, pressed_, (GlobManager::keyboardModifiers() & Event::controlHeld) != 0);
    } else if (cmd == "release") {
      mouse(Event::mouseUp, p, pressed_ ? pressed_ : Event::left, false);
      pressed_ = 0;
    } else {
      mouse(Event::mouseDown, p, Event::left, false);
      mouse(Event::mouseUp, p, Event::left, false);
      pressed_ = 0;
    }
  } else if (cmd == "key") {
    if (!wants(1, 3, "key NAME [shift] [ctrl]") || !needPanel()) return false;
    int code = 0;
    if (!keyCode(w[1], code)) {
      why = "key: " + echoedText(w[1]) +
            " is not a key (a character, Tab, Return, Escape, Delete, Left, Right, Up, Down or space)";
      return false;
    }
    unsigned modifiers = 0;
    for (std::size_t i = 2; i < w.size(); ++i) {
      if (w[i] == "shift")
        modifiers |= Event::shiftHeld;
      else if (w[i] == "ctrl")
        modifiers |= Event::controlHeld;
      else {
        why = "key: " + echoedText(w[i]) + " is not shift or ctrl";
        return false;
      }
    }
    key(code, modifiers);
  } else if (cmd == "type") {
    // The rest of the line, blanks kept, one key a character.
    if (w.size() < 2 || !needPanel()) {
      if (w.size() < 2) why = "usage: type TEXT";
      return false;
    }
    for (wchar_t c : std::wstring(toWide(rest(line, cmd)).str())) key(static_cast<int>(c), 0);
  } else if (cmd == "hover") {
    XY<int> p;
    if (!wants(2, 2, "hover X Y") || !needPanel() || !point(1, p)) return false;
    mouse(Event::mouseMove, p, 0, false);
  } else if (cmd == "wheel") {
    int steps = 0;
    if (!wants(1, 1, "wheel N") || !needPanel()) return false;
    if (!integer(w[1], steps) || steps == 0 || std::abs(steps) > 100) {
      why = echoedText(w[1]) + " is not a number of wheel steps (-100 to 100, not 0)";
      return false;
    }
    for (int i = 0; i < std::abs(steps); ++i) {
      Event e;
      e.type = Event::wheel;
      e.screen = toScreen(mouse_);
      e.wheelSteps = steps > 0 ? 1 : -1;
      GlobManager::dispatch(e);
    }
  } else if (cmd == "pad") {
    int index = 0;
    if (!wants(3, 3, "pad NODE in|out I") || !needPanel()) return false;
    IdStamp id;
    Ux::Ptr<FXGraphViewNode> n;
    if (!IdStamp::fromString(w[1], id) || !(n = session_.view()->findViewRecForNode(id))) {
      why = "no node " + w[1] + " in the view";
      return false;
    }
    if ((w[2] != "in" && w[2] != "out") || !integer(w[3], index) || index < 0 || index > 255) {
      why = "usage: pad NODE in|out I (I a pad number from 0)";
      return false;
    }
    bringIntoView(*n);
    const XY<int> at = w[2] == "in" ? n->getInputPos(static_cast<unsigned long>(index))
                                    : n->getOutputPos(static_cast<unsigned char>(index));
    if (at == XY<int>(-1, -1)) {
      why = "node " + w[1] + " has no " + w[2] + "put pad " + w[3];
      return false;
    }
    mouse(Event::mouseDown, at, Event::left, false);
    mouse(Event::mouseUp, at, Event::left, false);
  } else if (cmd == "node-click") {
    XY<int> at;
    if (!wants(1, 1, "node-click NODE") || !needPanel() || !nodeCentre(w[1], at, why)) return false;
    mouse(Event::mouseDown, at, Event::left, false);
    mouse(Event::mouseUp, at, Event::left, false);
  } else if (cmd == "node-drag") {
    XY<int> at, by;
    if (!wants(3, 4, "node-drag NODE DX DY [ctrl]") || !needPanel() || !nodeCentre(w[1], at, why) || !point(2, by))
      return false;
    const bool ctrl = w.size() == 5 && w[4] == "ctrl";
    if (w.size() == 5 && !ctrl) {
      why = "node-drag: " + echoedText(w[4]) + " is not ctrl";
      return false;
    }
    mouse(Event::mouseDown, at, Event::left, ctrl);
    // A few steps, as a hand would move.
    const int steps = 4;
    for (int i = 1; i <= steps; ++i)
      mouse(Event::mouseMove, {at.x + by.x * i / steps, at.y + by.y * i / steps}, Event::left, ctrl);
    mouse(Event::mouseUp, at + by, Event::left, false);
  } else if (cmd == "message") {
    if (w.size() < 2) {
      why = "usage: message TEXT";
      return false;
    }
    if (!needPanel()) return false;
    const std::string text = restVerbatim(line, cmd);
    const bool handled = session_.panel()->handleMessageEvent(text, nullptr);
    session_.lastMessage = Session::LastMessage{text, handled};
  } else if (cmd == "button") {
    if (!wants(1, 1, "button NAME") || !needPanel()) return false;
    Glob* widget = panelWidget(w[1]);
    if (!widget) {
      why = "the panel has no widget " + echoedText(w[1]) + " (" + widgetNames() + ")";
      return false;
    }
    const XY<int> at = widget->screenPos() + XY<int>{widget->width() / 2, widget->height() / 2};
    // The panel's own answer to what the click sent, not whether it landed.
    SentMessages sent;
    screenClick(at, Event::left);
    if (sent.sent().empty())
      session_.lastMessage = Session::LastMessage{widgetMessage(widget), false};
    else
      session_.lastMessage = Session::LastMessage{sent.sent().front().text.str(), sent.sent().front().handled};
  } else if (cmd == "choose") {
    if (w.size() < 3) {
      why = "usage: choose NAME ENTRY";
      return false;
    }
    if (!needPanel() || !choose(w[1], rest(line, w[1]), why)) return false;
  } else if (cmd == "menu") {
    XY<int> at;
    if (w.size() < 3) {
      why = "usage: menu NODE ENTRY";
      return false;
    }
    if (!needPanel() || !nodeCentre(w[1], at, why)) return false;
    const std::string entry = rest(line, w[1]);
    mouse(Event::mouseDown, at, Event::right, false);
    mouse(Event::mouseUp, at, Event::right, false);
    if (!pickMenuEntry(entry, why)) return false;
  } else if (cmd == "drop" && w.size() >= 6 && w[w.size() - 4] == "wire") {
    // drop TEMPLATE wire FROM TO INPUT: onto the wire, where no node hides it.
    if (!needPanel()) return false;
    const std::size_t n = w.size();
    IdStamp from, to;
    int input = -1;
    if (!IdStamp::fromString(w[n - 3], from) || !IdStamp::fromString(w[n - 2], to) || !integer(w[n - 1], input) ||
        input < 0) {
      why = "usage: drop TEMPLATE wire FROM TO INPUT (two node ids and an input number)";
      return false;
    }
    FXGraphView* view = session_.view();
    Ux::Ptr<FXGraphViewNode> dest = view->findViewRecForNode(to);
    FXGraphViewNode* source = dest ? dest->getInputConnect(input) : nullptr;
    if (!source || source->getNodeID() != from) {
      why = "no wire from " + w[n - 3] + " into input " + w[n - 1] + " of " + w[n - 2];
      return false;
    }
    bringIntoView(*dest);
    XY<int> at;
    if (!view->clearPointOnWire(to, input, at)) {
      why = "the wire from " + w[n - 3] + " to " + w[n - 2] + " is hidden under nodes or outside the view";
      return false;
    }
    const std::size_t first = line.find(w[1], line.find(cmd) + cmd.size());
    std::size_t end = line.rfind(w[n - 1]);
    for (std::size_t k = 2; k <= 4; ++k) end = line.rfind(w[n - k], end - 1);
    if (!dropTemplate(trimmed(line.substr(first, end - first)), at, why)) return false;
  } else if (cmd == "drop") {
    XY<int> at;
    if (w.size() < 3) {
      why = "usage: drop TEMPLATE NODE";
      return false;
    }
    if (!needPanel() || !nodeCentre(w.back(), at, why)) return false;
    const std::string name = line.substr(line.find(w[1], line.find(cmd) + cmd.size()),
                                         line.rfind(w.back()) - line.find(w[1], line.find(cmd) + cmd.size()));
    if (!dropTemplate(trimmed(name), at, why)) return false;
  } else if (cmd == "routing") {
    if (!wants(0, 0, "routing") || !needPanel()) return false;
    // As a person opens it: the view's context menu on empty canvas.
    if (!choose("view", toUTF8(resourceStrW(13053)).str(), why)) return false;
    if (!MultiTrackRoutingView::findFor(session_.focusVob())) {
      why = "routing: the dialogue did not open";
      return false;
    }
  } else if (cmd == "tab") {
    int index = 0;
    if (!wants(1, 1, "tab I") || !needOpen()) return false;
    MultiTrackRoutingView* routing = MultiTrackRoutingView::findFor(session_.focusVob());
    if (!routing || !routing->tabs()) {
      why = routing ? "the routing dialogue has no tabs (one page)" : "the routing dialogue is not open";
      return false;
    }
    if (!integer(w[1], index) || index < 0 || index >= routing->tabs()->pageCount()) {
      why =
          "tab: " + echoedText(w[1]) + " is not a tab (0 to " + std::to_string(routing->tabs()->pageCount() - 1) + ")";
      return false;
    }
    routing->popToTop(false);
    const Glob::PixelBox box = routing->tabs()->tabBox(index);
    screenClick(routing->tabs()->screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2}, Event::left);
  } else if (cmd == "row-click" || cmd == "row-swap") {
    const bool swap = cmd == "row-swap";
    int from = 0, to = 0;
    if (!wants(swap ? 2 : 1, swap ? 2 : 1, swap ? "row-swap I J" : "row-click I") || !needOpen()) return false;
    MultiTrackRoutingView* routing = MultiTrackRoutingView::findFor(session_.focusVob());
    TableWidget* table = routing && routing->audioView() ? routing->audioView()->table() : nullptr;
    if (!table) {
      why = routing ? "the routing dialogue shows no audio table" : "the routing dialogue is not open";
      return false;
    }
    const int rows = table->adaptor().getSize();
    if (!integer(w[1], from) || from < 0 || from >= rows || (swap && (!integer(w[2], to) || to < 0 || to >= rows))) {
      why = cmd + ": rows are numbered from 0 to " + std::to_string(rows - 1);
      return false;
    }
    routing->popToTop(false);
    auto rowCentre = [&](int row) {
      table->scrollToRow(row, false);
      const Glob::PixelBox box = table->getCellBox({row, 0});
      return table->screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2};
    };
    if (!swap) {
      screenClick(rowCentre(from), Event::left);
    } else {
      const XY<int> a = rowCentre(from);
      screenDrag(a, rowCentre(to));
    }
  } else if (cmd == "orientation") {
    if (!wants(1, 1, "orientation LeftToRight|BottomToTop") || !needPanel()) return false;
    if (w[1] != "LeftToRight" && w[1] != "BottomToTop") {
      why = "the orientation is LeftToRight or BottomToTop";
      return false;
    }
    session_.view()->setOrientation(VidRouting::Orientations::fromString(w[1]), true);
  } else if (cmd == "undo" || cmd == "redo") {
    if (!wants(0, 0, cmd.c_str()) || !needOpen()) return false;
    if (cmd == "undo")
      session_.focusVob()->undoRequest();
    else
      session_.focusVob()->redoRequest();
  } else if (cmd == "save") {
    if (!wants(0, 0, "save") || !needOpen() || !session_.save(why)) return false;
  } else if (cmd == "close") {
    if (!wants(0, 0, "close") || !needOpen() || !closePanel(why)) return false;
  } else if (cmd == "reopen") {
    if (!wants(0, 0, "reopen") || !session_.reopen(why)) return false;
  } else if (cmd == "png") {
    if (!wants(1, 1, "png FILE") || !writableOutput(w[1], why)) return false;
    if (!GlobManager::writePNG(w[1])) {
      why = "cannot write " + w[1];
      return false;
    }
  } else if (cmd == "dump") {
    if (!wants(1, 1, "dump FILE") || !writableOutput(w[1], why)) return false;
    if (!writeText(w[1], dumpStateText(session_), why)) return false;
  } else {
    why = "unknown command " + echoedText(cmd);
    return false;
  }
  GlobManager::update();
  return true;
}

} // namespace fxgraph
