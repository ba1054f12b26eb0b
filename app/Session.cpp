#include "app/Session.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "app/SettingsCheck.h"
#include "graph_tool/PanelStatus.h"
#include "graph_view/ViewStills.h"
#include "host/config/EditorPreferences.h"
#include "host/config/LayoutFile.h"
#include "host/edit/EditFile.h"
#include "host/edit/EditOpening.h"
#include "host/edit/EditSaving.h"
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

// Reads the screen layout. A file that is not one, or is the preferences
// file, is the user's and is never written: named by hand it stops the
// start (false, with the reason); found in its default place it is kept
// aside under a name of its own and a new layout begins, or, when it cannot
// be moved, it is left alone and the session keeps no layout. Each is said
// in a warning.
bool readLayout(const std::string& layout, bool namedByHand, std::vector<LayoutFile::SavedGlob>& globs, bool& keeps,
                std::vector<std::string>& warnings, std::string& why) {
  std::string refusal, aside, failure;
  const bool isPreferences = sameFile(layout, prefs().path());
  if (isPreferences)
    refusal = layout + ": the preferences file, not a layout file";
  else if (LayoutFile::load(layout, globs, refusal))
    return true;
  globs.clear();
  if (namedByHand) {
    why = refusal + "; nothing is written to it";
    return false;
  }
  if (!isPreferences && keepAside(layout, aside, failure)) {
    warnings.push_back(refusal + "; kept aside as " + aside + ", and a new layout is begun");
    return true;
  }
  warnings.push_back(refusal + "; it is left as it is" + (failure.empty() ? "" : " (" + failure + ")") +
                     ", and the screen layout is not saved");
  keeps = false;
  return true;
}

// The preferences as the tool will read them. The default file, if it is
// not a preferences file, is kept aside and new preferences begin; values
// out of range are mended. Each is said in a warning.
void readPreferences(std::vector<std::string>& warnings) {
  EditorPreferences& store = prefs();
  if (const std::string refusal = store.refusal(); !refusal.empty()) {
    std::string aside, failure;
    if (store.path() == defaultPreferencesFile() && keepAside(store.path(), aside, failure)) {
      store.open(store.path(), true);
      warnings.push_back(refusal + "; kept aside as " + aside + ", and new preferences are begun");
    } else {
      warnings.push_back(refusal + "; it is left as it is" + (failure.empty() ? "" : " (" + failure + ")") +
                         ", and the preferences are not saved");
    }
  }
  for (std::string& line : SettingsCheck::mendPreferences(store)) warnings.push_back(std::move(line));
}

} // namespace

std::string defaultLayoutPath() {
  const std::filesystem::path prefsFile = prefs().path();
  return (prefsFile.parent_path() / "layout").string();
}

Session::~Session() { close(); }

bool Session::open(const std::string& path, std::optional<double> time, const std::string& layoutPath,
                   std::string& why) {
  close();
  const std::string layout = layoutPath.empty() ? defaultLayoutPath() : layoutPath;
  std::vector<std::string> warnings;
  std::vector<LayoutFile::SavedGlob> globs;
  bool keepsLayout = true;
  if (!readLayout(layout, !layoutPath.empty(), globs, keepsLayout, warnings, why)) return false;
  readPreferences(warnings);
  EditOpening::Opened opened = EditOpening::open(path);
  EditFile::LoadResult& loaded = opened.loaded;
  if (!loaded.edit) {
    why = loaded.error;
    return false;
  }
  // An edit read from a timeline is saved beside it, never into it.
  path_ = opened.saveTo;
  openedFrom_ = path;
  layoutPath_ = layout;
  layoutGiven_ = layoutPath;
  keepsLayout_ = keepsLayout;
  time_ = time.value_or(0);
  edit_ = loaded.edit;
  warnings_ = std::move(warnings);
  warnings_.insert(warnings_.end(), loaded.warnings.begin(), loaded.warnings.end());
  vob_ = std::make_unique<Vob>(edit_, "main");
  vob_->storeCurrentTime(time_);
  // The program's one vob both plays and records.
  Vob::setPlayMachine(vob_.get());
  Vob::setRecordMachine(vob_.get());
  monitor_ = std::make_unique<CompoundEffectMonitor>(vob_.get());
  // The tool's ctrl+S and its question before closing save where the
  // script's save does.
  EditSaving::install([this](const EditPtr& edit, std::string& reason) {
    if (!(edit == edit_)) {
      reason = "that edit was not opened from a file";
      return false;
    }
    return save(reason);
  });
  {
    // What the tool finds wrong with the edit's stored positions as it
    // opens is told with the edit's own warnings.
    LogChannel::Capture log(Log::channel());
    restoreOrShowPanels(std::move(globs), time.has_value());
    for (const std::string& m : log.messages())
      if (m.starts_with("Position records:")) warnings_.push_back(EditFile::sidecarPath(path) + ": " + trimmedLine(m));
  }
  // Records the tool made for the nodes as it first laid them out are no
  // change of the user's: the edit opens with nothing to save.
  edit_->setDirty(false);
  refreshStatus();
  return true;
}

bool Session::restoresHere(const configb& record) const {
  if (record.getText("TYPE") != FXGraphTool::getUITypeString()) return false;
  // As the tool's restore finds its vob: the group it names, when open,
  // else a new group on the live edit of the record's cookie. A vob has
  // one tool at most.
  Vob* group = record.has("VOB_GROUP_ID") ? VobManager::open(nullptr, record.getUnsigned("VOB_GROUP_ID"))
                                          : VobManager::open(nullptr, record.getText("GROUPID"));
  if (group) return group->getEdit() == edit_ && !FXGraphTool::findPanelFor(group);
  return record.getCookie("EDIT_COOKIE") == edit_->getCookie();
}

void Session::restoreOrShowPanels(std::vector<LayoutFile::SavedGlob> globs, bool timeGiven) {
  layout_.clear();
  auto where = [this](std::size_t index) { return layoutPath_ + ": record " + std::to_string(index + 1); };
  // The edit opens where its tool was when the layout was saved: the
  // record that goes back onto this session's vob says when.
  if (!timeGiven)
    for (std::size_t i = 0; i < globs.size(); ++i) {
      configb& r = globs[i].record;
      if (r.getText("TYPE") != FXGraphTool::getUITypeString() || r.has("VOB_GROUP_ID") ||
          r.getText("GROUPID") != vob_->getName() || r.getCookie("EDIT_COOKIE") != edit_->getCookie())
        continue;
      for (std::string& line : SettingsCheck::mendRecord(r, where(i))) warnings_.push_back(std::move(line));
      if (r.has("CURRENT_TIME")) vob_->storeCurrentTime(r.getDouble("CURRENT_TIME", 0));
      break;
    }
  // A layout restores a few tools; a file with thousands of records for
  // this edit would cost time for panels nobody can use.
  constexpr std::size_t mostPanels = 64;
  std::size_t offered = 0;
  bool shown = false;
  for (std::size_t i = 0; i < globs.size(); ++i) {
    LayoutSlot slot{std::move(globs[i]), nullptr};
    configb& record = slot.saved.record;
    // A panel for another edit, or of another kind, is not this session's
    // to restore: it goes back into the layout as it was.
    if (restoresHere(record) && ++offered <= mostPanels) {
      for (std::string& line : SettingsCheck::mendRecord(record, where(i))) warnings_.push_back(std::move(line));
      GlobCreationInfo info;
      info.size = {record.getInt("W"), record.getInt("H")};
      info.border = Border{0, 0, 15};
      info.config = &record;
      // Where it was, kept on the screen.
      const XY<int> size = info.size.x > 0 && info.size.y > 0 ? info.size : FXGraphTool::calcSize();
      Glob::setupRootPos(GlobManager::getSafePosForGlob(Canvas(), {record.getInt("X"), record.getInt("Y")}, size));
      if (FXGraphTool* panel = FXGraphTool::make(&info)) {
        GlobManager::realize(panel);
        slot.restored = panel;
        shown = shown || (panel->getVob() && panel->getVob()->getEdit() == edit_);
      }
    }
    layout_.push_back(std::move(slot));
  }
  if (offered > mostPanels)
    warnings_.push_back(layoutPath_ + ": " + std::to_string(offered) + " tool panels for this edit; the first " +
                        std::to_string(mostPanels) + " are restored, the others kept as they were");
  // The edit opened always gets its tool.
  if (!shown) FXGraphTool::show();
}

FXGraphTool* Session::panel() const {
  if (!vob_) return nullptr;
  if (FXGraphTool* own = FXGraphTool::findPanelFor(vob_.get())) return own;
  const std::vector<Glob*>& roots = GlobManager::roots();
  for (auto it = roots.rbegin(); it != roots.rend(); ++it)
    if (auto* tool = dynamic_cast<FXGraphTool*>(*it)) return tool;
  return nullptr;
}

Vob* Session::focusVob() const {
  const FXGraphTool* p = panel();
  return p && p->getVob() ? p->getVob() : vob_.get();
}

std::vector<std::string> Session::unsavedSettings() const {
  std::vector<std::string> lines = saveFailures_;
  if (const std::string unsaved = prefs().unsaved(); !unsaved.empty() && prefs().refusal().empty())
    lines.push_back("the preferences were not saved: " + unsaved);
  return lines;
}

UserFiles Session::userFiles() const {
  UserFiles files;
  files.add(path_, "the edit");
  if (openedFrom_ != path_) files.add(openedFrom_, "the timeline");
  if (!path_.empty()) {
    files.add(EditFile::sidecarPath(path_), "the edit's objects");
    files.add(EditFile::sidecarPath(path_) + ".prev", "the edit's objects");
  }
  files.add(prefs().path(), "the preferences");
  files.add(layoutPath_, "the screen layout");
  return files;
}

FXGraphView* Session::view() const {
  FXGraphTool* p = panel();
  return p ? p->getView() : nullptr;
}

void Session::finishStills() {
  for (FXGraphTool* panel : FXGraphTool::allPanels_.as<FXGraphTool>())
    if (FXGraphView* v = panel->getView()) v->stills().finish();
  GlobManager::update();
}

void Session::writeLayout() {
  if (!keepsLayout_) return;
  const auto live = FXGraphTool::allPanels_.as<FXGraphTool>();
  auto isLive = [&](const FXGraphTool* p) { return std::find(live.begin(), live.end(), p) != live.end(); };
  std::vector<LayoutFile::SavedGlob> globs;
  std::set<const FXGraphTool*> written;
  auto add = [&](const FXGraphTool* panel) {
    if (!written.insert(panel).second) return;
    LayoutFile::SavedGlob glob;
    panel->dump(glob.record);
    globs.push_back(std::move(glob));
  };
  // In the file's order: each restored panel where its record was (gone
  // if it was closed), every other record as it was; new panels after.
  for (const LayoutSlot& slot : layout_) {
    if (!slot.restored)
      globs.push_back(slot.saved);
    else if (isLive(slot.restored))
      add(slot.restored);
  }
  for (const FXGraphTool* panel : live) add(panel);
  std::string why;
  if (LayoutFile::save(layoutPath_, globs, why)) return;
  // Told once, however often the session ended.
  const std::string failure = "the screen layout was not saved: " + why;
  if (std::find(saveFailures_.begin(), saveFailures_.end(), failure) == saveFailures_.end())
    saveFailures_.push_back(failure);
}

void Session::close() {
  if (!edit_) return;
  EditSaving::install(nullptr);
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
  layout_.clear();
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
  const std::string path = path_, layout = layoutGiven_;
  const double t = vob_ ? vob_->getCurrentTime() : time_;
  close();
  return open(path, t, layout, why);
}

bool Session::save(std::string& why) {
  if (!edit_) {
    why = "no edit is open";
    return false;
  }
  if (!EditFile::save(edit_, path_, why)) return false;
  refreshStatus();
  return true;
}

void Session::refreshStatus() const {
  // Saving is no change of the edit: the panels are told that nothing is
  // left unsaved.
  for (FXGraphTool* p : FXGraphTool::allPanels_.as<FXGraphTool>())
    if (p->status()) p->status()->refresh();
}

} // namespace fxgraph
