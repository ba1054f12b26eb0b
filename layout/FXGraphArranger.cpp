#include "layout/FXGraphArranger.h"

#include <algorithm>

std::vector<XY<double>> FXGraphArranger::arrange(const std::vector<Node>& nodes, const std::vector<int>& roots,
                                                 Direction direction, double gap, XY<double> origin) {
  const int n = static_cast<int>(nodes.size());
  auto valid = [n](int i) { return i >= 0 && i < n; };

  // Levels: the longest path from a root, found in consumer-before-input
  // order (each node once all its consumers are placed). The parent is the
  // deepest consumer, the first of them on a tie.
  std::vector<int> consumers(n, 0), level(n, 0), parent(n, -1);
  for (const Node& node : nodes)
    for (int in : node.inputs)
      if (valid(in)) ++consumers[in];
  std::vector<int> order;
  order.reserve(n);
  std::vector<char> queued(n, 0);
  auto enqueue = [&](int i) {
    if (valid(i) && !queued[i]) {
      queued[i] = 1;
      order.push_back(i);
    }
  };
  for (int r : roots)
    if (valid(r) && consumers[r] == 0) enqueue(r);
  for (int i = 0; i < n; ++i)
    if (consumers[i] == 0) enqueue(i);
  std::vector<int> waiting(consumers);
  for (std::size_t k = 0;; ++k) {
    if (k == order.size()) {
      // What is left is fed by a cycle only: its first node starts again.
      int stuck = -1;
      for (int i = 0; i < n && stuck < 0; ++i)
        if (!queued[i]) stuck = i;
      if (stuck < 0) break;
      parent[stuck] = -1;
      enqueue(stuck);
    }
    const int c = order[k];
    for (int in : nodes[c].inputs) {
      if (!valid(in) || queued[in]) continue;
      if (parent[in] < 0 || level[c] + 1 > level[in]) {
        level[in] = level[c] + 1;
        parent[in] = c;
      }
      if (--waiting[in] == 0) enqueue(in);
    }
  }

  // Each node's children: the inputs whose parent it is, in input order.
  std::vector<std::vector<int>> children(n);
  for (int c = 0; c < n; ++c)
    for (int in : nodes[c].inputs)
      if (valid(in) && parent[in] == c && std::find(children[c].begin(), children[c].end(), in) == children[c].end())
        children[c].push_back(in);

  // Along the flow, one step per level: the largest box and a gap.
  const bool ltr = direction == leftToRight;
  double step = 0;
  for (const Node& node : nodes) step = std::max(step, ltr ? node.right - node.left : node.top - node.bottom);
  step += gap;
  const int depth = n ? *std::max_element(level.begin(), level.end()) + 1 : 0;

  // Across the flow: a cursor per level, the nearest free place. Children
  // are placed before their parent (an explicit stack: graphs can be deep),
  // and the parent centres on them unless the level is already beyond.
  std::vector<double> next(static_cast<std::size_t>(depth), 0.0);
  std::vector<double> across(n, 0.0); // where the node's box begins across the flow
  auto size = [&](int i) { return ltr ? nodes[i].top - nodes[i].bottom : nodes[i].right - nodes[i].left; };
  std::vector<std::pair<int, bool>> stack; // node, children done
  for (int r : order) {
    if (parent[r] >= 0) continue;
    stack.push_back({r, false});
    while (!stack.empty()) {
      auto [i, done] = stack.back();
      stack.pop_back();
      if (!done) {
        stack.push_back({i, true});
        for (auto it = children[i].rbegin(); it != children[i].rend(); ++it) stack.push_back({*it, false});
        continue;
      }
      double at = next[level[i]];
      if (!children[i].empty()) {
        const int first = children[i].front(), last = children[i].back();
        const double middle = (across[first] + size(first) / 2 + across[last] + size(last) / 2) / 2;
        at = std::max(at, middle - size(i) / 2);
      }
      across[i] = at;
      next[level[i]] = at + size(i) + gap;
    }
  }

  // To positions: levels go towards smaller x (or y), places across go down
  // (or right) from the origin.
  std::vector<XY<double>> out(n);
  for (int i = 0; i < n; ++i) {
    const Node& b = nodes[i];
    const double flowEdge = (ltr ? origin.x : origin.y) - level[i] * step;
    if (ltr)
      out[i] = {flowEdge - b.right, origin.y - across[i] - b.top};
    else
      out[i] = {origin.x + across[i] - b.left, flowEdge - b.top};
  }
  return out;
}
