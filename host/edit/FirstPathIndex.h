#pragma once
#include <memory>

#include "host/FxHostApi.h"
#include "host/edit/EditGraphIterator.h"

// While one is in scope on a thread, an iterator placed at a node (option
// positionAtNode) takes the node's path from an index of the first path to
// every node, made by one walk of the graph per edit and time, instead of
// searching the graph for that one node. A pass that places an iterator at
// each of thousands of nodes (a frame's thumbnails, a state dump) then costs
// each node its depth rather than the graph's size. The graph must not
// change while the scope lasts: the index is not told of changes.
class FXHOST_API FirstPathIndex {
public:
  FirstPathIndex();
  ~FirstPathIndex();
  FirstPathIndex(const FirstPathIndex&) = delete;
  FirstPathIndex& operator=(const FirstPathIndex&) = delete;

  // The index in scope on this thread, or null.
  static FirstPathIndex* active() noexcept;
  // Places `at` on the first path from a root to the node, as the search
  // does; false when no root reaches it (the iterator then is untouched).
  bool place(EditGraphIterator& at, const EditPtr& edit, double time, const FXGraphNodeBase* node);

private:
  struct Index;
  std::unique_ptr<Index> index_;
  FirstPathIndex* outer_;
};
