#include "host/edit/Edit.h"

#include <algorithm>
#include <cmath>
#include <mutex>

namespace {
// Live, open edits by cookie. Not owning: an edit leaves when it closes or goes.
struct LiveEdits {
  std::mutex mutex;
  std::map<Cookie, Edit*> edits;
};
// Never destroyed: edits that live until the process ends still find it.
LiveEdits& liveEdits() {
  static LiveEdits* live = new LiveEdits;
  return *live;
}

// Undo snapshots kept per edit; the oldest go first.
constexpr std::size_t historyLimit = 200;

NotifyMsgType editModifiedMsgType() {
  static const NotifyMsgType type = NotifyMsgTypeDictionary::instance().intern("editModified");
  return type;
}
} // namespace

Edit::Edit(const Cookie& cookie, LightweightString<wchar_t> name) : cookie_(cookie), name_(std::move(name)) {
  if (!cookie_.valid()) return;
  LiveEdits& live = liveEdits();
  std::lock_guard lock(live.mutex);
  live.edits[cookie_] = this;
}

Edit::~Edit() { close(); }

void Edit::setName(const LightweightString<wchar_t>& name) {
  if (name == name_) return;
  name_ = name;
  dirty_ = true;
  addModification({EditModification(EditModification::name)}, true);
}

double Edit::wholeFrame(double t) const {
  const double fps = video_.frameRate;
  return std::floor(t * fps + 0.5) / fps;
}

int Edit::findChan(const IdStamp& id) const {
  const auto it = chanIndex_.find(id);
  return it == chanIndex_.end() ? -1 : it->second;
}

void Edit::addChannel(EditChannel channel) {
  // The first channel of an id is the one found, as a search in order finds it.
  chanIndex_.try_emplace(channel.id, static_cast<int>(channels_.size()));
  channels_.push_back(std::move(channel));
}

IdStamp Edit::getChanId(int index) const {
  if (index < 0 || index >= getNumChans()) return {};
  return channels_[static_cast<std::size_t>(index)].id;
}

int Edit::getChanType(const IdStamp& id) const {
  const int i = findChan(id);
  return i < 0 ? 0 : static_cast<int>(channels_[static_cast<std::size_t>(i)].type);
}

LightweightString<wchar_t> Edit::getChanDisplayName(const IdStamp& id, int style) const {
  const int i = findChan(id);
  if (i < 0) return {};
  const EditChannel& c = channels_[static_cast<std::size_t>(i)];
  if (style == 3) return c.name + (c.type == TrackType::audio ? L" (audio)" : L" (video)");
  return c.name;
}

std::vector<IdStamp> Edit::getGroupContainingChan(const IdStamp& id) const {
  const int i = findChan(id);
  if (i < 0) return {};
  const LightweightString<wchar_t>& group = channels_[static_cast<std::size_t>(i)].group;
  std::vector<IdStamp> out;
  for (const EditChannel& c : channels_)
    if (c.id == id || (!group.empty() && c.group == group)) out.push_back(c.id);
  return out;
}

LightweightString<wchar_t> Edit::getGroupDisplayName(const IdStamp& id, bool full) const {
  const int i = findChan(id);
  if (i < 0) return {};
  const EditChannel& c = channels_[static_cast<std::size_t>(i)];
  LightweightString<wchar_t> group = c.group.empty() ? c.name : c.group;
  if (full) group += c.type == TrackType::audio ? L" (audio)" : L" (video)";
  return group;
}

double Edit::getStartTime() const {
  double start = 0;
  bool any = false;
  for (const EditChannel& c : channels_)
    for (const Cel& cel : c.cels) {
      start = any ? std::min(start, cel.start) : cel.start;
      any = true;
    }
  return start;
}

double Edit::getEndTime() const {
  double end = 0;
  for (const EditChannel& c : channels_)
    for (const Cel& cel : c.cels) end = std::max(end, cel.end);
  return end;
}

std::vector<Ux::Ptr<FXGraphNodeBase>> Edit::allNodes() const {
  std::vector<Ux::Ptr<FXGraphNodeBase>> out;
  for (const IdStamp& id : tags_.ids())
    if (auto node = openNode(id)) out.push_back(node);
  return out;
}

void Edit::bindObjectToEdit(const LightweightString<char>& name, Ux::Ptr<Taggable> object) {
  if (object)
    bound_[name] = std::move(object);
  else
    bound_.erase(name);
}

Ux::Ptr<Taggable> Edit::openObjectInternal(const LightweightString<char>& name) const {
  auto it = bound_.find(name);
  return it == bound_.end() ? nullptr : it->second;
}

bool Edit::unbindObject(const LightweightString<char>& name) { return bound_.erase(name) != 0; }

std::vector<std::pair<LightweightString<char>, Ux::Ptr<Taggable>>> Edit::boundObjects() const {
  return {bound_.begin(), bound_.end()};
}

void Edit::addModification(const EditModifications& mods, bool now) {
  for (const EditModification& m : mods.items) pending_.add(m);
  if (now) flushModifications();
}

void Edit::flushModifications() {
  if (pending_.empty()) return;
  ++revision_;
  NotifierEvent<EditModifications> event;
  event.value = std::move(pending_);
  pending_ = EditModifications();
  modifications_.issueNotification(event, editModifiedMsgType());
}

Edit::Snapshot Edit::takeSnapshot() const {
  Snapshot s;
  s.channels = channels_;
  for (const auto& node : allNodes()) s.nodes.push_back(node->cloneNode());
  return s;
}

void Edit::restore(const Snapshot& s) {
  channels_ = s.channels;
  chanIndex_.clear();
  for (std::size_t i = 0; i < channels_.size(); ++i) chanIndex_.try_emplace(channels_[i].id, static_cast<int>(i));
  tags_.clear();
  // Copies again, so that the snapshot stays as it was for a later redo/undo.
  for (const auto& node : s.nodes) addNode(node->cloneNode());
  dirty_ = true;
  addModification({EditModification(EditModification::structure)}, true);
}

namespace {
// The undo states of one step, taken and brought back together.
class UndoExtras : public UndoExtra {
public:
  explicit UndoExtras(std::vector<std::shared_ptr<const UndoExtra>> parts) : parts_(std::move(parts)) {}
  std::shared_ptr<const UndoExtra> capture() const override {
    std::vector<std::shared_ptr<const UndoExtra>> now;
    for (const auto& part : parts_) now.push_back(part->capture());
    return std::make_shared<UndoExtras>(std::move(now));
  }
  void restore() const override {
    for (const auto& part : parts_) part->restore();
  }

private:
  std::vector<std::shared_ptr<const UndoExtra>> parts_;
};
} // namespace

void Edit::makeBackup() { makeBackup(nullptr); }

void Edit::makeBackup(std::shared_ptr<const UndoExtra> extra) {
  std::vector<std::shared_ptr<const UndoExtra>> parts;
  if (extra) parts.push_back(std::move(extra));
  for (const auto& [name, object] : bound_)
    if (object)
      if (auto state = object->undoState()) parts.push_back(std::move(state));
  undo_.push_back(takeSnapshot());
  undo_.back().dirty = dirty_;
  if (parts.size() == 1)
    undo_.back().extra = std::move(parts.front());
  else if (!parts.empty())
    undo_.back().extra = std::make_shared<UndoExtras>(std::move(parts));
  if (undo_.size() > historyLimit) undo_.erase(undo_.begin());
  redo_.clear();
  // A step is made for a change: positions changed by hand count as much
  // as the edit's own (they are saved with it).
  dirty_ = true;
}

bool Edit::undo() {
  if (undo_.empty()) return false;
  Snapshot s = std::move(undo_.back());
  undo_.pop_back();
  redo_.push_back(takeSnapshot());
  if (s.extra) redo_.back().extra = s.extra->capture();
  restore(s);
  // The extra state last: what those showing the edit made of its news (a
  // layout of nodes that came back, say) gives way to the state of the step.
  if (s.extra) s.extra->restore();
  return true;
}

bool Edit::withdrawLastStep() {
  if (undo_.empty()) return false;
  const bool wasDirty = undo_.back().dirty;
  undo();
  redo_.pop_back();
  dirty_ = wasDirty;
  return true;
}

bool Edit::redo() {
  if (redo_.empty()) return false;
  Snapshot s = std::move(redo_.back());
  redo_.pop_back();
  undo_.push_back(takeSnapshot());
  if (s.extra) undo_.back().extra = s.extra->capture();
  restore(s);
  if (s.extra) s.extra->restore();
  return true;
}

void Edit::close() {
  if (!closed_) {
    closed_ = true;
    LiveEdits& live = liveEdits();
    std::lock_guard lock(live.mutex);
    auto it = live.edits.find(cookie_);
    if (it != live.edits.end() && it->second == this) live.edits.erase(it);
  }
  for (auto& [name, object] : bound_)
    if (object) object->preDestroyNotify();
  auto bound = std::move(bound_);
  bound_.clear();
  bound.clear();
  tags_.clear();
  undo_.clear();
  redo_.clear();
}

bool EditPtr::i_open(const Cookie& cookie, int) {
  LiveEdits& live = liveEdits();
  std::lock_guard lock(live.mutex);
  auto it = live.edits.find(cookie);
  // A held reference keeps the edit alive; one already going is not reopened.
  if (it == live.edits.end() || it->second->refCount() == 0) {
    edit_.reset();
    return false;
  }
  edit_ = Ux::Ptr<Edit>(it->second);
  return true;
}
