#include "host/ui/CompoundEffectPanel.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>

#include "host/config/Resources.h"
#include "host/edit/ParamBase.h"
#include "host/edit/TransitStatus.h"
#include "host/notify/Log.h"
#include "host/ui/MessageBox.h"
#include "host/ui/PushButton.h"
#include "host/ui/Slider.h"
#include "host/ui/TextField.h"
#include "host/ui/UifStd.h"

namespace {
constexpr const char* upMsg = "paramUp ";
constexpr const char* downMsg = "paramDown ";
constexpr const char* slideMsg = "paramSlide ";
constexpr const char* typeMsg = "paramType ";
constexpr int buttonSize = UifStd::getRowHeight();
constexpr int sliderWidth = 120, fieldWidth = 64;
constexpr int controlsWidth = sliderWidth + fieldWidth + 2 * buttonSize + 5 * UifStd::getWidgetGap();
constexpr int panelWidth = 220 + controlsWidth;

std::wstring valueText(double v) {
  char text[32];
  std::snprintf(text, sizeof text, "%.4g", v);
  return std::wstring(text, text + std::strlen(text));
}

// A slider's ends: 0 to 1, widened to whole numbers round a value beyond.
std::pair<double, double> rangeFor(double v) { return {std::min(0.0, std::floor(v)), std::max(1.0, std::ceil(v))}; }

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
  setReserve(0, controlsWidth);
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
  const std::vector<std::string> keys = fx ? GenericParam::ParamBase::keysOf(*fx) : std::vector<std::string>();
  if (!fx)
    rows.push_back({resourceStrW(10007), {}, false});
  else if (keys.empty())
    rows.push_back({resourceStrW(13026), {}, false});
  std::vector<double> shown;
  for (const std::string& key : keys) {
    const std::vector<double> values = GenericParam::ParamBase::valuesOf(*fx, key);
    const bool colour = key == GenericParam::colourKey || key == GenericParam::secondColourKey;
    for (std::size_t i = 0; i < values.size(); ++i) {
      static const char* const parts[] = {" red", " green", " blue"};
      const std::string label = colour && i < 3     ? key + parts[i]
                                : values.size() > 1 ? key + " " + std::to_string(i + 1)
                                                    : key;
      rows.push_back({toWide(label), {}, false});
      wanted.push_back({key, i});
      shown.push_back(values[i]);
    }
  }
  // Controls are made again only when the rows stand for other values: a
  // click changes a value while its control is still handling the click.
  const bool sameControls =
      wanted.size() == controls_.size() &&
      std::equal(wanted.begin(), wanted.end(), controls_.begin(),
                 [](const Control& a, const Control& b) { return a.key == b.key && a.index == b.index; });
  if (!sameControls) {
    for (const Control& c : controls_)
      for (Glob* g : std::initializer_list<Glob*>{c.down, c.up, c.slider, c.field}) removeWidget(g, true);
    controls_ = std::move(wanted);
  }
  setRows(std::move(rows));
  if (!sameControls) makeControls();
  for (std::size_t i = 0; i < controls_.size(); ++i) {
    const auto [lo, hi] = rangeFor(shown[i]);
    controls_[i].slider->set(lo, hi, shown[i]);
    controls_[i].field->setText(LightweightString<wchar_t>(valueText(shown[i])));
  }
  if (GlobManager::initialised()) redraw();
}

void CompoundEffectPanel::makeControls() {
  const int gap = UifStd::getWidgetGap();
  for (std::size_t i = 0; i < controls_.size(); ++i) {
    const int dy = static_cast<int>(i) * UifStd::getRowHeight();
    const std::string n = std::to_string(i);
    Control& c = controls_[i];
    c.up = new PushButton(L"+", LightweightString<char>(upMsg + n), buttonSize, buttonSize);
    c.down = new PushButton(L"-", LightweightString<char>(downMsg + n), buttonSize, buttonSize);
    c.field = new TextField({}, LightweightString<char>(typeMsg + n), {fieldWidth, buttonSize});
    c.slider = new Slider(0, 1, 0, LightweightString<char>(slideMsg + n), {sliderWidth, buttonSize});
    addChild(c.up, UserTopRight(gap, dy));
    addChild(c.down, UserTopRight(2 * gap + buttonSize, dy));
    addChild(c.field, UserTopRight(3 * gap + 2 * buttonSize, dy));
    addChild(c.slider, UserTopRight(4 * gap + 2 * buttonSize + fieldWidth, dy));
  }
}

bool CompoundEffectPanel::setParam(const std::string& key, std::size_t index, double value) {
  GenericParam::ParamBase param(getVob(), node_, key, index);
  return param.exists() && param.requestValueChange(value);
}

bool CompoundEffectPanel::stepParam(const std::string& key, std::size_t index, int steps) {
  GenericParam::ParamBase param(getVob(), node_, key, index);
  if (!param.exists()) return false;
  // Rounded, so that steps up and down come back to the same value.
  return param.requestValueChange(std::round((param.getValue() + steps * step) * 1e6) / 1e6);
}

bool CompoundEffectPanel::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  for (const char* prefix : {slideMsg, typeMsg}) {
    const int i = controlIndex(msg, prefix);
    if (i < 0 || static_cast<std::size_t>(i) >= controls_.size()) continue;
    // Copied: the change makes the panel read its rows again.
    const Control c = controls_[static_cast<std::size_t>(i)];
    if (sender == c.slider) {
      setParam(c.key, c.index, std::round(c.slider->value() * 1e4) / 1e4);
      return true;
    }
    if (sender == c.field) {
      const std::wstring typed(c.field->text().str());
      wchar_t* end = nullptr;
      const double value = std::wcstod(typed.c_str(), &end);
      const bool number = !typed.empty() && end && *end == L'\0' && std::isfinite(value);
      if (!number || !setParam(c.key, c.index, value)) {
        if (!number) makeMessage(L"\"" + c.field->text() + L"\" is not a number", getPalette());
        refresh();
      }
      return true;
    }
  }
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
