// The view's mouse and key rules, the pad click handlers and the
// interaction they share (Interaction: which gesture holds the view).
//
// Mouse dispatch (handleMouseEvent), after the hints have seen the event and
// the navigator has taken presses on it and the drag that follows:
//   event                        | condition                 | action
//   left press                   | on a pad (not read-only)  | the pad's click handler
//   left press                   | on a body                 | grab the node (moved node)
//   left press                   | on nothing, wire dragged  | the wire is discarded
//   left press                   | otherwise                 | panning starts
//   release                      | node moved                | small left: a click on the node;
//                                |                           | right: the menu; then let go
//   move (more than 2 pixels)    | node moved                | move it (control: its whole graph)
//   anything else                |                           | the pan and zoom gesture
//
// Pad clicks (the drag state is the anchor node, its pad and where it hangs):
//   click on            | no wire dragged                      | wire dragged
//   connected input     | pick the wire up: hangs from the     | nothing (only a free input takes it)
//                       | source's output (undo step)          |
//   free input          | start a wire hanging from the input  | wire from an output: connect (backup)
//   connected output    | pick up: hangs from the fed input    | nothing unless it is the spare slot
//   spare / free output | start a wire from the output         | wire from an input: connect (backup)
#include <cctype>
#include <cmath>
#include <string>

#include "graph_view/FXGraphView.h"
#include "graph_view/HoverHints.h"
#include "graph_view/KeyboardFocus.h"
#include "graph_view/Navigator.h"
#include "graph_view/SearchToAdd.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/TransitStatus.h"
#include "host/ui/MenuGlob.h"

namespace {
constexpr int atNode = 9;
// An iterator placed at the clicked node to disconnect its input.
constexpr int clickedNode = 1;

// A kind-5 (structure) modification of the edit: views rebuild.
void structureChanged(const EditPtr& edit) {
  edit->addModification({EditModification(EditModification::structure)}, true);
}
} // namespace

bool FXGraphView::beginInteraction(Interaction::Kind kind) {
  if (interaction_.kind != Interaction::none) return false;
  interaction_ = Interaction();
  interaction_.kind = kind;
  return true;
}

void FXGraphView::endInteraction() { interaction_ = Interaction(); }

void FXGraphView::endNavigating() {
  if (interaction_.kind == Interaction::navigating) endInteraction();
}

bool FXGraphView::handleMouseEvent(const Event& e) {
  mouse_ = e.position;
  hints_->mouse(e);
  // A press elsewhere closes the search field, and goes on as a press.
  if (e.type == Event::mouseDown) search_->close();
  if (navigate(e)) return true;
  bool handled = true;
  if (e.type == Event::mouseDown && e.button == Event::left)
    pressLeft(e);
  else if (e.type == Event::mouseUp && movedNode())
    releaseMovedNode(e);
  else if (e.type == Event::mouseMove && movedNode() && isMouseMoveSignificant(e))
    dragMovedNode(e);
  else if (e.type == Event::wheel)
    handleZoom(e.wheelSteps);
  else if (e.type == Event::mouseUp && e.button == Event::right && interaction_.kind != Interaction::panning)
    handled = MenuGlob::processRightMouseClicks(this, e);
  else {
    handled = checkForPanAndZoom(e) != 0;
    if (e.type == Event::mouseMove && dragAnchor()) {
      // The dragged wire follows the mouse.
      redraw();
      handled = true;
    }
  }
  if (!mouseInAutoScrollArea()) setAutoScrollState(false);
  return handled;
}

bool FXGraphView::navigate(const Event& e) {
  // The navigator takes presses inside it, and the drag that follows.
  if (interaction_.kind != Interaction::navigating &&
      !(e.type == Event::mouseDown && e.button == Event::left && navigator_->contains(e.position) &&
        beginInteraction(Interaction::navigating)))
    return false;
  if (e.type == Event::mouseDown || e.type == Event::mouseMove) navigator_->navigateTo(e.position);
  if (e.type == Event::mouseUp) endNavigating();
  return true;
}

void FXGraphView::pressLeft(const Event& e) {
  const bool readOnly = getVob() && getVob()->isReadOnly();
  if (!readOnly)
    for (std::size_t k = 0; k < nodes_.size(); ++k) {
      Ux::Ptr<FXGraphViewNode> node = nodes_[k];
      if (!node->isVisibleFlag()) continue;
      int index = 0;
      switch (node->translateMouseEvent(e.position.x, e.position.y, index)) {
      case FXGraphViewNode::eOutput:
        if (handleOutputClicked(node, index)) return;
        break;
      case FXGraphViewNode::eInput:
        if (handleInputClicked(node, index)) return;
        break;
      case FXGraphViewNode::eBody: {
        double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
        graphToViewSpace(node->getL(), node->getB(), x0, y0);
        graphToViewSpace(node->getR(), node->getT(), x1, y1);
        // A wire held is let go as the node is taken.
        removeDraggedIFConnection();
        interaction_ = Interaction();
        interaction_.kind = Interaction::draggingNode;
        interaction_.grab = {static_cast<int>(e.position.x - (x0 + x1) / 2),
                             static_cast<int>(e.position.y - (y0 + y1) / 2)};
        interaction_.moved = node;
        keyboard_->set(node->getNodeID());
        enableETime();
        return;
      }
      default:
        break;
      }
    }
  if (!readOnly && removeDraggedIFConnection()) return;
  beginInteraction(Interaction::panning);
  interaction_.panLast = {mouse_get_current_x(), mouse_get_current_y()};
}

void FXGraphView::releaseMovedNode(const Event& e) {
  const bool smallLeftClick = e.button == Event::left && !isMouseMoveSignificant(e);
  if (smallLeftClick) {
    for (const auto& node : nodes_) {
      int index = 0;
      if (node->translateMouseEvent(e.position.x, e.position.y, index) == FXGraphViewNode::eBody &&
          handleNodeClicked(node))
        break;
    }
  } else if (e.button == Event::right) {
    MenuGlob::processRightMouseClicks(this, e);
  }
  disableETime();
  endInteraction();
}

void FXGraphView::dragMovedNode(const Event& e) {
  const Ux::Ptr<FXGraphViewNode> moved = interaction_.moved;
  if (mouseInAutoScrollArea()) setAutoScrollState(true);
  XY<double> p = viewToGraphSpace(XY<double>(e.position.x - interaction_.grab.x, e.position.y - interaction_.grab.y));
  constrainToCanvas(p);
  const bool wholeGraph = (keyboardModifiers() & Event::controlHeld) && manualPositioning();
  // One node moved alone changes only what it and its wires cover, before
  // and after: just that is drawn again.
  const PixelBox before = wholeGraph ? PixelBox() : damageOf(*moved);
  if (wholeGraph) {
    const XY<double> at = moved->getPosition();
    translateManuallyPositionedNodes(moved->graphNode(), p.x - at.x, p.y - at.y, true);
  } else {
    moved->setPosition(p.x, p.y, true);
  }
  // A node put somewhere by hand keeps that place.
  if (NodeUIPosRec* stored = moved->storedRecord()) stored->setManualPos(p.x, p.y);
  keepCanvasAroundGraph(true);
  updateScrollbars(true);
  if (wholeGraph) {
    redraw();
  } else {
    const PixelBox after = damageOf(*moved);
    redrawArea({std::min(before.x0, after.x0), std::min(before.y0, after.y0), std::max(before.x1, after.x1),
                std::max(before.y1, after.y1)});
  }
}

bool FXGraphView::handleKeyEvent(const Event& e) {
  if (e.type != Event::keyDown || (e.modifiers & Event::controlHeld)) return false;
  if (searchField().key(e)) return true;
  const bool shift = (e.modifiers & Event::shiftHeld) != 0;
  const bool commandLetter = e.key == 'f' || e.key == 'F' || e.key == 'p' || e.key == 'l' || e.key == 'n';
  if (e.key == 'l') {
    if (!(getVob() && getVob()->isReadOnly())) arrange();
    return true;
  }
  if (e.key == 'n') {
    navigator_->setOn(!navigator_->on());
    return true;
  }
  // Tab, or a letter or digit that is no command, starts a search to add.
  if (e.key == Event::keyTab || (!commandLetter && e.key < 128 && std::isalnum(e.key))) {
    if (getVob() && getVob()->isReadOnly()) return false;
    return search_->open(e.key == Event::keyTab ? std::wstring() : std::wstring(1, static_cast<wchar_t>(e.key)));
  }
  if (e.key == 'f' || e.key == 'F') {
    if (!shift && e.key == 'f') {
      resetView(0, 0);
      return true;
    }
    // The node under the mouse, else the one with focus, to the middle.
    Ux::Ptr<FXGraphViewNode> target;
    for (const auto& n : nodes_) {
      int index = 0;
      if (n->isVisibleFlag() && n->translateMouseEvent(mouse_.x, mouse_.y, index) != FXGraphViewNode::eNothing) {
        target = n;
        break;
      }
    }
    if (!target && keyboardFocus().valid()) target = findViewRecForNode(keyboardFocus());
    if (target) {
      setViewCentre((target->getL() + target->getR()) / 2, (target->getB() + target->getT()) / 2);
      updateScrollbars(true);
      redraw();
    }
    return true;
  }
  return keyboard_->key(e);
}

bool FXGraphView::handleNodeClicked(Ux::Ptr<FXGraphViewNode> node) {
  auto* effect = dynamic_cast<EffectInstance*>(node->graphNode().get());
  if (!effect || dynamic_cast<AliasedInputEffect*>(effect) || !edit_) return false;
  effect->setActive(!effect->isActive());
  edit_->setDirty(true);
  edit_->addModification({EditModification(EffectModification::eActive, effect->getId())}, true);
  return true;
}

bool FXGraphView::removeDraggedIFConnection() {
  if (!interaction_.anchor || !interaction_.anchor->graphNode() || !edit_) return false;
  const Ux::Ptr<FXGraphViewNode> anchor = interaction_.anchor;
  const int pad = interaction_.anchorPad;
  const bool atInput = interaction_.anchoredAtInput;
  disableETime();
  endInteraction();
  FXEditor editor(edit_, 0, getPrimaryChanIx());
  if (atInput) {
    if (anchor->getInputConnect(pad)) {
      EasyBackup step(edit_);
      editor.disconnectNodes(getIteratorFor(anchor->graphNode(), atNode), pad, true);
    }
  } else if (FXGraphViewNode* fed = anchor->getOutputConnect(pad)) {
    EasyBackup step(edit_);
    const int input = fed->findInputConnectFor(anchor.get(), pad);
    editor.disconnectNodes(getIteratorFor(fed->graphNode(), atNode), input, true);
  }
  structureChanged(edit_);
  return true;
}

bool FXGraphView::handleInputClicked(Ux::Ptr<FXGraphViewNode> node, int input) {
  if (!node->graphNode() || !edit_) return true;
  Glib::UpdateDeferrer defer;
  busy_ = true;
  FXEditor editor(edit_, 0, getPrimaryChanIx());
  if (interaction_.anchor) {
    // Only a wire hanging from an output may end on an input, and only on a free one.
    if (!interaction_.anchoredAtInput && !node->getInputConnect(input)) {
      EditGraphIterator destination = getIteratorFor(node->graphNode(), atNode);
      EditGraphIterator source = getIteratorFor(interaction_.anchor->graphNode(), atNode);
      if (editor.canConnectNodes(destination, input, source)) {
        if (getVob()) getVob()->makeBackup();
        // An output slot never feeds two inputs: what it fed lets go first.
        if (FXGraphViewNode* fed = interaction_.anchor->getOutputConnect(interaction_.anchorPad)) {
          const int fedInput = fed->findInputConnectFor(interaction_.anchor.get(), interaction_.anchorPad);
          editor.disconnectNodes(getIteratorFor(fed->graphNode(), atNode), fedInput, true);
        }
        editor.connectNodes(destination, input, source, true);
        if (getVob() && getVob()->getStateFlag()) TransitStatus::manager().notifyChange(getVob());
        disableETime();
        endInteraction();
        structureChanged(edit_);
      }
    }
  } else {
    if (FXGraphViewNode* up = node->getInputConnect(input)) {
      EasyBackup step(edit_);
      interaction_ = Interaction();
      interaction_.kind = Interaction::holdingWire;
      interaction_.anchoredAtInput = false;
      interaction_.anchor = up;
      interaction_.anchorPad = up->findOutputConnectFor(node.get(), input);
      editor.disconnectNodes(getIteratorFor(node->graphNode(), clickedNode), input, true);
      node->disconnectInput(input);
      up->disconnectOutput(interaction_.anchorPad);
      structureChanged(edit_);
      interaction_.fixedEnd = up->getOutputPos(static_cast<unsigned char>(interaction_.anchorPad));
    } else {
      interaction_ = Interaction();
      interaction_.kind = Interaction::holdingWire;
      interaction_.anchoredAtInput = true;
      interaction_.anchor = node;
      interaction_.anchorPad = input;
      interaction_.fixedEnd = node->getInputPos(static_cast<unsigned long>(input));
    }
    interaction_.dragStart = {mouse_get_current_x() - getX(), mouse_get_current_y() - getY()};
    enableETime();
  }
  busy_ = false;
  return true;
}

bool FXGraphView::handleOutputClicked(Ux::Ptr<FXGraphViewNode> node, int output) {
  if (!node->graphNode() || !edit_) return true;
  Glib::UpdateDeferrer defer;
  busy_ = true;
  FXEditor editor(edit_, 0, getPrimaryChanIx());
  if (interaction_.anchor) {
    // A wire hanging from an input is dropped on the spare output slot.
    if (interaction_.anchoredAtInput && output == static_cast<int>(node->outputTable().size())) {
      EditGraphIterator destination = getIteratorFor(interaction_.anchor->graphNode(), atNode);
      EditGraphIterator source = getIteratorFor(node->graphNode(), atNode);
      if (editor.canConnectNodes(destination, interaction_.anchorPad, source)) {
        if (getVob()) getVob()->makeBackup();
        disableETime();
        const int pad = interaction_.anchorPad;
        endInteraction();
        editor.disconnectNodes(destination, pad, true);
        editor.connectNodes(destination, pad, source, true);
        if (getVob() && getVob()->getStateFlag()) TransitStatus::manager().notifyChange(getVob());
        structureChanged(edit_);
      }
    }
  } else {
    if (FXGraphViewNode* fed = node->getOutputConnect(output)) {
      EasyBackup step(edit_);
      interaction_ = Interaction();
      interaction_.kind = Interaction::holdingWire;
      interaction_.anchoredAtInput = true;
      interaction_.anchor = fed;
      interaction_.anchorPad = fed->findInputConnectFor(node.get(), output);
      editor.disconnectNodes(getIteratorFor(fed->graphNode(), atNode), interaction_.anchorPad, true);
      fed->disconnectInput(interaction_.anchorPad);
      node->disconnectOutput(output);
      structureChanged(edit_);
      interaction_.fixedEnd = fed->getInputPos(static_cast<unsigned long>(interaction_.anchorPad));
    } else {
      interaction_ = Interaction();
      interaction_.kind = Interaction::holdingWire;
      interaction_.anchoredAtInput = false;
      interaction_.anchor = node;
      interaction_.anchorPad = output;
      interaction_.fixedEnd = node->getOutputPos(static_cast<unsigned char>(output));
    }
    interaction_.dragStart = {mouse_get_current_x() - getX(), mouse_get_current_y() - getY()};
    enableETime();
  }
  busy_ = false;
  return true;
}
