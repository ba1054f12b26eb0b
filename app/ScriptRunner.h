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
  XY<int> toScreen(XY<int> viewPixel) const;
  bool nodeCentre(const std::string& id, XY<int>& at, std::string& why) const;

  Session& session_;
  XY<int> mouse_;   // view pixels
  int pressed_ = 0; // the button held, 0 for none
};

} // namespace fxgraph
