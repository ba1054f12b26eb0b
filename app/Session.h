#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/UserFiles.h"
#include "graph_tool/FXGraphTool.h"
#include "host/config/LayoutFile.h"
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

  // Opens the edit file and shows the tool, at `time` when one is given,
  // else where the saved layout's tool on this edit was, else at 0.
  // `layoutPath` is the screen-layout file (empty: beside the preferences).
  // False with the reason (file, line and cause for a bad edit; a layout
  // file named here that is not one, which is never written over).
  bool open(const std::string& path, std::optional<double> time, const std::string& layoutPath, std::string& why);
  // Ends the session as the program's exit does: the layout file gets the
  // live panels, beside the records the session did not restore, kept as
  // they were; then the panels close, and the edit with them; nothing of
  // the edit is saved.
  void close();
  // Closes the tool's panel as its close button does.
  bool closePanel(std::string& why);
  // Ends the session and opens the same files again.
  bool reopen(std::string& why);
  bool save(std::string& why);

  bool isOpen() const noexcept { return edit_ != nullptr; }
  // The focused panel: the tool on this session's vob, else the topmost
  // tool on the screen (one the layout restored onto another vob group or
  // a numbered vob); null when none is open.
  FXGraphTool* panel() const;
  // The vob that script commands act on: the focused panel's, else the
  // session's own.
  Vob* focusVob() const;
  FXGraphView* view() const;
  // Waits for the stills every graph view has asked for, and shows them.
  void finishStills();
  Vob* vob() const noexcept { return vob_.get(); }
  const EditPtr& edit() const noexcept { return edit_; }
  const std::string& path() const noexcept { return path_; }
  const std::string& layoutPath() const noexcept { return layoutPath_; }
  // Warnings of the last open (a missing or damaged sidecar or layout).
  const std::vector<std::string>& warnings() const noexcept { return warnings_; }
  // What of the settings is not on disk, a line each, for the program's
  // exit to report: the screen layout where a close or a reopen could not
  // write it, the preferences where their last write failed (a file that is
  // not one was told of as the session opened, and is not told again).
  std::vector<std::string> unsavedSettings() const;
  // Whether the session writes the screen layout when it ends (false when
  // the layout file is not one, or is the preferences file).
  bool keepsLayout() const noexcept { return keepsLayout_; }
  // The files of the user's that the session reads and keeps: the edit, its
  // objects, the preferences and the screen layout.
  UserFiles userFiles() const;

  // The last message, button or menu choice sent to the panel, for the dump.
  struct LastMessage {
    std::string text;
    bool handled = false;
  };
  std::optional<LastMessage> lastMessage;

private:
  void refreshStatus() const;
  // One glob of the layout file as the session found it, and the panel it
  // restored from it (null: not restored, so written back as it was).
  struct LayoutSlot {
    LayoutFile::SavedGlob saved;
    FXGraphTool* restored = nullptr;
  };
  // Whether a layout record is a tool panel that the session restores: one
  // that would show this edit, on a vob that has no tool yet.
  bool restoresHere(const configb& record) const;
  void restoreOrShowPanels(std::vector<LayoutFile::SavedGlob> globs, bool timeGiven);
  void writeLayout();

  std::string path_;       // where the edit is saved
  std::string openedFrom_; // what the user opened: the edit, or a timeline
  std::string layoutPath_;
  // The layout path as given to open (empty for the default), for reopen.
  std::string layoutGiven_;
  bool keepsLayout_ = true;
  std::vector<LayoutSlot> layout_;
  std::vector<std::string> saveFailures_;
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
