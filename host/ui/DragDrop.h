#pragma once
#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/core/XY.h"
#include "host/core/iObject.h"

// Drag and drop between globs. A glob that sees a press and a significant
// move on something it can give away starts a drag with
// GlobManager::startDrag(item); from then until the button is released the
// screen keeps the item, shows it to the DragDropDestination under the mouse
// as it moves, and drops it there on release.
//
//   state     event                            next      what happens
//   idle      startDrag() while a button is    dragging  the destination under the
//             down                                       mouse hears dragHover(item)
//   dragging  mouse move                       dragging  dragHover(item) to the one under
//                                                        the mouse, dragHover(null) to one left
//   dragging  release of the pressed button    idle      drop where canAcceptDrop says yes
//   dragging  Escape, cancelDrag()             idle      no drop

// The thing being dragged: a kind ("EffectTemplate") that destinations test
// first, a label to show, and whatever a subclass adds.
class FXHOST_API DragDropItem : public iObject {
public:
  DragDropItem(LightweightString<char> kind, LightweightString<wchar_t> label)
      : kind_(std::move(kind)), label_(std::move(label)) {}
  ~DragDropItem() override;

  const LightweightString<char>& kind() const noexcept { return kind_; }
  const LightweightString<wchar_t>& label() const noexcept { return label_; }

private:
  LightweightString<char> kind_;
  LightweightString<wchar_t> label_;
};

// A glob that takes drops derives from this as well. Positions are in the
// glob's own bottom-up pixels. The deepest glob under the mouse that is a
// destination is asked.
class FXHOST_API DragDropDestination {
public:
  DragDropDestination() = default;
  DragDropDestination(const DragDropDestination&) = default;
  DragDropDestination& operator=(const DragDropDestination&) = default;
  virtual ~DragDropDestination();

  // Whether the item may be dropped there.
  virtual bool canAcceptDrop(const DragDropItem& item, XY<int> position) = 0;
  // The drop, asked only where canAcceptDrop said yes; true when it was taken.
  virtual bool acceptDrop(const DragDropItem& item, XY<int> position) = 0;
  // The item moves over the destination (for feedback); null when it left
  // or the drag ended.
  virtual void dragHover(const DragDropItem* item, XY<int> position);
};
