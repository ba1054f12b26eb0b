#pragma once
#include <vector>

#include "host/edit/EditGraphIterator.h"

// What a walk does at a node it reaches.
enum class WalkStep {
  skip,    // not into its inputs
  descend, // into its inputs, then leave() it
  stop     // end the walk here, the iterator standing at this node
};

// Walks the graph below an iterator's node depth first, with a stack of its
// own: a chain of any length costs heap, not stack, because an editor calls
// in on its own thread with an ordinary stack. `enter(at)` is called at each
// node the walk reaches, the iterator standing there (the start node first);
// `leave(at)` is called when the inputs of a node it descended into are
// done. Inputs are taken in order, or from the last when `lastInputFirst`;
// the count is read as each input is taken, so a visitor may change the
// graph below it. Returns true when a visitor stopped the walk, the iterator
// standing where it stopped; otherwise the iterator is back where it started.
template <class Enter, class Leave>
bool walkInputsDepthFirst(EditGraphIterator& at, Enter&& enter, Leave&& leave, bool lastInputFirst = false) {
  auto inputCount = [&at] {
    const Ux::Ptr<FXGraphNodeBase> node = at.getNode();
    return node ? static_cast<int>(node->getNumInputs()) : 0;
  };
  WalkStep step = enter(at);
  if (step != WalkStep::descend) return step == WalkStep::stop;
  // The next input to take at each depth below the start.
  std::vector<int> next{lastInputFirst ? inputCount() - 1 : 0};
  while (!next.empty()) {
    const int input = next.back();
    if (lastInputFirst ? input < 0 : input >= inputCount()) {
      leave(at);
      next.pop_back();
      if (!next.empty()) at.moveBack();
      continue;
    }
    next.back() += lastInputFirst ? -1 : 1;
    if (!at.moveToInput(input)) continue;
    step = enter(at);
    if (step == WalkStep::stop) return true;
    if (step == WalkStep::descend)
      next.push_back(lastInputFirst ? inputCount() - 1 : 0);
    else
      at.moveBack();
  }
  return false;
}

template <class Enter>
bool walkInputsDepthFirst(EditGraphIterator& at, Enter&& enter, bool lastInputFirst = false) {
  return walkInputsDepthFirst(
      at, enter, [](EditGraphIterator&) {}, lastInputFirst);
}
