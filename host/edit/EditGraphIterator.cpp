#include "host/edit/EditGraphIterator.h"

#include <charconv>
#include <cstdio>
#include <set>
#include <string>
#include <unordered_set>

#include "host/edit/EditGraphWalk.h"
#include "host/edit/FirstPathIndex.h"

namespace {
constexpr std::string_view statePrefix = "fxgs1:";

// The graph cel of a channel at a time, or null.
const Cel* graphCelAt(const EditChannel& c, double t) {
  const Cel* cel = c.celAt(t);
  return cel && cel->kind == Cel::Kind::graph ? cel : nullptr;
}
} // namespace

EditGraphIteratorState::EditGraphIteratorState(const LightweightString<char>& text) {
  std::string_view s = text.view();
  if (!s.starts_with(statePrefix)) return;
  s.remove_prefix(statePrefix.size());
  std::vector<std::string_view> parts;
  for (std::size_t at = 0;;) {
    const std::size_t colon = s.find(':', at);
    parts.push_back(s.substr(at, colon == std::string_view::npos ? std::string_view::npos : colon - at));
    if (colon == std::string_view::npos) break;
    at = colon + 1;
  }
  if (parts.size() != 5) return;
  if (!Cookie::fromString(parts[0], edit)) return;
  const std::string timeText(parts[1]);
  char* end = nullptr;
  time = std::strtod(timeText.c_str(), &end);
  if (timeText.empty() || end != timeText.c_str() + timeText.size()) return;
  if (!IdStamp::fromString(parts[2], rootChannel) || !IdStamp::fromString(parts[3], rootNode)) return;
  path.clear();
  if (parts[4] != "-") {
    std::string_view p = parts[4];
    while (!p.empty()) {
      int index = 0;
      auto [next, ec] = std::from_chars(p.data(), p.data() + p.size(), index);
      if (ec != std::errc() || index < 0) return;
      path.push_back(index);
      p.remove_prefix(static_cast<std::size_t>(next - p.data()));
      if (!p.empty()) {
        if (p.front() != ',') return;
        p.remove_prefix(1);
        if (p.empty()) return;
      }
    }
  }
  valid_ = true;
}

LightweightString<char> EditGraphIteratorState::asString() const {
  std::string text(statePrefix);
  text += edit.asString().str();
  char number[40];
  std::snprintf(number, sizeof number, "%.17g", time);
  text += ':';
  text += number;
  text += ':' + rootChannel.asString().str() + ':' + rootNode.asString().str() + ':';
  if (path.empty()) text += '-';
  for (std::size_t i = 0; i < path.size(); ++i) {
    if (i) text += ',';
    text += std::to_string(path[i]);
  }
  return LightweightString<char>(std::move(text));
}

Ux::Ptr<FXGraphNodeBase> EditGraphIterator::resolveInput(const Edit& edit, const IdStamp& slot, double time,
                                                         IdStamp& channel) {
  if (!slot.valid()) return nullptr;
  if (auto node = edit.openNode(slot)) return node;
  const int index = edit.findChan(slot);
  if (index < 0) return nullptr;
  const Cel* cel = edit.getChan(index).celAt(time);
  if (!cel || cel->kind == Cel::Kind::black) return nullptr;
  auto node = edit.openNode(cel->ref);
  if (node) channel = slot;
  return node;
}

EditGraphIterator::EditGraphIterator(const EditPtr& edit, double time, int options) : edit_(edit), time_(time) {
  if (!edit_ || !(options & startAtFirstRoot)) return;
  for (int i = 0; i < edit_->getNumChans(); ++i) {
    const EditChannel& c = edit_->getChan(i);
    if (const Cel* cel = graphCelAt(c, time_))
      if (startAt(edit_->openNode(cel->ref), c.id)) return;
  }
}

EditGraphIterator::EditGraphIterator(const EditPtr& edit, double time, const IdStamp& node, int options)
    : edit_(edit), time_(time) {
  if (!edit_) return;
  Ux::Ptr<FXGraphNodeBase> target = edit_->openNode(node);
  if (!target) return;
  if (options & positionAtNode) {
    if (options & headsFirst)
      for (int i = 0; i < edit_->getNumChans(); ++i) {
        const EditChannel& c = edit_->getChan(i);
        if (const Cel* cel = graphCelAt(c, time_); cel && cel->ref == node && startAt(target, c.id)) return;
      }
    // A pass over many nodes reads their paths from one walk of the graph.
    if (FirstPathIndex* index = FirstPathIndex::active()) {
      if (index->place(*this, edit_, time_, target.get())) return;
    } else {
      for (int i = 0; i < edit_->getNumChans(); ++i) {
        const EditChannel& c = edit_->getChan(i);
        const Cel* cel = graphCelAt(c, time_);
        if (!cel || !startAt(edit_->openNode(cel->ref), c.id)) continue;
        if (searchFrom(node)) return;
        path_.clear();
      }
    }
  }
  startAt(target, IdStamp());
}

EditGraphIterator EditGraphIterator::atChannel(const EditPtr& edit, double time, const IdStamp& channel) {
  EditGraphIterator it;
  it.edit_ = edit;
  it.time_ = time;
  if (!edit) return it;
  const int index = edit->findChan(channel);
  if (index < 0) return it;
  if (const Cel* cel = edit->getChan(index).celAt(time))
    if (cel->kind != Cel::Kind::black) it.startAt(edit->openNode(cel->ref), channel);
  return it;
}

EditGraphIterator::EditGraphIterator(const EditGraphIteratorState& state) : time_(state.time) {
  if (!state.valid() || !edit_.i_open(state.edit)) return;
  Ux::Ptr<FXGraphNodeBase> root = edit_->openNode(state.rootNode);
  if (!root) return;
  startAt(root, state.rootChannel);
  for (int input : state.path) {
    if (!moveToInput(input)) {
      path_.clear();
      return;
    }
  }
}

bool EditGraphIterator::startAt(const Ux::Ptr<FXGraphNodeBase>& node, const IdStamp& channel) {
  path_.clear();
  if (!node) return false;
  path_.push_back({node, -1, channel});
  return true;
}

Ux::Ptr<FXGraphNodeBase> EditGraphIterator::getNode(int depth) const {
  if (path_.empty()) return nullptr;
  if (depth < 0) return path_.back().node;
  if (static_cast<std::size_t>(depth) >= path_.size()) return nullptr;
  return path_[static_cast<std::size_t>(depth)].node;
}

bool EditGraphIterator::moveToInput(int i) {
  if (path_.empty() || i < 0) return false;
  const Ux::Ptr<FXGraphNodeBase>& here = path_.back().node;
  if (static_cast<unsigned>(i) >= here->getNumInputs()) return false;
  IdStamp channel = path_.back().channel;
  Ux::Ptr<FXGraphNodeBase> next = resolveInput(*edit_, here->getInputTrackId(static_cast<unsigned>(i)), time_, channel);
  if (!next) return false;
  path_.push_back({next, i, channel});
  return true;
}

bool EditGraphIterator::moveBack() {
  if (path_.size() < 2) return false;
  path_.pop_back();
  return true;
}

bool EditGraphIterator::moveBackToCompoundEffect() {
  if (path_.empty()) return false;
  path_.resize(1);
  return true;
}

bool EditGraphIterator::searchFrom(const IdStamp& node) {
  // Depth first, inputs in order: the first path that reaches the node. A
  // node searched through without finding it is not searched again from
  // another path (nothing below it changes with the path, the graph having
  // no cycle), and a cycle back into the path is not followed.
  std::unordered_set<const FXGraphNodeBase*> onPath, fruitless;
  for (std::size_t d = 0; d + 1 < path_.size(); ++d) onPath.insert(path_[d].node.get());
  return walkInputsDepthFirst(
      *this,
      [&](EditGraphIterator& at) {
        const FXGraphNodeBase* here = at.path_.back().node.get();
        if (here->getId() == node) return WalkStep::stop;
        if (onPath.count(here) || fruitless.count(here)) return WalkStep::skip;
        onPath.insert(here);
        return WalkStep::descend;
      },
      [&](EditGraphIterator& at) {
        const FXGraphNodeBase* here = at.path_.back().node.get();
        onPath.erase(here);
        fruitless.insert(here);
      });
}

bool EditGraphIterator::search(const IdStamp& node) {
  if (path_.empty()) return false;
  const std::vector<Step> saved = path_;
  path_.resize(1);
  if (searchFrom(node)) return true;
  path_ = saved;
  return false;
}

void EditGraphIterator::findAllComponents(Vector<IdStamp>& out) const {
  if (path_.empty()) return;
  std::set<IdStamp> seen;
  std::vector<std::pair<Ux::Ptr<FXGraphNodeBase>, IdStamp>> todo{{path_.front().node, path_.front().channel}};
  while (!todo.empty()) {
    auto [node, channel] = todo.back();
    todo.pop_back();
    if (!seen.insert(node->getId()).second) continue;
    out.push_back(node->getId());
    // Pushed in reverse so that inputs are visited in order.
    for (unsigned i = node->getNumInputs(); i-- > 0;) {
      IdStamp via = channel;
      if (auto next = resolveInput(*edit_, node->getInputTrackId(i), time_, via)) todo.push_back({next, via});
    }
  }
}

IdStamp EditGraphIterator::getChanId(int depth) const {
  if (path_.empty()) return {};
  if (depth == -1) return path_.back().channel;
  if (depth == -2 || depth == 0) return path_.front().channel;
  if (depth < 0 || static_cast<std::size_t>(depth) >= path_.size()) return {};
  return path_[static_cast<std::size_t>(depth)].channel;
}

int EditGraphIterator::getChanIndex(int depth) const { return edit_ ? edit_->findChan(getChanId(depth)) : -1; }

double EditGraphIterator::getRange(int depth, int which) const {
  const int index = getChanIndex(depth);
  if (index < 0) return time_;
  const Cel* cel = edit_->getChan(index).celAt(time_);
  if (!cel) return time_;
  return which == 0 ? cel->start : cel->end;
}

EditGraphIteratorState EditGraphIterator::getState() const {
  EditGraphIteratorState state;
  if (!edit_ || path_.empty()) return state;
  state.edit = edit_->getCookie();
  state.time = time_;
  state.rootChannel = path_.front().channel;
  state.rootNode = path_.front().node->getId();
  for (std::size_t d = 1; d < path_.size(); ++d) state.path.push_back(path_[d].input);
  state.valid_ = true;
  return state;
}

void findAllRootNodeChans(const EditPtr& edit, std::vector<IdStamp>& roots, double time, bool videoOnly) {
  if (!edit) return;
  for (int i = 0; i < edit->getNumChans(); ++i) {
    const EditChannel& c = edit->getChan(i);
    if (videoOnly && c.type != TrackType::video) continue;
    if (const Cel* cel = graphCelAt(c, time))
      if (edit->openNode(cel->ref)) roots.push_back(cel->ref);
  }
}
