#include "host/ui/FloatingLogMetadataPanel.h"

#include "host/config/Resources.h"
#include "host/edit/ProjectDatabase.h"
#include "host/notify/Log.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int panelWidth = 320;
}

FloatingLogMetadataPanel* FloatingLogMetadataPanel::create(const Cookie& shot, XY<int> position) {
  if (!shot.valid() || !EditManager::getProjdb().record(shot)) {
    Log::printf("No log panel: the project has no record of the shot %s", shot.asString().c_str());
    return nullptr;
  }
  if (!GlobManager::initialised()) {
    Log::printf("No log panel: there is no screen");
    return nullptr;
  }
  auto* panel = new FloatingLogMetadataPanel(shot);
  return TextRowsPanel::showOnScreen(panel, position) ? panel : nullptr;
}

FloatingLogMetadataPanel::FloatingLogMetadataPanel(const Cookie& shot)
    : TextRowsPanel([] {
        InitArgs args(XY<int>{panelWidth, 0});
        args.creationInfo.border = getDefaultBorder();
        return args;
      }()),
      shot_(shot) {
  Vob* shown = VobManager::getVobWithCookie(shot);
  attachTo(shown ? shown : Vob::getPlayMachine());
  refresh();
}

FloatingLogMetadataPanel::~FloatingLogMetadataPanel() = default;

void FloatingLogMetadataPanel::refresh() {
  const dbrecord* record = EditManager::getProjdb().record(shot_);
  const LightweightString<wchar_t> name = record ? toWide(record->get_field("name")) : resourceStrW(10007);
  setTitle(resourceStrW(13027) + L" : " + name, UifStd::getTitleFont());
  std::vector<Row> rows;
  if (!record)
    rows.push_back({resourceStrW(10007), {}, false});
  else {
    rows.push_back({L"name", name, false});
    for (const auto& [field, value] : record->fields())
      if (field != "name") rows.push_back({toWide(field), toWide(value), false});
  }
  setRows(std::move(rows));
}

void FloatingLogMetadataPanel::handleModifications(const EditModifications&, const VobModification& vobMod) {
  // The record outlives the vob: the panel stays, following nothing.
  if (vobMod.flags & VobModification::closing)
    attachTo(nullptr);
  else
    refresh();
}
