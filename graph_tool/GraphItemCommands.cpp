#include "graph_tool/GraphItemCommands.h"

#include "host/config/Resources.h"
#include "host/edit/CelEventPair.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"
#include "host/edit/PopOutInfo.h"
#include "host/edit/TransitStatus.h"
#include "host/edit/TransitionsEditor.h"
#include "host/render/UtrImporter.h"
#include "host/render/VidRenderUtils.h"
#include "host/ui/CompoundEffectPanel.h"
#include "host/ui/EditViewer.h"
#include "host/ui/EffectTemplatePanel.h"
#include "host/ui/FloatingLogMetadataPanel.h"
#include "host/ui/GlobManager.h"
#include "host/ui/MessageBox.h"

namespace GraphItemCommands {
namespace {

XY<int> mousePosition() { return {mouse_get_current_x(), mouse_get_current_y()}; }

void graphPositionCommand(Vob* vob, const LightweightString<char>& sub, EditGraphIterator& at, const Palette& palette) {
  const EditPtr& edit = vob->getEdit();
  if (sub == "remove_xfade") {
    TransitionsEditor(vob).removeVideoTransition(at.getChanIndex(-1), at.getTime());
  } else if (sub == "tile") {
    GlobCreationInfo info;
    info.border = Border{0, 0, 15};
    EffectTemplatePanel::InitArgs args(info, at, Cookie());
    args.creationInfo.size = EffectTemplatePanel::calcSize(Cookie());
    Drawable::disableRedraws();
    auto* panel = new EffectTemplatePanel(args);
    const XY<int> where = GlobManager::getSafePosForGlob(
        panel->canvas(), GlobManager::getPosForGlob(args.creationInfo, Glob::BottomLeft(mousePosition())),
        args.creationInfo.size);
    panel->setPos(where.x, where.y);
    GlobManager::realize(panel);
    Drawable::enableRedraws();
  } else if (sub == "remove_utr") {
    if (vob != Vob::getRecordMachine()) {
      makeMessage(resourceStrW(11285), palette);
      return;
    }
    if (vob->getStateFlag()) TransitStatus::manager().standDown(vob);
    EasyBackup step(edit);
    FXEditor(edit).destroyNode(at, true);
    edit->addModification({EditModification(EditModification::structure)}, true);
  } else if (sub == "cycle_inputs") {
    EasyBackup step(edit);
    if (auto* effect = dynamic_cast<EffectInstance*>(at.getNode().get())) FXEditor(edit).cycleInputs(*effect);
    edit->addModification({EditModification(EffectModification::eConnections)}, true);
  } else if (sub == "import_render") {
    UtrImporter::createImporter(vob, at, palette);
  } else {
    // The parameters panel, on the vob that shows the position's edit.
    const EditPtr posEdit = at.getCurrentPosEdit();
    if (posEdit == edit) {
      CompoundEffectPanel::create(vob, at, "params");
      return;
    }
    Vob* other = VobManager::getVobWithCookie(posEdit->getCookie());
    if (!other) {
      const double start = at.getRange(-1, 0);
      const double t = (at.getTime() - start) * at.getCompoundAlpha() + start;
      EditViewer* viewer = makeEditViewer("tilev", posEdit->getCookie(), mousePosition() - XY<int>(50, 50), t, {});
      if (!viewer) return;
      set_it(viewer);
      other = viewer->getVob();
    }
    CompoundEffectPanel::create(other, at, "params");
  }
}

} // namespace

void split(const LightweightString<char>& msg, std::size_t prefixLength, LightweightString<char>& sub,
           LightweightString<char>& state) {
  const LightweightString<char> rest = msg.substr(prefixLength);
  const std::size_t blank = rest.find(' ');
  if (blank == LightweightString<char>::npos) {
    // No blank: no sub-command, and the state is the whole message.
    sub = LightweightString<char>(std::string());
    state = msg;
    return;
  }
  sub = rest.substr(0, blank);
  state = rest.substr(blank + 1);
}

bool handle(Vob* vob, const LightweightString<char>& msg, const Palette& palette) {
  LightweightString<char> sub, state;
  if (msg.startsWith("fxutr")) {
    split(msg, 5, sub, state);
    EditGraphIterator at = FXEditor::getIteratorFor(EditGraphIteratorState(state));
    if (vob && vob->getEdit() && at.isValid()) graphPositionCommand(vob, sub, at, palette);
    return true;
  }
  if (msg.startsWith("render_effect")) {
    split(msg, 13, sub, state);
    EditGraphIterator at{EditGraphIteratorState(state)};
    if (vob && at.isValid()) {
      vob->makeBackup();
      Render::VidRenderUtils::unRender(CelEventPair(at.getCurrentPosEdit(), at.getChanIndex(-1), at.getTime()), true);
    }
    return true;
  }
  if (msg.startsWith("popOut")) {
    split(msg, 6, sub, state);
    EditGraphIterator at = FXEditor::getIteratorFor(EditGraphIteratorState(state));
    popOutItem(at, sub == "tile" ? tiledViewer : logPanel, palette);
    return true;
  }
  return false;
}

VobClient* popOutItem(EditGraphIterator& at, PopOutItem kind, const Palette& palette) {
  if (!at.isValid()) return nullptr;
  // The channel here is the root's (-2), not the current node's.
  return popOutItem(at.getCurrentPosEdit(), at.getChanIndex(-2), at.getTime(), kind, palette);
}

VobClient* popOutItem(const EditPtr& edit, int channel, double time, PopOutItem kind, const Palette& palette) {
  const PopOutInfo info = getPopOutShotInfo(edit, channel, time);
  if (info.kind == 'I') {
    if (!info.message.empty()) makeMessage(toWide(info.message), palette);
    return nullptr;
  }
  if (kind == logPanel) {
    FloatingLogMetadataPanel* panel = FloatingLogMetadataPanel::create(info.cookie, mousePosition());
    return panel;
  }
  if (EditViewer* viewer = makeEditViewer("tilev", info.cookie, mousePosition() - XY<int>(50, 50), info.time, {}))
    set_it(viewer);
  return nullptr;
}

} // namespace GraphItemCommands
