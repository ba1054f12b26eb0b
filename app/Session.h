#pragma once
#include <memory>
#include <string>
#include <vector>

#include "app/GraphViewPanel.h"
#include "host/edit/Edit.h"
#include "host/edit/Vob.h"

namespace fxgraph {

// One edit open in the program: the edit file, the edit, its vob and the
// panel with the graph view, on the one screen.
class Session {
public:
  Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  // Opens the edit file and shows it in a panel of the given size at (0, 0).
  // False with the reason (file, line and cause for a bad edit).
  bool open(const std::string& path, XY<int> panelSize, double time, std::string& why);
  // Closes the panel and the edit; nothing is saved.
  void close();
  // Opens the same file again, as it was last saved.
  bool reopen(std::string& why);
  bool save(std::string& why);

  bool isOpen() const noexcept { return panel_ != nullptr; }
  GraphViewPanel* panel() const noexcept { return panel_; }
  FXGraphView* view() const noexcept { return panel_ ? panel_->view() : nullptr; }
  Vob* vob() const noexcept { return vob_.get(); }
  const EditPtr& edit() const noexcept { return edit_; }
  const std::string& path() const noexcept { return path_; }
  // Warnings of the last open (a missing or damaged sidecar).
  const std::vector<std::string>& warnings() const noexcept { return warnings_; }

private:
  std::string path_;
  XY<int> panelSize_;
  double time_ = 0;
  EditPtr edit_;
  std::unique_ptr<Vob> vob_;
  GraphViewPanel* panel_ = nullptr; // owned by the screen
  std::vector<std::string> warnings_;
};

} // namespace fxgraph
