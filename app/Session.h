#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "graph_tool/FXGraphTool.h"
#include "host/edit/CompoundEffectMonitor.h"
#include "host/edit/Edit.h"
#include "host/edit/Vob.h"

namespace fxgraph {

// One edit open in the program: the edit file, the edit, its vob (the play
// and the record machine) and the effect graph tool on it, opened as an
// editor opens it: restored from the saved screen layout when that holds
// panels, else through FXGraphTool::show().
class Session {
public:
  Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  // Opens the edit file at a time and shows the tool. `layoutPath` is the
  // screen-layout file (empty: beside the preferences). False with the
  // reason (file, line and cause for a bad edit).
  bool open(const std::string& path, double time, const std::string& layoutPath, std::string& why);
  // Ends the session as the program's exit does: the live panels are written
  // to the layout file, then closed, and the edit with them; nothing of the
  // edit is saved.
  void close();
  // Closes the tool's panel as its close button does.
  bool closePanel(std::string& why);
  // Ends the session and opens the same files again.
  bool reopen(std::string& why);
  bool save(std::string& why);

  bool isOpen() const noexcept { return edit_ != nullptr; }
  // The focused panel: the tool on this session's vob, or null when closed.
  FXGraphTool* panel() const;
  FXGraphView* view() const;
  // Waits for the stills every graph view has asked for, and shows them.
  void finishStills();
  Vob* vob() const noexcept { return vob_.get(); }
  const EditPtr& edit() const noexcept { return edit_; }
  const std::string& path() const noexcept { return path_; }
  const std::string& layoutPath() const noexcept { return layoutPath_; }
  // Warnings of the last open (a missing or damaged sidecar or layout).
  const std::vector<std::string>& warnings() const noexcept { return warnings_; }

  // The last message, button or menu choice sent to the panel, for the dump.
  struct LastMessage {
    std::string text;
    bool handled = false;
  };
  std::optional<LastMessage> lastMessage;

private:
  void restoreOrShowPanels();
  void writeLayout();

  std::string path_;
  std::string layoutPath_;
  double time_ = 0;
  EditPtr edit_;
  std::unique_ptr<Vob> vob_;
  // The edit as the compound effect whose tracks are its channels, for the
  // routing dialogue.
  std::unique_ptr<CompoundEffectMonitor> monitor_;
  std::vector<std::string> warnings_;
};

// The screen-layout file beside the preferences file.
std::string defaultLayoutPath();

} // namespace fxgraph
