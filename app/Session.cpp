#include "app/Session.h"

#include "host/edit/EditFile.h"
#include "host/ui/GlobManager.h"

namespace fxgraph {

Session::~Session() { close(); }

bool Session::open(const std::string& path, XY<int> panelSize, double time, std::string& why) {
  close();
  EditFile::LoadResult loaded = EditFile::load(path);
  if (!loaded.edit) {
    why = loaded.error;
    return false;
  }
  path_ = path;
  panelSize_ = panelSize;
  time_ = time;
  edit_ = loaded.edit;
  warnings_ = loaded.warnings;
  vob_ = std::make_unique<Vob>(edit_, "main");
  vob_->storeCurrentTime(time);
  // The program's one vob both plays and records.
  Vob::setPlayMachine(vob_.get());
  Vob::setRecordMachine(vob_.get());
  panel_ = new GraphViewPanel(vob_.get(), panelSize);
  panel_->setPos(0, 0);
  GlobManager::realize(panel_);
  return true;
}

void Session::close() {
  if (panel_) {
    GlobManager::requestDeletion(panel_);
    GlobManager::processDeletions();
    panel_ = nullptr;
  }
  if (Vob::getPlayMachine() == vob_.get()) Vob::setPlayMachine(nullptr);
  if (Vob::getRecordMachine() == vob_.get()) Vob::setRecordMachine(nullptr);
  vob_.reset();
  if (edit_) edit_->close();
  edit_.reset();
}

bool Session::reopen(std::string& why) {
  if (path_.empty()) {
    why = "nothing was open";
    return false;
  }
  const std::string path = path_;
  const double t = vob_ ? vob_->getCurrentTime() : time_;
  return open(path, panelSize_, t, why);
}

bool Session::save(std::string& why) {
  if (!edit_) {
    why = "no edit is open";
    return false;
  }
  return EditFile::save(edit_, path_, why);
}

} // namespace fxgraph
