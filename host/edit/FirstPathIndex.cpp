#include "host/edit/FirstPathIndex.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "host/edit/EditGraphWalk.h"

namespace {
thread_local FirstPathIndex* current = nullptr;
} // namespace

// Each node reached from the roots at one time: the node above it on the
// first path that reaches it, and the input it is reached through; a root's
// entry names its channel instead.
struct FirstPathIndex::Index {
  const Edit* edit = nullptr;
  double time = 0;
  struct Entry {
    const FXGraphNodeBase* above = nullptr; // null for a root
    int input = -1;
    int channel = -1; // a root's channel index
  };
  std::unordered_map<const FXGraphNodeBase*, Entry> first;

  // Depth first from each root in channel order, inputs in order: the walk
  // the search makes, which reaches every node first by the path the search
  // would stop on. A node met again (shared, or closing a cycle) is not
  // walked again.
  void build(const EditPtr& e, double t) {
    edit = e.get();
    time = t;
    first.clear();
    for (int c = 0; c < e->getNumChans(); ++c) {
      // Roots are the heads of graph cels, as for the search.
      const Cel* cel = e->getChan(c).celAt(t);
      if (!cel || cel->kind != Cel::Kind::graph) continue;
      EditGraphIterator at = EditGraphIterator::atChannel(e, t, e->getChan(c).id);
      const Ux::Ptr<FXGraphNodeBase> root = at.getNode();
      if (!root || first.count(root.get())) continue;
      first[root.get()] = Entry{nullptr, -1, c};
      walkInputsDepthFirst(
          at,
          [&](EditGraphIterator& here) {
            const FXGraphNodeBase* node = here.getNode().get();
            if (here.getDepth() == 0) return WalkStep::descend;
            if (!node || first.count(node)) return WalkStep::skip;
            first[node] = Entry{here.getNode(here.getDepth() - 1).get(), here.getParentInputNum(), -1};
            return WalkStep::descend;
          },
          [](EditGraphIterator&) {});
    }
  }
};

FirstPathIndex::FirstPathIndex() : outer_(current) { current = this; }

FirstPathIndex::~FirstPathIndex() { current = outer_; }

FirstPathIndex* FirstPathIndex::active() noexcept { return current; }

bool FirstPathIndex::place(EditGraphIterator& at, const EditPtr& edit, double time, const FXGraphNodeBase* node) {
  if (!edit || !node) return false;
  if (!index_) index_ = std::make_unique<Index>();
  if (index_->edit != edit.get() || index_->time != time) index_->build(edit, time);
  // The inputs from the root down to the node.
  std::vector<int> inputs;
  const Index::Entry* e = nullptr;
  for (const FXGraphNodeBase* n = node;;) {
    const auto it = index_->first.find(n);
    if (it == index_->first.end()) return false;
    e = &it->second;
    if (!e->above) break;
    inputs.push_back(e->input);
    n = e->above;
  }
  EditGraphIterator placed = EditGraphIterator::atChannel(edit, time, edit->getChan(e->channel).id);
  for (auto i = inputs.rbegin(); i != inputs.rend(); ++i)
    if (!placed.moveToInput(*i)) return false;
  at = std::move(placed);
  return true;
}
