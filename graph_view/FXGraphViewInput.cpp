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
// Pad clicks, one handler for both ends (the held end is the wire's anchor):
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
#include "graph_view/Framing.h"
#include "graph_view/HoverHints.h"
#include "graph_view/KeyboardFocus.h"
#include "graph_view/Navigator.h"
#include "graph_view/SearchToAdd.h"
#include "graph_view/ViewNotice.h"
#include "graph_view/ViewStills.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/TransitStatus.h"
#include "host/ui/MenuGlob.h"

namespace {
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
  notice_->mouse(e);
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
        // A wire held is let go as the node is taken. That changes the
        // edit, and the list is made again: the node is taken from the new one.
        if (removeDraggedIFConnection() && !(node = findViewRecForNode(node->getNodeID()))) return;
        double x0 = 0, y0 = 0, x1 = 0, y1 = 0;
        graphToViewSpace(node->getL(), node->getB(), x0, y0);
        graphToViewSpace(node->getR(), node->getT(), x1, y1);
        interaction_ = Interaction();
        interaction_.kind = Interaction::draggingNode;
        interaction_.grab = {static_cast<int>(e.position.x - (x0 + x1) / 2),
                             static_cast<int>(e.position.y - (y0 + y1) / 2)};
        interaction_.moved = node;
        keyboard_->set(node->getNodeID());
        interaction_.hold = TimerHold(*this);
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
  endInteraction();
}

void FXGraphView::dragMovedNode(const Event& e) {
  // The drag is one undo step: where everything was when it began. Taking
  // it lets go of what the history dropped, which may rebuild the list and
  // so end the drag.
  if (!interaction_.stepMade && edit_) {
    interaction_.stepMade = true;
    edit_->makeBackup();
    if (!movedNode()) return;
  }
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
  notice_->key(e);
  if (searchField().key(e)) return true;
  if (e.key == Event::keyEscape && interaction_.kind == Interaction::holdingWire) return putBackHeldWire();
  const bool shift = (e.modifiers & Event::shiftHeld) != 0;
  const bool commandLetter =
      e.key == 'f' || e.key == 'F' || e.key == 'p' || e.key == 'l' || e.key == 'n' || e.key == 'v';
  if (e.key == 'l') {
    if (!(getVob() && getVob()->isReadOnly())) arrange();
    return true;
  }
  if (e.key == 'n') {
    navigator_->setOn(!navigator_->on());
    return true;
  }
  if (e.key == 'v') {
    stills_->setOn(!stills_->on());
    return true;
  }
  // Tab, or a letter or digit that is no command, starts a search to add.
  if (e.key == Event::keyTab || (!commandLetter && e.key < 128 && std::isalnum(e.key))) {
    if (getVob() && getVob()->isReadOnly()) return false;
    return search_->open(e.key == Event::keyTab ? std::wstring() : std::wstring(1, static_cast<wchar_t>(e.key)));
  }
  if (e.key == 'f' || e.key == 'F') {
    if (!shift && e.key == 'f') {
      Framing::frame(*this);
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
  // The switch is an undo step of its own, as every change a person makes.
  edit_->makeBackup();
  effect->setActive(!effect->isActive());
  edit_->setDirty(true);
  edit_->addModification({EditModification(EffectModification::eActive, effect->getId())}, true);
  return true;
}

bool FXGraphView::removeDraggedIFConnection() {
  const WireEnd held = interaction_.held;
  if (!held.node || !held.node->graphNode() || !edit_) return false;
  endInteraction();
  FXEditor editor(edit_, 0, getPrimaryChanIx());
  if (held.atInput) {
    if (held.node->getInputConnect(held.pad)) {
      EasyBackup step(edit_);
      editor.disconnectNodes(getIteratorFor(held.node->graphNode(), EditGraphIterator::atNode), held.pad, true);
    }
  } else if (FXGraphViewNode* fed = held.node->getOutputConnect(held.pad)) {
    EasyBackup step(edit_);
    const int input = fed->findInputConnectFor(held.node.get(), held.pad);
    editor.disconnectNodes(getIteratorFor(fed->graphNode(), EditGraphIterator::atNode), input, true);
  }
  structureChanged(edit_);
  return true;
}

bool FXGraphView::putBackHeldWire() {
  const uint64_t revision = interaction_.pickUpRevision;
  endInteraction();
  // A wire taken off its pads goes back by taking its step back, unless
  // the edit changed since; a new wire changed nothing.
  if (revision != 0 && edit_ && edit_->revision() == revision) edit_->withdrawLastStep();
  redraw();
  return true;
}

bool FXGraphView::handleInputClicked(Ux::Ptr<FXGraphViewNode> node, int input) {
  return handlePadClicked({std::move(node), input, true});
}

bool FXGraphView::handleOutputClicked(Ux::Ptr<FXGraphViewNode> node, int output) {
  return handlePadClicked({std::move(node), output, false});
}

bool FXGraphView::handlePadClicked(const WireEnd& clicked) {
  if (!clicked.node->graphNode() || !edit_) return true;
  Glib::UpdateDeferrer defer;
  busy_ = true;
  FXEditor editor(edit_, 0, getPrimaryChanIx());
  if (interaction_.held.node)
    dropHeldWire(editor, clicked);
  else
    pickUpWire(editor, clicked);
  busy_ = false;
  return true;
}

void FXGraphView::dropHeldWire(FXEditor& editor, const WireEnd& clicked) {
  const WireEnd held = interaction_.held;
  // A wire joins an output to an input. A held output lands on a free input;
  // a held input lands on the spare output slot, never on a wired one.
  if (held.atInput == clicked.atInput) {
    notice_->say(held.atInput ? L"A wire from an input goes to an output" : L"A wire from an output goes to an input");
    return;
  }
  if (clicked.atInput ? clicked.node->getInputConnect(clicked.pad) != nullptr
                      : clicked.pad != static_cast<int>(clicked.node->outputTable().size())) {
    notice_->say(clicked.atInput ? L"That input is wired already: pick its wire up first"
                                 : L"A wire goes to a node's free output slot, the last one");
    return;
  }
  const WireEnd& in = clicked.atInput ? clicked : held;
  const WireEnd& out = clicked.atInput ? held : clicked;
  const EditGraphIterator destination = getIteratorFor(in.node->graphNode(), EditGraphIterator::atNode);
  const EditGraphIterator source = getIteratorFor(out.node->graphNode(), EditGraphIterator::atNode);
  if (!editor.canConnectNodes(destination, in.pad, source)) {
    notice_->say(L"That input cannot take this wire: it would make a loop, or the input is locked");
    return;
  }
  if (getVob()) getVob()->makeBackup();
  endInteraction();
  // One wire per pad: an output slot lets go of what it fed before it feeds
  // the clicked input; a held input is cleared before it takes the output.
  if (clicked.atInput) {
    if (FXGraphViewNode* fed = out.node->getOutputConnect(out.pad))
      editor.disconnectNodes(getIteratorFor(fed->graphNode(), EditGraphIterator::atNode),
                             fed->findInputConnectFor(out.node.get(), out.pad), true);
  } else {
    editor.disconnectNodes(destination, in.pad, true);
  }
  editor.connectNodes(destination, in.pad, source, true);
  if (getVob() && getVob()->getStateFlag()) TransitStatus::manager().notifyChange(getVob());
  structureChanged(edit_);
}

void FXGraphView::pickUpWire(FXEditor& editor, const WireEnd& clicked) {
  FXGraphViewNode* far =
      clicked.atInput ? clicked.node->getInputConnect(clicked.pad) : clicked.node->getOutputConnect(clicked.pad);
  // A free pad: a new wire hangs from it. A wired pad: the wire comes off
  // it, in its own undo step, and hangs from its far end.
  WireEnd held = clicked;
  if (far)
    held = {far,
            clicked.atInput ? far->findOutputConnectFor(clicked.node.get(), clicked.pad)
                            : far->findInputConnectFor(clicked.node.get(), clicked.pad),
            !clicked.atInput};
  interaction_ = Interaction();
  interaction_.kind = Interaction::holdingWire;
  interaction_.held = held;
  if (far) {
    EasyBackup step(edit_);
    const WireEnd& in = clicked.atInput ? clicked : held;
    const WireEnd& out = clicked.atInput ? held : clicked;
    // A clicked input is taken on the first path that reaches its node.
    const int option = clicked.atInput ? EditGraphIterator::positionAtNode : EditGraphIterator::atNode;
    editor.disconnectNodes(getIteratorFor(in.node->graphNode(), option), in.pad, true);
    in.node->disconnectInput(in.pad);
    out.node->disconnectOutput(out.pad);
    structureChanged(edit_);
  }
  if (far) interaction_.pickUpRevision = edit_->revision();
  interaction_.fixedEnd = held.atInput ? held.node->getInputPos(static_cast<unsigned long>(held.pad))
                                       : held.node->getOutputPos(static_cast<unsigned char>(held.pad));
  interaction_.dragStart = {mouse_get_current_x() - getX(), mouse_get_current_y() - getY()};
  interaction_.hold = TimerHold(*this);
}
