// The view's mouse dispatch, the pad click handlers and the drag state they
// share.
//
// Mouse dispatch (handleMouseEvent):
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
#include <cmath>

#include "graph_view/FXGraphView.h"
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

bool FXGraphView::handleMouseEvent(const Event& e) {
  mouse_ = e.position;
  if (e.type == Event::mouseDown) dropTooltip();
  // The navigator takes presses inside it, and the drag that follows.
  if (navigating_ || (e.type == Event::mouseDown && e.button == Event::left)) {
    PixelBox box, window;
    if (!navigating_ && navigatorGeometry(box, window) && e.position.x >= box.x0 && e.position.x <= box.x1 &&
        e.position.y >= box.y0 && e.position.y <= box.y1)
      navigating_ = true;
    if (navigating_) {
      if (e.type == Event::mouseDown || e.type == Event::mouseMove) navigateTo(e.position);
      if (e.type == Event::mouseUp) navigating_ = false;
      return true;
    }
  }
  if (e.type == Event::mouseMove && !moved_ && !panning_) updateHover(e.position);
  bool handled = false;
  const bool readOnly = getVob() && getVob()->isReadOnly();
  if (e.type == Event::mouseDown && e.button == Event::left) {
    if (!readOnly) {
      for (std::size_t k = 0; k < nodes_.size() && !handled; ++k) {
        Ux::Ptr<FXGraphViewNode> node = nodes_[k];
        if (!node->isVisibleFlag()) continue;
        int index = 0;
        switch (node->translateMouseEvent(e.position.x, e.position.y, index)) {
        case FXGraphViewNode::eOutput:
          handled = handleOutputClicked(node, index);
          break;
        case FXGraphViewNode::eInput:
          handled = handleInputClicked(node, index);
          break;
        case FXGraphViewNode::eBody: {
          double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
          graphToViewSpace(node->getL(), node->getB(), x0, y0);
          graphToViewSpace(node->getR(), node->getT(), x1, y1);
          grab_ = {static_cast<int>(e.position.x - (x0 + x1) / 2), static_cast<int>(e.position.y - (y0 + y1) / 2)};
          moved_ = node;
          setKeyboardFocus(node->getNodeID());
          enableETime();
          removeDraggedIFConnection();
          handled = true;
          break;
        }
        default:
          break;
        }
      }
    }
    if (!handled) {
      if (!readOnly && removeDraggedIFConnection()) {
        handled = true;
      } else {
        panning_ = true;
        panLast_ = {mouse_get_current_x(), mouse_get_current_y()};
        handled = true;
      }
    }
  } else if (e.type == Event::mouseUp && moved_) {
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
    moved_.reset();
    handled = true;
  } else if (e.type == Event::mouseMove && moved_ && isMouseMoveSignificant(e)) {
    if (mouseInAutoScrollArea()) setAutoScrollState(true);
    XY<double> p = viewToGraphSpace(XY<double>(e.position.x - grab_.x, e.position.y - grab_.y));
    constrainToCanvas(p);
    const bool wholeGraph = (keyboardModifiers() & Event::controlHeld) && manualPositioning();
    // One node moved alone changes only what it and its wires cover, before
    // and after: just that is drawn again.
    const PixelBox before = wholeGraph ? PixelBox() : damageOf(*moved_);
    if (wholeGraph) {
      const XY<double> at = moved_->getPosition();
      translateManuallyPositionedNodes(moved_->graphNode(), p.x - at.x, p.y - at.y, true);
    } else {
      moved_->setPosition(p.x, p.y, true);
    }
    // A node put somewhere by hand keeps that place.
    if (NodeUIPosRec* stored = moved_->storedRecord()) stored->setManualPos(p.x, p.y);
    keepCanvasAroundGraph(true);
    updateScrollbars(true);
    if (wholeGraph) {
      redraw();
    } else {
      const PixelBox after = damageOf(*moved_);
      redrawArea({std::min(before.x0, after.x0), std::min(before.y0, after.y0), std::max(before.x1, after.x1),
                  std::max(before.y1, after.y1)});
    }
    handled = true;
  } else if (e.type == Event::wheel) {
    handleZoom(e.wheelSteps);
    handled = true;
  } else if (e.type == Event::mouseUp && e.button == Event::right && !panning_) {
    handled = MenuGlob::processRightMouseClicks(this, e);
  } else {
    handled = checkForPanAndZoom(e) != 0;
    if (e.type == Event::mouseMove && anchor_) {
      // The dragged wire follows the mouse.
      redraw();
      handled = true;
    }
  }
  if (!mouseInAutoScrollArea()) setAutoScrollState(false);
  return handled;
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
  if (!anchor_ || !anchor_->graphNode() || !edit_) return false;
  const Ux::Ptr<FXGraphViewNode> anchor = anchor_;
  const int pad = anchorPad_;
  disableETime();
  anchor_.reset();
  FXEditor editor(edit_, 0, getPrimaryChanIx());
  if (anchoredAtInput_) {
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
  if (anchor_) {
    // Only a wire hanging from an output may end on an input, and only on a free one.
    if (!anchoredAtInput_ && !node->getInputConnect(input)) {
      EditGraphIterator destination = getIteratorFor(node->graphNode(), atNode);
      EditGraphIterator source = getIteratorFor(anchor_->graphNode(), atNode);
      if (editor.canConnectNodes(destination, input, source)) {
        if (getVob()) getVob()->makeBackup();
        // An output slot never feeds two inputs: what it fed lets go first.
        if (FXGraphViewNode* fed = anchor_->getOutputConnect(anchorPad_)) {
          const int fedInput = fed->findInputConnectFor(anchor_.get(), anchorPad_);
          editor.disconnectNodes(getIteratorFor(fed->graphNode(), atNode), fedInput, true);
        }
        editor.connectNodes(destination, input, source, true);
        if (getVob() && getVob()->getStateFlag()) TransitStatus::manager().notifyChange(getVob());
        disableETime();
        anchor_.reset();
        structureChanged(edit_);
      }
    }
  } else {
    if (FXGraphViewNode* up = node->getInputConnect(input)) {
      EasyBackup step(edit_);
      anchoredAtInput_ = false;
      anchor_ = up;
      anchorPad_ = up->findOutputConnectFor(node.get(), input);
      editor.disconnectNodes(getIteratorFor(node->graphNode(), clickedNode), input, true);
      node->disconnectInput(input);
      up->disconnectOutput(anchorPad_);
      structureChanged(edit_);
      fixedEnd_ = up->getOutputPos(static_cast<unsigned char>(anchorPad_));
    } else {
      anchoredAtInput_ = true;
      anchor_ = node;
      anchorPad_ = input;
      fixedEnd_ = node->getInputPos(static_cast<unsigned long>(input));
    }
    dragStart_ = {mouse_get_current_x() - getX(), mouse_get_current_y() - getY()};
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
  if (anchor_) {
    // A wire hanging from an input is dropped on the spare output slot.
    if (anchoredAtInput_ && output == static_cast<int>(node->outputTable().size())) {
      EditGraphIterator destination = getIteratorFor(anchor_->graphNode(), atNode);
      EditGraphIterator source = getIteratorFor(node->graphNode(), atNode);
      if (editor.canConnectNodes(destination, anchorPad_, source)) {
        if (getVob()) getVob()->makeBackup();
        disableETime();
        const int pad = anchorPad_;
        anchor_.reset();
        editor.disconnectNodes(destination, pad, true);
        editor.connectNodes(destination, pad, source, true);
        if (getVob() && getVob()->getStateFlag()) TransitStatus::manager().notifyChange(getVob());
        structureChanged(edit_);
      }
    }
  } else {
    if (FXGraphViewNode* fed = node->getOutputConnect(output)) {
      EasyBackup step(edit_);
      anchoredAtInput_ = true;
      anchor_ = fed;
      anchorPad_ = fed->findInputConnectFor(node.get(), output);
      editor.disconnectNodes(getIteratorFor(fed->graphNode(), atNode), anchorPad_, true);
      fed->disconnectInput(anchorPad_);
      node->disconnectOutput(output);
      structureChanged(edit_);
      fixedEnd_ = fed->getInputPos(static_cast<unsigned long>(anchorPad_));
    } else {
      anchoredAtInput_ = false;
      anchor_ = node;
      anchorPad_ = output;
      fixedEnd_ = node->getOutputPos(static_cast<unsigned char>(output));
    }
    dragStart_ = {mouse_get_current_x() - getX(), mouse_get_current_y() - getY()};
    enableETime();
  }
  busy_ = false;
  return true;
}
