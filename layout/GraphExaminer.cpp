#include "layout/GraphExaminer.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <unordered_set>

GraphExaminer::GraphExaminer(NodeUIPosSource& source) : source_(source) {}

void GraphExaminer::examine(EditGraphIterator& iterator, Walk walk) {
  if (walk == Walk::byStructure && examineStructure(iterator)) return;
  startAt(iterator);
  applyToTree(iterator, *this);
  buildLevels();
}

// The records from the graph's structure. Paths from the start are ordered
// as words of input indices; a node's first meeting is where a depth-first
// walk that visits each node once, inputs in order, first reaches it.
// - Records come in order of first meeting.
// - A node's level is its longest path from the start.
// - Its parent and input are those of its first meeting, unless its level is
//   deeper than that meeting: then the last step of the first of its longest
//   paths. A node first met at its level with a second longest path has its
//   parent depth set, and takes that path's parent when it is another node.
// So each node needs its longest-path length and the first two of its
// longest paths, which a pass per level finds from the first two of its
// parents', ranked among all kept paths of the level above.
bool GraphExaminer::examineStructure(EditGraphIterator& iterator) {
  records_.clear();
  levels_.clear();
  firstMet_.clear();
  baseDepth_ = iterator.getDepth() + 1;
  if (!iterator.isValid()) return true;
  const Ux::Ptr<FXGraphNodeBase> start = iterator.getNode();
  if (!start || !start->getId().valid()) return true;

  struct Edge {
    int from, to, slot;
  };
  struct Node {
    Ux::Ptr<FXGraphNodeBase> node;
    int parent = -1, slot = -1, firstLevel = 0; // the first meeting
    int level = 0;                              // the longest path
    bool onPath = false;
  };
  // Flat tables, not a list per node: a tidy of tens of thousands of nodes
  // spent a third of its time allocating.
  std::vector<Node> nodes;
  std::vector<Edge> edges;   // in the order the walk crosses them
  std::vector<int> finished; // nodes in the order their inputs were done
  std::unordered_map<IdStamp, int> index;
  std::unordered_set<IdStamp> above; // nodes above the start count as on the path
  for (int d = iterator.getDepth() - 1; d >= 0; --d)
    if (const Ux::Ptr<FXGraphNodeBase> node = iterator.getNode(d)) above.insert(node->getId());

  // One visit per node, depth first, inputs in order; false on a cycle.
  bool acyclic = true;
  Node root;
  root.node = start;
  nodes.push_back(std::move(root));
  index.emplace(start->getId(), 0);
  std::vector<int> path; // the nodes walked down through, by index
  walkInputsDepthFirst(
      iterator,
      [&](EditGraphIterator& at) {
        if (path.empty()) {
          nodes[0].onPath = true;
          path.push_back(0);
          return WalkStep::descend;
        }
        const Ux::Ptr<FXGraphNodeBase> input = at.getNode();
        if (!acyclic || !input || !input->getId().valid()) return WalkStep::skip;
        const IdStamp id = input->getId();
        const int here = path.back();
        const int slot = at.getParentInputNum();
        auto [it, fresh] = index.try_emplace(id, static_cast<int>(nodes.size()));
        if (!fresh ? nodes[static_cast<std::size_t>(it->second)].onPath : above.count(id) != 0) {
          if (fresh) index.erase(it);
          acyclic = false;
          return WalkStep::skip;
        }
        if (fresh) {
          Node made;
          made.node = input;
          made.parent = here;
          made.slot = slot;
          made.firstLevel = nodes[static_cast<std::size_t>(here)].firstLevel + 1;
          made.onPath = true;
          nodes.push_back(std::move(made));
        }
        edges.push_back({here, it->second, slot});
        if (!fresh) return WalkStep::skip;
        path.push_back(it->second);
        return WalkStep::descend;
      },
      [&](EditGraphIterator&) {
        const int done = path.back();
        path.pop_back();
        nodes[static_cast<std::size_t>(done)].onPath = false;
        finished.push_back(done);
      });
  if (!acyclic) return false;

  // Each node's incoming and outgoing edges, grouped by node, keeping the
  // order of crossing.
  const std::size_t nodeCount = nodes.size();
  std::vector<int> inStart(nodeCount + 1, 0), outStart(nodeCount + 1, 0);
  for (const Edge& e : edges) {
    ++inStart[static_cast<std::size_t>(e.to) + 1];
    ++outStart[static_cast<std::size_t>(e.from) + 1];
  }
  for (std::size_t i = 0; i < nodeCount; ++i) {
    inStart[i + 1] += inStart[i];
    outStart[i + 1] += outStart[i];
  }
  std::vector<Edge> in(edges.size());
  std::vector<int> outgoing(edges.size());
  {
    std::vector<int> inFill(inStart.begin(), inStart.end() - 1), outFill(outStart.begin(), outStart.end() - 1);
    for (const Edge& e : edges) {
      in[static_cast<std::size_t>(inFill[static_cast<std::size_t>(e.to)]++)] = e;
      outgoing[static_cast<std::size_t>(outFill[static_cast<std::size_t>(e.from)]++)] = e.to;
    }
  }

  // Longest paths, in topological order (the reverse of finishing order).
  int deepest = 0;
  for (auto it = finished.rbegin(); it != finished.rend(); ++it) {
    const Node& from = nodes[static_cast<std::size_t>(*it)];
    for (int e = outStart[static_cast<std::size_t>(*it)]; e < outStart[static_cast<std::size_t>(*it) + 1]; ++e) {
      Node& n = nodes[static_cast<std::size_t>(outgoing[static_cast<std::size_t>(e)])];
      n.level = std::max(n.level, from.level + 1);
      deepest = std::max(deepest, n.level);
    }
  }

  // The first two longest paths of each node, level by level. A kept path is
  // its rank among the kept paths of its level and its last step.
  struct Path {
    long long rank = 0;
    int from = -1, slot = -1;
  };
  std::vector<std::vector<int>> byLevel(static_cast<std::size_t>(deepest) + 1);
  for (std::size_t i = 0; i < nodes.size(); ++i)
    byLevel[static_cast<std::size_t>(nodes[i].level)].push_back(static_cast<int>(i));
  std::vector<std::array<Path, 2>> kept(nodes.size());
  std::vector<int> keptCount(nodes.size(), 0);
  keptCount[0] = 1;
  for (std::size_t k = 1; k < byLevel.size(); ++k) {
    struct Candidate {
      long long prefix; // the rank of the path to the parent
      int slot, from, to;
    };
    std::vector<Candidate> ranked;
    for (int to : byLevel[k]) {
      std::array<Candidate, 2> best{};
      int count = 0;
      for (int x = inStart[static_cast<std::size_t>(to)]; x < inStart[static_cast<std::size_t>(to) + 1]; ++x) {
        const Edge& e = in[static_cast<std::size_t>(x)];
        if (nodes[static_cast<std::size_t>(e.from)].level + 1 != static_cast<int>(k)) continue;
        for (int j = 0; j < keptCount[static_cast<std::size_t>(e.from)]; ++j) {
          const Candidate c{kept[static_cast<std::size_t>(e.from)][static_cast<std::size_t>(j)].rank, e.slot, e.from,
                            to};
          auto before = [](const Candidate& a, const Candidate& b) {
            return a.prefix != b.prefix ? a.prefix < b.prefix : a.slot < b.slot;
          };
          if (count < 2) {
            best[static_cast<std::size_t>(count++)] = c;
            if (count == 2 && before(best[1], best[0])) std::swap(best[0], best[1]);
          } else if (before(c, best[1])) {
            best[1] = c;
            if (before(best[1], best[0])) std::swap(best[0], best[1]);
          }
        }
      }
      for (int j = 0; j < count; ++j) ranked.push_back(best[static_cast<std::size_t>(j)]);
    }
    std::sort(ranked.begin(), ranked.end(), [](const Candidate& a, const Candidate& b) {
      return a.prefix != b.prefix ? a.prefix < b.prefix : a.slot < b.slot;
    });
    for (std::size_t r = 0; r < ranked.size(); ++r) {
      const Candidate& c = ranked[r];
      int& count = keptCount[static_cast<std::size_t>(c.to)];
      kept[static_cast<std::size_t>(c.to)][static_cast<std::size_t>(count++)] = {static_cast<long long>(r), c.from,
                                                                                 c.slot};
    }
  }

  // The records, in order of first meeting (the visit's order of making).
  records_.reserve(nodes.size());
  firstMet_.reserve(nodes.size());
  for (std::size_t i = 0; i < nodes.size(); ++i) {
    const Node& n = nodes[i];
    NodeInfo info;
    info.depth = n.level;
    info.node = n.node;
    info.record = source_.getPosRecForNode(n.node->getId());
    if (i > 0) {
      const Path& first = kept[i][0];
      int parent = n.parent, slot = n.slot;
      if (n.firstLevel < n.level) {
        // Met deeper later: the first deepest path takes it over.
        parent = first.from;
        slot = first.slot;
        info.parentDepth = n.level - 1;
      } else if (keptCount[i] > 1) {
        // Met at its deepest first: the second deepest meeting marks it, and
        // moves it when it comes through another parent.
        info.parentDepth = n.level - 1;
        if (kept[i][1].from != n.parent) {
          parent = kept[i][1].from;
          slot = kept[i][1].slot;
        }
      }
      info.parent = nodes[static_cast<std::size_t>(parent)].node;
      info.inputIndex = slot;
    }
    records_.emplace(n.node->getId(), std::move(info));
    firstMet_.push_back(n.node->getId());
  }
  buildLevels();
  return true;
}

void GraphExaminer::startAt(const EditGraphIterator& start) {
  records_.clear();
  levels_.clear();
  firstMet_.clear();
  baseDepth_ = start.getDepth() + 1;
}

bool GraphExaminer::operator()(const EditGraphIterator& iterator) {
  const Ux::Ptr<FXGraphNodeBase> node = iterator.getNode();
  if (!node) return true;
  const int level = iterator.getDepth() + 1 - baseDepth_;
  if (level < 0) return true; // above the start node: not part of this tree
  const Ux::Ptr<FXGraphNodeBase> parent = level > 0 ? iterator.getNode(iterator.getDepth() - 1) : nullptr;

  const auto known = records_.find(node->getId());
  if (known != records_.end()) {
    NodeInfo& info = known->second;
    if (level > info.depth) info.depth = level;
    // Met again at its deepest level through a parent it has not recorded
    // there: this meeting's parent and input now describe it. A meeting
    // shallower than the deepest never moves it up, so that the node stays
    // under a parent on the level just above it.
    if (level == info.depth && info.parentDepth < level - 1) {
      info.parentDepth = level - 1;
      // A node that fills two slots of one parent stays at the first slot.
      if (!parent || !info.parent || parent->getId() != info.parent->getId()) {
        info.parent = parent;
        info.inputIndex = iterator.getParentInputNum();
      }
    }
    return true;
  }

  NodeInfo info;
  info.depth = level;
  // No parent depth yet: a second meeting at this level takes the node over
  // (a third leaves it), as does the first meeting further down.
  info.parentDepth = -1;
  info.node = node;
  info.record = source_.getPosRecForNode(node->getId());
  info.parent = parent;
  info.inputIndex = parent ? iterator.getParentInputNum() : -1;
  records_.emplace(node->getId(), std::move(info));
  firstMet_.push_back(node->getId());
  return true;
}

void GraphExaminer::buildLevels() {
  levels_.clear();
  for (const IdStamp& id : firstMet_) {
    NodeInfo& info = records_.at(id);
    const auto level = static_cast<std::size_t>(info.depth);
    if (levels_.size() <= level) levels_.resize(level + 1);
    info.slot = static_cast<int>(levels_[level].size());
    levels_[level].push_back(info);
  }
}

const GraphExaminer::NodeInfo* GraphExaminer::find(const IdStamp& id) const {
  const auto it = records_.find(id);
  return it == records_.end() ? nullptr : &it->second;
}
