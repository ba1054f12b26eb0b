// The script language's commands: one table of name, usage, how many words
// may follow, what must be open, and the handler; the usage the program
// prints and every "usage:" a bad line gets come from it.
//
// Map
//   the table ............ ScriptRunner::commands, usage, runLine
//   the screen and time .. resize, time, tick
//   the pointer and keys . press, move, release, click, key, type, hover, wheel
//   nodes and pads ....... pad, node-click, node-drag
//   the panel ............ message, button, choose, menu, drop, orientation
//   routing .............. routing, tab, row-click, row-swap
//   the edit and files ... undo, redo, save, close, reopen, png, dump
#include <algorithm>

#include "app/ScriptRunner.h"
#include "app/ScriptText.h"
#include "app/StateDump.h"
#include "graph_view/TemplateDrops.h"
#include "host/config/Resources.h"
#include "host/core/EchoedText.h"
#include "host/stream/AtomicFiles.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "host/ui/SentMessages.h"
#include "routing/MultiTrackRoutingView.h"

namespace fxgraph {

using namespace scripttext;
using Needs = ScriptCommand::Needs;

// -- the table ------------------------------------------------------------------

const std::vector<ScriptCommand>& ScriptRunner::commands() {
  // most -1: the rest of the line, however many words.
  static const std::vector<ScriptCommand> table = {
      {"resize", "resize W H", 2, 2, Needs::nothing, &ScriptRunner::resize},
      {"time", "time T", 1, 1, Needs::edit, &ScriptRunner::time},
      {"tick", "tick MS", 1, 1, Needs::nothing, &ScriptRunner::tick},
      {"press", "press X Y [left|right] [ctrl]", 2, 4, Needs::tool, &ScriptRunner::pointer},
      {"move", "move X Y", 2, 2, Needs::tool, &ScriptRunner::pointer},
      {"release", "release X Y", 2, 2, Needs::tool, &ScriptRunner::pointer},
      {"click", "click X Y", 2, 2, Needs::tool, &ScriptRunner::pointer},
      {"wheel", "wheel N", 1, 1, Needs::tool, &ScriptRunner::wheel},
      {"pad", "pad NODE in|out I", 3, 3, Needs::tool, &ScriptRunner::pad},
      {"node-click", "node-click NODE", 1, 1, Needs::tool, &ScriptRunner::nodeClick},
      {"node-drag", "node-drag NODE DX DY [ctrl]", 3, 4, Needs::tool, &ScriptRunner::nodeDrag},
      {"message", "message TEXT", 1, -1, Needs::tool, &ScriptRunner::message},
      {"button", "button NAME", 1, 1, Needs::tool, &ScriptRunner::button},
      {"choose", "choose NAME ENTRY", 2, -1, Needs::tool, &ScriptRunner::chooseCommand},
      {"menu", "menu NODE ENTRY", 2, -1, Needs::tool, &ScriptRunner::menu},
      {"drop", "drop TEMPLATE NODE | drop TEMPLATE wire FROM TO INPUT", 2, -1, Needs::tool, &ScriptRunner::drop},
      {"routing", "routing", 0, 0, Needs::tool, &ScriptRunner::routing},
      {"tab", "tab I", 1, 1, Needs::edit, &ScriptRunner::tab},
      {"row-click", "row-click I", 1, 1, Needs::edit, &ScriptRunner::row},
      {"row-swap", "row-swap I J", 2, 2, Needs::edit, &ScriptRunner::row},
      {"orientation", "orientation LeftToRight|BottomToTop", 1, 1, Needs::tool, &ScriptRunner::orientation},
      {"key", "key NAME [shift] [ctrl]", 1, 3, Needs::tool, &ScriptRunner::keyCommand},
      {"type", "type TEXT", 1, -1, Needs::tool, &ScriptRunner::type},
      {"hover", "hover X Y", 2, 2, Needs::tool, &ScriptRunner::hover},
      {"undo", "undo", 0, 0, Needs::edit, &ScriptRunner::undoRedo},
      {"redo", "redo", 0, 0, Needs::edit, &ScriptRunner::undoRedo},
      {"save", "save", 0, 0, Needs::edit, &ScriptRunner::save},
      {"close", "close", 0, 0, Needs::edit, &ScriptRunner::close},
      {"reopen", "reopen", 0, 0, Needs::nothing, &ScriptRunner::reopen},
      {"png", "png FILE", 1, 1, Needs::nothing, &ScriptRunner::png},
      {"dump", "dump FILE", 1, 1, Needs::nothing, &ScriptRunner::dump},
  };
  return table;
}

std::string ScriptRunner::usage() {
  std::string text;
  for (const ScriptCommand& c : commands()) text += std::string("  ") + c.usage + "\n";
  return text;
}

bool ScriptRunner::runLine(const std::string& raw, std::string& why) {
  ScriptLine line;
  line.text = raw.substr(0, raw.find('#'));
  line.words = words(line.text);
  if (line.words.empty()) return true;
  const std::string& name = line.words[0];
  const auto& table = commands();
  const auto command = std::find_if(table.begin(), table.end(), [&](const ScriptCommand& c) { return name == c.name; });
  if (command == table.end()) {
    why = "unknown command " + echoedText(name);
    return false;
  }
  const int given = static_cast<int>(line.words.size()) - 1;
  if (given < command->least || (command->most >= 0 && given > command->most)) {
    why = std::string("usage: ") + command->usage;
    return false;
  }
  if (command->needs != Needs::nothing && !session_.isOpen()) {
    why = name + ": no edit is open (after close, reopen first)";
    return false;
  }
  if (command->needs == Needs::tool && !session_.panel()) {
    why = name + ": the tool is closed (reopen first)";
    return false;
  }
  if (!(this->*command->run)(line, why)) return false;
  GlobManager::update();
  return true;
}

bool ScriptRunner::pixel(const ScriptLine& line, std::size_t at, XY<int>& p, std::string& why) const {
  const std::vector<std::string>& w = line.words;
  if (integer(w[at], p.x) && integer(w[at + 1], p.y)) return true;
  why = echoedText(w[at] + " " + w[at + 1]) + " is not a pixel position (two whole numbers)";
  return false;
}

// -- the screen and time --------------------------------------------------------

bool ScriptRunner::resize(const ScriptLine& line, std::string& why) {
  XY<int> size;
  if (!pixel(line, 1, size, why)) return false;
  const int most = GlobManager::largestScreenSide;
  if (size.x < 64 || size.y < 64 || size.x > most || size.y > most) {
    why = "the screen must be between 64 and " + std::to_string(most) + " pixels a side";
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
  return true;
}

bool ScriptRunner::time(const ScriptLine& line, std::string& why) {
  double t = 0;
  if (!number(line.words[1], t) || t < 0) {
    why = echoedText(line.words[1]) + " is not a time (seconds, 0 or more)";
    return false;
  }
  session_.focusVob()->setCurrentTime(t);
  return true;
}

bool ScriptRunner::tick(const ScriptLine& line, std::string& why) {
  int ms = 0;
  if (!integer(line.words[1], ms) || ms < 0 || ms > 3600000) {
    why = echoedText(line.words[1]) + " is not a number of milliseconds (0 to 3600000)";
    return false;
  }
  // The clock moves in the loop's own steps, a tick at each.
  for (int done = 0; done < ms; done += GlobManager::tickMilliseconds) {
    HostClock::advance(static_cast<uint64_t>(std::min(GlobManager::tickMilliseconds, ms - done)));
    if (GlobManager::wantsTicks()) GlobManager::tick();
  }
  return true;
}

// -- the pointer and keys -------------------------------------------------------

bool ScriptRunner::pointer(const ScriptLine& line, std::string& why) {
  const std::vector<std::string>& w = line.words;
  const std::string& cmd = w[0];
  XY<int> p;
  if (!pixel(line, 1, p, why)) return false;
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
  return true;
}

bool ScriptRunner::keyCommand(const ScriptLine& line, std::string& why) {
  const std::vector<std::string>& w = line.words;
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
  return true;
}

bool ScriptRunner::type(const ScriptLine& line, std::string&) {
  // The rest of the line, blanks kept, one key a character.
  for (wchar_t c : std::wstring(toWide(rest(line.text, line.words[0])).str())) key(static_cast<int>(c), 0);
  return true;
}

bool ScriptRunner::hover(const ScriptLine& line, std::string& why) {
  XY<int> p;
  if (!pixel(line, 1, p, why)) return false;
  mouse(Event::mouseMove, p, 0, false);
  return true;
}

bool ScriptRunner::wheel(const ScriptLine& line, std::string& why) {
  int steps = 0;
  if (!integer(line.words[1], steps) || steps == 0 || std::abs(steps) > 100) {
    why = echoedText(line.words[1]) + " is not a number of wheel steps (-100 to 100, not 0)";
    return false;
  }
  for (int i = 0; i < std::abs(steps); ++i) {
    Event e;
    e.type = Event::wheel;
    e.screen = toScreen(mouse_);
    e.wheelSteps = steps > 0 ? 1 : -1;
    GlobManager::dispatch(e);
  }
  return true;
}

// -- nodes and pads -------------------------------------------------------------

bool ScriptRunner::pad(const ScriptLine& line, std::string& why) {
  const std::vector<std::string>& w = line.words;
  int index = 0;
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
  return true;
}

bool ScriptRunner::nodeClick(const ScriptLine& line, std::string& why) {
  XY<int> at;
  if (!nodeCentre(line.words[1], at, why)) return false;
  mouse(Event::mouseDown, at, Event::left, false);
  mouse(Event::mouseUp, at, Event::left, false);
  return true;
}

bool ScriptRunner::nodeDrag(const ScriptLine& line, std::string& why) {
  const std::vector<std::string>& w = line.words;
  XY<int> at, by;
  if (!nodeCentre(w[1], at, why) || !pixel(line, 2, by, why)) return false;
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
  return true;
}

// -- the panel ------------------------------------------------------------------

bool ScriptRunner::message(const ScriptLine& line, std::string&) {
  const std::string text = restVerbatim(line.text, line.words[0]);
  const bool handled = session_.panel()->handleMessageEvent(text, nullptr);
  session_.lastMessage = Session::LastMessage{text, handled};
  return true;
}

bool ScriptRunner::button(const ScriptLine& line, std::string& why) {
  Glob* widget = panelWidget(line.words[1]);
  if (!widget) {
    why = "the panel has no widget " + echoedText(line.words[1]) + " (" + widgetNames() + ")";
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
  return true;
}

bool ScriptRunner::chooseCommand(const ScriptLine& line, std::string& why) {
  return choose(line.words[1], rest(line.text, line.words[1]), why);
}

bool ScriptRunner::menu(const ScriptLine& line, std::string& why) {
  XY<int> at;
  if (!nodeCentre(line.words[1], at, why)) return false;
  const std::string entry = rest(line.text, line.words[1]);
  mouse(Event::mouseDown, at, Event::right, false);
  mouse(Event::mouseUp, at, Event::right, false);
  return pickMenuEntry(entry, why);
}

bool ScriptRunner::drop(const ScriptLine& line, std::string& why) {
  const std::vector<std::string>& w = line.words;
  const std::string& cmd = w[0];
  const std::size_t n = w.size();
  if (n >= 6 && w[n - 4] == "wire") {
    // drop TEMPLATE wire FROM TO INPUT: onto the wire, where no node hides it.
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
    if (!view->drops().clearPointOnWire(to, input, at)) {
      why = "the wire from " + w[n - 3] + " to " + w[n - 2] + " is hidden under nodes or outside the view";
      return false;
    }
    const std::size_t first = line.text.find(w[1], line.text.find(cmd) + cmd.size());
    std::size_t end = line.text.rfind(w[n - 1]);
    for (std::size_t k = 2; k <= 4; ++k) end = line.text.rfind(w[n - k], end - 1);
    return dropTemplate(trimmed(line.text.substr(first, end - first)), at, why);
  }
  XY<int> at;
  if (!nodeCentre(w.back(), at, why)) return false;
  const std::size_t first = line.text.find(w[1], line.text.find(cmd) + cmd.size());
  return dropTemplate(trimmed(line.text.substr(first, line.text.rfind(w.back()) - first)), at, why);
}

bool ScriptRunner::orientation(const ScriptLine& line, std::string& why) {
  const std::string& o = line.words[1];
  if (o != "LeftToRight" && o != "BottomToTop") {
    why = "the orientation is LeftToRight or BottomToTop";
    return false;
  }
  session_.view()->setOrientation(VidRouting::Orientations::fromString(o), true);
  return true;
}

// -- routing --------------------------------------------------------------------

bool ScriptRunner::routing(const ScriptLine&, std::string& why) {
  // As a person opens it: the view's context menu on empty canvas.
  if (!choose("view", toUTF8(resourceStrW(13053)).str(), why)) return false;
  if (!MultiTrackRoutingView::findFor(session_.focusVob())) {
    why = "routing: the dialogue did not open";
    return false;
  }
  return true;
}

bool ScriptRunner::tab(const ScriptLine& line, std::string& why) {
  int index = 0;
  MultiTrackRoutingView* routing = MultiTrackRoutingView::findFor(session_.focusVob());
  if (!routing || !routing->tabs()) {
    why = routing ? "the routing dialogue has no tabs (one page)" : "the routing dialogue is not open";
    return false;
  }
  if (!integer(line.words[1], index) || index < 0 || index >= routing->tabs()->pageCount()) {
    why = "tab: " + echoedText(line.words[1]) + " is not a tab (0 to " +
          std::to_string(routing->tabs()->pageCount() - 1) + ")";
    return false;
  }
  routing->popToTop(false);
  const Glob::PixelBox box = routing->tabs()->tabBox(index);
  screenClick(routing->tabs()->screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2}, Event::left);
  return true;
}

bool ScriptRunner::row(const ScriptLine& line, std::string& why) {
  const std::vector<std::string>& w = line.words;
  const bool swap = w[0] == "row-swap";
  int from = 0, to = 0;
  MultiTrackRoutingView* routing = MultiTrackRoutingView::findFor(session_.focusVob());
  TableWidget* table = routing && routing->audioView() ? routing->audioView()->table() : nullptr;
  if (!table) {
    why = routing ? "the routing dialogue shows no audio table" : "the routing dialogue is not open";
    return false;
  }
  const int rows = table->adaptor().getSize();
  if (!integer(w[1], from) || from < 0 || from >= rows || (swap && (!integer(w[2], to) || to < 0 || to >= rows))) {
    why = w[0] + ": rows are numbered from 0 to " + std::to_string(rows - 1);
    return false;
  }
  routing->popToTop(false);
  auto rowCentre = [&](int r) {
    table->scrollToRow(r, false);
    const Glob::PixelBox box = table->getCellBox({r, 0});
    return table->screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2};
  };
  if (!swap) {
    screenClick(rowCentre(from), Event::left);
  } else {
    const XY<int> a = rowCentre(from);
    screenDrag(a, rowCentre(to));
  }
  return true;
}

// -- the edit and files ---------------------------------------------------------

bool ScriptRunner::undoRedo(const ScriptLine& line, std::string&) {
  // As the tool's own undo: the screen is drawn once, when the step is done.
  Glib::UpdateDeferrer once;
  if (line.words[0] == "undo")
    session_.focusVob()->undoRequest();
  else
    session_.focusVob()->redoRequest();
  return true;
}

bool ScriptRunner::save(const ScriptLine&, std::string& why) { return session_.save(why); }

bool ScriptRunner::close(const ScriptLine&, std::string& why) { return closePanel(why); }

bool ScriptRunner::reopen(const ScriptLine&, std::string& why) { return session_.reopen(why); }

bool ScriptRunner::png(const ScriptLine& line, std::string& why) {
  const std::string& file = line.words[1];
  if (!writableOutput(file, why)) return false;
  if (GlobManager::writePNG(file)) return true;
  why = "cannot write " + file;
  return false;
}

bool ScriptRunner::dump(const ScriptLine& line, std::string& why) {
  const std::string& file = line.words[1];
  return writableOutput(file, why) && writeFileAtomically(file, dumpStateText(session_), why);
}

} // namespace fxgraph
