#include "app/ScriptRunner.h"

#include <algorithm>
#include <sstream>
#include <string_view>
#include <vector>

#include "app/ScriptText.h"
#include "host/core/EchoedText.h"
#include "host/edit/EditFile.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"
#include "host/ui/Checkbox.h"
#include "host/ui/DropDownMenuButton.h"
#include "host/ui/GlobManager.h"
#include "host/ui/HostClock.h"
#include "host/ui/ImageButton.h"
#include "host/ui/MenuGlob.h"
#include "host/ui/PushButton.h"
#include "host/ui/SentMessages.h"
#include "routing/MultiTrackRoutingView.h"

namespace fxgraph {
using namespace scripttext;

bool ScriptRunner::writableOutput(const std::string& file, std::string& why) const {
  UserFiles files = session_.userFiles();
  files.add(scriptPath_, "the script");
  const std::string what = files.clash(file);
  if (what.empty()) return true;
  why = echoedText(file) + " is " + what + "; it is not written over";
  return false;
}

bool ScriptRunner::runFile(const std::string& path, std::string& why) {
  scriptPath_ = path;
  constexpr std::size_t largest = std::size_t(16) << 20;
  std::string text, failure;
  if (!readBoundedFile(path, largest, text, failure)) {
    why = path + ": cannot run the script: " + failure;
    return false;
  }
  std::istringstream in(text);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    std::string reason;
    if (!runLine(line, reason)) {
      why = path + ":" + std::to_string(number) + ": " + reason;
      return false;
    }
  }
  return true;
}

XY<int> ScriptRunner::toScreen(XY<int> viewPixel) const {
  return session_.view() ? session_.view()->screenPos() + viewPixel : viewPixel;
}

bool ScriptRunner::mouse(int type, XY<int> viewPixel, int button, bool ctrl) {
  mouse_ = viewPixel;
  Event e;
  e.type = static_cast<Event::Type>(type);
  e.button = static_cast<Event::Button>(button);
  e.screen = toScreen(viewPixel);
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(ctrl ? Event::controlHeld : 0);
  return GlobManager::dispatch(e);
}

bool ScriptRunner::key(int code, unsigned modifiers) {
  Event e;
  e.type = Event::keyDown;
  e.key = code;
  e.modifiers = modifiers;
  e.screen = toScreen(mouse_);
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(modifiers);
  const bool taken = GlobManager::dispatch(e);
  e.type = Event::keyUp;
  GlobManager::dispatch(e);
  GlobManager::setKeyboardModifiers(0);
  GlobManager::processDeletions();
  return taken;
}

bool ScriptRunner::nodeCentre(const std::string& id, XY<int>& at, std::string& why) const {
  IdStamp node;
  if (!IdStamp::fromString(id, node)) {
    why = echoedText(id) + " is not a node id (a.b.c)";
    return false;
  }
  Ux::Ptr<FXGraphViewNode> n = session_.view() ? session_.view()->findViewRecForNode(node) : nullptr;
  if (!n) {
    why = "no node " + id + " in the view";
    return false;
  }
  bringIntoView(*n);
  // The middle of the box below the title bar: the body, clear of pads.
  const auto box = n->calcPixelExtents();
  const auto title = n->getTitleBarRect();
  at = {(box.x0 + box.x1) / 2, (box.y0 + std::min(box.y1, title.y0)) / 2};
  return true;
}

bool ScriptRunner::screenClick(XY<int> at, int button) {
  Event e;
  e.type = Event::mouseDown;
  e.button = static_cast<Event::Button>(button);
  e.screen = at;
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(0);
  const bool taken = GlobManager::dispatch(e);
  e.type = Event::mouseUp;
  GlobManager::dispatch(e);
  GlobManager::processDeletions();
  return taken;
}

Glob* ScriptRunner::panelWidget(const std::string& name) const {
  FXGraphTool* p = session_.panel();
  if (!p) return nullptr;
  if (name == "ToggleTemplates") return p->toggleTemplatesButton();
  if (name == "TidyNodes") return p->tidyButton();
  if (name == "undoBtn") return p->undoButton();
  if (name == "redoBtn") return p->redoButton();
  if (name == "autoPos") return p->autoPosCheckbox();
  if (name == "orientation") return p->orientationMenu();
  if (name == "view") return p->getView();
  if (name == "templatesList") return p->getTemplatesList();
  // The frame's close box: it asks before closing what is not saved.
  if (name == "close") return p->getTitleWidget(1);
  return nullptr;
}

std::string ScriptRunner::widgetNames() const {
  return "ToggleTemplates, TidyNodes, undoBtn, redoBtn, autoPos, orientation, view, templatesList, close";
}

std::string ScriptRunner::widgetMessage(Glob* widget) const {
  FXGraphTool* p = session_.panel();
  if (p && widget == p->autoPosCheckbox())
    return std::string(Checkbox::messagePrefix) + (p->autoPosCheckbox()->getState() ? "Off" : "On");
  if (auto* button = dynamic_cast<Button*>(widget)) return button->getMessage().str();
  return {};
}

bool ScriptRunner::pickMenuEntry(const std::string& entry, std::string& why) {
  MenuGlob* menu = MenuGlob::current();
  if (!menu) {
    why = "no menu came up";
    return false;
  }
  int index = -1;
  if (!integer(entry, index)) {
    const MenuItems& items = menu->items();
    for (std::size_t i = 0; i < items.size() && index < 0; ++i)
      if (toUTF8(items[i].label).str() == entry) index = static_cast<int>(i);
  }
  if (index < 0 || index >= static_cast<int>(menu->items().size())) {
    std::string offered;
    for (const MenuItem& item : menu->items())
      offered += (offered.empty() ? "\"" : ", \"") + toUTF8(item.label).str() + "\"";
    menu->close();
    GlobManager::processDeletions();
    why = "the menu has no entry " + echoedText(entry) + " (it offers " + offered + ")";
    return false;
  }
  const MenuItem item = menu->items()[static_cast<std::size_t>(index)];
  const Glob::PixelBox row = menu->itemBox(index);
  const XY<int> at = menu->screenPos() + XY<int>{(row.x0 + row.x1) / 2, (row.y0 + row.y1) / 2};
  const bool handled = screenClick(at, Event::left);
  session_.lastMessage = Session::LastMessage{item.message.empty() ? toUTF8(item.label).str() : item.message.str(),
                                              handled && item.active};
  return true;
}

bool ScriptRunner::choose(const std::string& name, const std::string& entry, std::string& why) {
  Glob* widget = panelWidget(name);
  if (!widget) {
    why = "the panel has no widget " + echoedText(name) + " (" + widgetNames() + ")";
    return false;
  }
  const XY<int> centre = widget->screenPos() + XY<int>{widget->width() / 2, widget->height() / 2};
  if (dynamic_cast<DropDownMenuButton*>(widget)) {
    screenClick(centre, Event::left);
  } else {
    // A context menu: a right click where the widget has nothing else.
    Event e;
    e.type = Event::mouseDown;
    e.button = Event::right;
    e.screen = widget == session_.view() ? toScreen(emptyViewPixel()) : centre;
    GlobManager::dispatch(e);
    e.type = Event::mouseUp;
    GlobManager::dispatch(e);
  }
  SentMessages sent;
  if (!pickMenuEntry(entry, why)) return false;
  // A drop-down tells its panel with a message of its own: the panel's
  // answer to it is what the choice got.
  if (dynamic_cast<DropDownMenuButton*>(widget) && session_.lastMessage) {
    session_.lastMessage->text = DropDownMenuButton::dropDownMenuButtonMsg;
    for (const SentMessages::Sent& m : sent.sent())
      if (m.text == DropDownMenuButton::dropDownMenuButtonMsg) session_.lastMessage->handled = m.handled;
  }
  return true;
}

bool ScriptRunner::dropTemplate(const std::string& name, XY<int> viewPixel, std::string& why) {
  DDVideoEffectsList* list = session_.panel()->getTemplatesList();
  if (!list) {
    why = "the templates list is hidden";
    return false;
  }
  int found = -1;
  for (int row = 0; row < list->rowCount() && found < 0; ++row) {
    list->scrollToRow(row, false);
    const Glob::PixelBox box = list->rowBox(row);
    const EffectTemplateSummary* t = list->templateAt({(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2});
    if (t && toUTF8(t->name).str() == name) found = row;
  }
  if (found < 0) {
    why = "the templates list offers no template " + echoedText(name);
    return false;
  }
  list->scrollToRow(found, true);
  const Glob::PixelBox box = list->rowBox(found);
  const XY<int> from = list->screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2};
  screenDrag(from, toScreen(viewPixel));
  return true;
}

void ScriptRunner::screenDrag(XY<int> from, XY<int> to) {
  Event e;
  e.button = Event::left;
  e.time = msecsNow();
  GlobManager::setKeyboardModifiers(0);
  e.type = Event::mouseDown;
  e.screen = from;
  GlobManager::dispatch(e);
  // In steps, as a hand moves, far enough to count as a drag; let go at the end.
  e.type = Event::mouseMove;
  for (int i = 1; i <= 4; ++i) {
    e.screen = {from.x + (to.x - from.x) * i / 4, from.y + (to.y - from.y) * i / 4};
    GlobManager::dispatch(e);
  }
  e.type = Event::mouseUp;
  e.screen = to;
  GlobManager::dispatch(e);
}

bool ScriptRunner::closePanel(std::string& why) { return session_.closePanel(why); }

void ScriptRunner::bringIntoView(const FXGraphViewNode& node) const {
  FXGraphView* view = session_.view();
  if (!view) return;
  // As a person brings the tool forward and scrolls to a node before
  // clicking it: re-centred only when part of its box lies outside the view area.
  if (FXGraphTool* panel = session_.panel(); panel && GlobManager::roots().back() != panel) panel->popToTop(false);
  const auto w = view->getWindowPos();
  const auto b = node.calcPixelExtents();
  if (b.x0 >= w.x0 && b.x1 <= w.x1 && b.y0 >= w.y0 && b.y1 <= w.y1) return;
  Vector<IdStamp> ids;
  ids.push_back(node.getNodeID());
  view->ensureNodeListVisible(ids, 2);
  view->redraw();
}

XY<int> ScriptRunner::emptyViewPixel() const {
  FXGraphView* view = session_.view();
  if (!view) return {};
  const auto w = view->getWindowPos();
  for (int y = w.y1 - 30; y > w.y0 + 30; y -= 10)
    for (int x = w.x0 + 30; x < w.x1 - 30; x += 10) {
      bool free = true;
      for (const auto& n : view->nodes()) {
        const auto b = n->pixelBox();
        free = free && !(x > b.x0 - 20 && x < b.x1 + 20 && y > b.y0 - 20 && y < b.y1 + 20);
      }
      if (free) return {x, y};
    }
  return {(w.x0 + w.x1) / 2, (w.y0 + w.y1) / 2};
}

} // namespace fxgraph
