#pragma once
#include <string>
#include <vector>

#include "app/Session.h"

namespace fxgraph {

class ScriptRunner;

// One line of a script as a command gets it.
struct ScriptLine {
  std::string text;               // the line, its comment cut off
  std::vector<std::string> words; // words[0] names the command
};

// A command of the script language: its name, the form its usage shows,
// how many words may follow the name (most -1: any number, the rest of the
// line), what must be open for it, and what runs it.
struct ScriptCommand {
  enum class Needs { nothing, edit, tool };
  const char* name;
  const char* usage;
  int least, most;
  Needs needs;
  bool (ScriptRunner::*run)(const ScriptLine&, std::string& why);
};

// Runs the program's script language, one command a line ('#' starts a
// comment), against an open session. Pixel positions are in the graph
// view's own pixel space, the space of the dump's pixel boxes and pads.
// The commands are the table of commands(); usage() lists them.
class ScriptRunner {
public:
  explicit ScriptRunner(Session& session) : session_(session) {}

  // Runs a file; false with "FILE:LINE: reason" at the first bad line.
  bool runFile(const std::string& path, std::string& why);
  // Runs one line; false with the reason.
  bool runLine(const std::string& line, std::string& why);

  static const std::vector<ScriptCommand>& commands();
  // Every command's usage, a line each.
  static std::string usage();

private:
  // The commands (ScriptCommands.cpp), each as its table entry names it.
  bool resize(const ScriptLine&, std::string& why);
  bool time(const ScriptLine&, std::string& why);
  bool tick(const ScriptLine&, std::string& why);
  bool pointer(const ScriptLine&, std::string& why); // press, move, release, click
  bool wheel(const ScriptLine&, std::string& why);
  bool pad(const ScriptLine&, std::string& why);
  bool nodeClick(const ScriptLine&, std::string& why);
  bool nodeDrag(const ScriptLine&, std::string& why);
  bool message(const ScriptLine&, std::string& why);
  bool button(const ScriptLine&, std::string& why);
  bool chooseCommand(const ScriptLine&, std::string& why);
  bool menu(const ScriptLine&, std::string& why);
  bool drop(const ScriptLine&, std::string& why);
  bool routing(const ScriptLine&, std::string& why);
  bool tab(const ScriptLine&, std::string& why);
  bool row(const ScriptLine&, std::string& why); // row-click, row-swap
  bool orientation(const ScriptLine&, std::string& why);
  bool keyCommand(const ScriptLine&, std::string& why);
  bool type(const ScriptLine&, std::string& why);
  bool hover(const ScriptLine&, std::string& why);
  bool undoRedo(const ScriptLine&, std::string& why);
  bool save(const ScriptLine&, std::string& why);
  bool close(const ScriptLine&, std::string& why);
  bool reopen(const ScriptLine&, std::string& why);
  bool png(const ScriptLine&, std::string& why);
  bool dump(const ScriptLine&, std::string& why);
  // Words `at` and `at` + 1 of the line as a pixel position.
  bool pixel(const ScriptLine& line, std::size_t at, XY<int>& p, std::string& why) const;

  bool mouse(int type, XY<int> viewPixel, int button, bool ctrl);
  // A key pressed and let go through the screen's events.
  bool key(int code, unsigned modifiers);
  XY<int> toScreen(XY<int> viewPixel) const;
  bool nodeCentre(const std::string& id, XY<int>& at, std::string& why) const;
  // A press and a release of a button at a screen point; whether the press was taken.
  bool screenClick(XY<int> at, int button);
  // A left-button drag between two screen points, through real events.
  void screenDrag(XY<int> from, XY<int> to);
  // The panel's widget of a dump name ("TidyNodes", "orientation", "view"...).
  Glob* panelWidget(const std::string& name) const;
  std::string widgetNames() const;
  // The message a click on the widget sends, for the dump's lastMessage.
  std::string widgetMessage(Glob* widget) const;
  // Opens the drop-down or context menu of a widget and picks an entry
  // (a number from 0, or an entry's text).
  bool choose(const std::string& name, const std::string& entry, std::string& why);
  // Picks the entry of the menu that is up, by number or text, with a click.
  bool pickMenuEntry(const std::string& entry, std::string& why);
  // Drags a template from the templates list onto a view pixel.
  bool dropTemplate(const std::string& name, XY<int> viewPixel, std::string& why);
  bool closePanel(std::string& why);
  // Scrolls the view to a node that is not wholly in sight.
  void bringIntoView(const FXGraphViewNode& node) const;
  // A view pixel well clear of every node, for clicks on empty canvas.
  XY<int> emptyViewPixel() const;
  // False, with the reason, when an output would replace a file the run
  // reads and keeps (the edit, its objects, the script...).
  bool writableOutput(const std::string& file, std::string& why) const;

  Session& session_;
  std::string scriptPath_; // the file being run, if any
  XY<int> mouse_;          // view pixels
  int pressed_ = 0;        // the button held, 0 for none
};

} // namespace fxgraph
