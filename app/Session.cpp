#include "app/Session.h"

#include <filesystem>

#include "host/config/EditorPreferences.h"
#include "host/config/LayoutFile.h"
#include "host/edit/EditFile.h"
#include "host/notify/Log.h"
#include "host/ui/GlobManager.h"

namespace fxgraph {
namespace {

// A logged message as one line: no line ends, inside or after.
std::string trimmedLine(std::string m) {
  for (char& c : m)
    if (c == '\n' || c == '\r') c = ' ';
  while (!m.empty() && m.back() == ' ') m.pop_back();
  return m;
}

} // namespace

std::string defaultLayoutPath() {
  const std::filesystem::path prefsFile = prefs().path();
  return (prefsFile.parent_path() / "layout").string();
}

Session::~Session() { close(); }

bool Session::open(const std::string& path, double time, const std::string& layoutPath, std::string& why) {
  close();
  EditFile::LoadResult loaded = EditFile::load(path);
  if (!loaded.edit) {
    why = loaded.error;
    return false;
  }
  path_ = path;
  layoutPath_ = layoutPath.empty() ? defaultLayoutPath() : layoutPath;
  time_ = time;
  edit_ = loaded.edit;
  warnings_ = loaded.warnings;
  vob_ = std::make_unique<Vob>(edit_, "main");
  vob_->storeCurrentTime(time);
  // The program's one vob both plays and records.
  Vob::setPlayMachine(vob_.get());
  Vob::setRecordMachine(vob_.get());
  monitor_ = std::make_unique<CompoundEffectMonitor>(vob_.get());
  {
    // What the tool finds wrong with the edit's stored positions as it
    // opens is told with the edit's own warnings.
    LogChannel::Capture log(Log::channel());
    restoreOrShowPanels();
    for (const std::string& m : log.messages())
      if (m.starts_with("Position records:")) warnings_.push_back(EditFile::sidecarPath(path) + ": " + trimmedLine(m));
  }
  return true;
}

void Session::restoreOrShowPanels() {
  std::vector<configb> records;
  std::string why;
  if (!LayoutFile::load(layoutPath_, records, why)) warnings_.push_back(why + "; the tool opens afresh");
  bool restored = false;
  for (const configb& record : records) {
    if (record.getText("TYPE") != FXGraphTool::getUITypeString()) continue;
    GlobCreationInfo info;
    info.size = {record.getInt("W"), record.getInt("H")};
    info.border = Border{0, 0, 15};
    info.config = &record;
    // Where it was, kept on the screen.
    const XY<int> size = info.size.x > 0 && info.size.y > 0 ? info.size : FXGraphTool::calcSize();
    Glob::setupRootPos(GlobManager::getSafePosForGlob(Canvas(), {record.getInt("X"), record.getInt("Y")}, size));
    if (FXGraphTool* panel = FXGraphTool::make(&info)) {
      GlobManager::realize(panel);
      restored = true;
    }
  }
  if (!restored) FXGraphTool::show();
}

FXGraphTool* Session::panel() const { return vob_ ? FXGraphTool::findPanelFor(vob_.get()) : nullptr; }

FXGraphView* Session::view() const {
  FXGraphTool* p = panel();
  return p ? p->getView() : nullptr;
}

void Session::finishStills() {
  for (FXGraphTool* panel : FXGraphTool::allPanels_.as<FXGraphTool>())
    if (FXGraphView* v = panel->getView()) v->finishStills();
  GlobManager::update();
}

void Session::writeLayout() {
  std::vector<configb> records;
  for (const FXGraphTool* panel : FXGraphTool::allPanels_.as<FXGraphTool>()) {
    configb record;
    panel->dump(record);
    records.push_back(std::move(record));
  }
  std::string why;
  if (!LayoutFile::save(layoutPath_, records, why)) warnings_.push_back("the screen layout was not saved: " + why);
}

void Session::close() {
  if (!edit_) return;
  writeLayout();
  // Every panel goes, as on exit; each destructor writes its preferences.
  for (FXGraphTool* panel : FXGraphTool::allPanels_.as<FXGraphTool>()) GlobManager::requestDeletion(panel);
  GlobManager::processDeletions();
  // Other panels of the session (viewers, parameters, messages) go too.
  for (Glob* root : std::vector<Glob*>(GlobManager::roots())) GlobManager::requestDeletion(root);
  GlobManager::processDeletions();
  if (Vob::getPlayMachine() == vob_.get()) Vob::setPlayMachine(nullptr);
  if (Vob::getRecordMachine() == vob_.get()) Vob::setRecordMachine(nullptr);
  monitor_.reset();
  vob_.reset();
  VobManager::closeAll();
  edit_->close();
  edit_.reset();
}

bool Session::closePanel(std::string& why) {
  FXGraphTool* p = panel();
  if (!p) {
    why = "the tool is not open";
    return false;
  }
  GlobManager::requestDeletion(p);
  GlobManager::processDeletions();
  return true;
}

bool Session::reopen(std::string& why) {
  if (path_.empty()) {
    why = "nothing was open";
    return false;
  }
  const std::string path = path_, layout = layoutPath_;
  const double t = vob_ ? vob_->getCurrentTime() : time_;
  close();
  return open(path, t, layout, why);
}

bool Session::save(std::string& why) {
  if (!edit_) {
    why = "no edit is open";
    return false;
  }
  return EditFile::save(edit_, path_, why);
}

} // namespace fxgraph
