#include "host/ui/CompoundEffectPanel.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "host/config/Resources.h"
#include "host/edit/ParamBase.h"
#include "host/edit/TransitStatus.h"
#include "host/notify/Log.h"
#include "host/ui/MessageBox.h"
#include "host/ui/PushButton.h"
#include "host/ui/UifStd.h"

namespace {
constexpr const char* upMsg = "paramUp ";
constexpr const char* downMsg = "paramDown ";
constexpr int buttonSize = UifStd::getRowHeight();
constexpr int panelWidth = 300;

// The control index after a button message's prefix, or -1.
int controlIndex(const LightweightString<char>& msg, std::string_view prefix) {
  if (!msg.startsWith(prefix)) return -1;
  const std::string_view rest = msg.view().substr(prefix.size());
  int index = -1;
  auto [end, ec] = std::from_chars(rest.data(), rest.data() + rest.size(), index);
  return ec == std::errc() && end == rest.data() + rest.size() ? index : -1;
}
} // namespace

CompoundEffectPanel* CompoundEffectPanel::create(Vob* vob, EditGraphIterator& at, LightweightString<char> page) {
  if (!vob || !vob->getEdit()) {
    Log::printf("No parameters panel: there is no vob or it shows no edit");
    return nullptr;
  }
  if (!at.isValid()) {
    Log::printf("No parameters panel: the graph position is not valid");
    return nullptr;
  }
  if (at.getCurrentPosEdit() != vob->getEdit()) {
    Log::printf("No parameters panel: the graph position is in another edit than the vob's");
    return nullptr;
  }
  const Ux::Ptr<FXGraphNodeBase> node = at.getNode();
  if (!dynamic_cast<EffectInstance*>(node.get())) {
    Log::printf("No parameters panel: %s is not an effect", toUTF8(node->getName()).c_str());
    return nullptr;
  }
  if (!page.empty() && page != "params") {
    Log::printf("No parameters panel: effects have no page \"%s\" (only \"params\")", page.c_str());
    return nullptr;
  }
  if (GlobManager::initialised())
    for (Glob* root : GlobManager::roots())
      if (auto* open = dynamic_cast<CompoundEffectPanel*>(root))
        if (open->getVob() == vob && open->node_ == node->getId()) {
          open->popToTop(true);
          return open;
        }
  auto* panel = new CompoundEffectPanel(vob, node->getId(), page.empty() ? "params" : page);
  // Its top-left corner at the mouse.
  const XY<int> at0 = GlobManager::mousePosition() - XY<int>{0, panel->height()};
  return TextRowsPanel::showOnScreen(panel, at0) ? panel : nullptr;
}

CompoundEffectPanel::CompoundEffectPanel(Vob* vob, const IdStamp& node, LightweightString<char> page)
    : TextRowsPanel([] {
        InitArgs args(XY<int>{panelWidth, 0});
        args.creationInfo.border = getDefaultBorder();
        return args;
      }()),
      VobClient(vob), node_(node), page_(std::move(page)) {
  setReserve(0, 2 * buttonSize + 2 * UifStd::getWidgetGap());
  refresh();
}

CompoundEffectPanel::~CompoundEffectPanel() = default;

Ux::Ptr<EffectInstance> CompoundEffectPanel::effect() const {
  return getVob() && getVob()->getEdit() ? getVob()->getEdit()->openObject<EffectInstance>(node_) : nullptr;
}

void CompoundEffectPanel::refresh() {
  const Ux::Ptr<EffectInstance> fx = effect();
  setTitle(resourceStrW(13024) + L" : " + (fx ? fx->getName() : resourceStrW(10007)), UifStd::getTitleFont());
  std::vector<Row> rows;
  std::vector<Control> wanted;
  if (!fx)
    rows.push_back({resourceStrW(10007), {}, false});
  else if (fx->params().empty())
    rows.push_back({resourceStrW(13026), {}, false});
  if (fx)
    for (const auto& [key, values] : fx->params())
      for (std::size_t i = 0; i < values.size(); ++i) {
        char value[32];
        std::snprintf(value, sizeof value, "%.4g", values[i]);
        const std::string label = values.size() > 1 ? key + " " + std::to_string(i + 1) : key;
        rows.push_back({toWide(label), toWide(value), false});
        wanted.push_back({key, i});
      }
  // Buttons are made again only when the rows stand for other values: a
  // click changes a value while its button is still handling the click.
  const bool sameControls =
      wanted.size() == controls_.size() &&
      std::equal(wanted.begin(), wanted.end(), controls_.begin(),
                 [](const Control& a, const Control& b) { return a.key == b.key && a.index == b.index; });
  if (!sameControls) {
    for (const Control& c : controls_) {
      removeWidget(c.down, true);
      removeWidget(c.up, true);
    }
    controls_ = std::move(wanted);
  }
  setRows(std::move(rows));
  if (sameControls) return;
  for (std::size_t i = 0; i < controls_.size(); ++i) {
    const int dy = static_cast<int>(i) * UifStd::getRowHeight();
    const std::string n = std::to_string(i);
    controls_[i].up = new PushButton(L"+", LightweightString<char>(upMsg + n), buttonSize, buttonSize);
    controls_[i].down = new PushButton(L"-", LightweightString<char>(downMsg + n), buttonSize, buttonSize);
    addChild(controls_[i].up, UserTopRight(UifStd::getWidgetGap(), dy));
    addChild(controls_[i].down, UserTopRight(2 * UifStd::getWidgetGap() + buttonSize, dy));
  }
  if (GlobManager::initialised()) redraw();
}

bool CompoundEffectPanel::stepParam(const std::string& key, std::size_t index, int steps) {
  GenericParam::ParamBase param(getVob(), node_, key, index);
  if (!param.exists()) return false;
  // Rounded, so that steps up and down come back to the same value.
  return param.requestValueChange(std::round((param.getValue() + steps * step) * 1e6) / 1e6);
}

bool CompoundEffectPanel::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  const int up = controlIndex(msg, upMsg), down = controlIndex(msg, downMsg);
  const int index = up >= 0 ? up : down;
  if (index >= 0 && static_cast<std::size_t>(index) < controls_.size()) {
    const Control& c = controls_[static_cast<std::size_t>(index)];
    if (sender == c.up || sender == c.down) {
      // Copied: the change makes the panel read its rows again.
      const std::string key = c.key;
      const std::size_t valueIndex = c.index;
      stepParam(key, valueIndex, up >= 0 ? 1 : -1);
      return true;
    }
  }
  return TextRowsPanel::handleMessageEvent(msg, sender);
}

void CompoundEffectPanel::handleModifications(const EditModifications&, const VobModification& vobMod) {
  if (vobMod.flags & VobModification::closing) {
    attachTo(nullptr);
    if (GlobManager::initialised()) GlobManager::requestDeletion(this);
    return;
  }
  refresh();
}
