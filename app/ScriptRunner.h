#pragma once
#include <string>

#include "app/Session.h"

namespace fxgraph {

// Runs the program's script language, one command a line ('#' starts a
// comment), against an open session. Pixel positions are in the graph
// view's own pixel space, the space of the dump's pixel boxes and pads:
//   resize W H            time T               tick MS
//   press X Y [left|right] [ctrl]              move X Y        release X Y
//   click X Y             wheel N              pad NODE in|out I
//   node-click NODE       node-drag NODE DX DY [ctrl]          message TEXT
//   button NAME           choose NAME ENTRY    menu NODE ENTRY drop TEMPLATE NODE
//   routing               tab I                row-click I     row-swap I J
//   orientation LeftToRight|BottomToTop        undo            redo
//   save                  close                reopen          png FILE      dump FILE
class ScriptRunner {
public:
  explicit ScriptRunner(Session& session) : session_(session) {}

  // Runs a file; false with "FILE:LINE: reason" at the first bad line.
  bool runFile(const std::string& path, std::string& why);
  // Runs one line; false with the reason.
  bool runLine(const std::string& line, std::string& why);

private:
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
