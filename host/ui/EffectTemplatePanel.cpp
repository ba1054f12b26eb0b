#include "host/ui/EffectTemplatePanel.h"

#include <cstdio>

#include "host/config/Resources.h"
#include "host/edit/EffectInstance.h"
#include "host/render/EffectTemplateManager.h"
#include "host/ui/UifStd.h"

namespace {
LightweightString<wchar_t> valuesText(const std::vector<double>& values) {
  std::string text;
  for (double v : values) {
    char number[32];
    std::snprintf(number, sizeof number, "%s%.4g", text.empty() ? "" : ", ", v);
    text += number;
  }
  return toWide(text);
}
} // namespace

EffectTemplatePanel::InitArgs::InitArgs(const GlobCreationInfo& info, const EditGraphIterator& at,
                                        const Cookie& templateCookie_)
    : iterator(at), templateCookie(templateCookie_) {
  creationInfo = info;
  if (creationInfo.size.x <= 0 || creationInfo.size.y <= 0) creationInfo.size = calcSize(templateCookie);
}

EffectTemplatePanel::InitArgs::~InitArgs() = default;

XY<int> EffectTemplatePanel::calcSize(const Cookie&) { return {300, 8 * UifStd::getRowHeight()}; }

EffectTemplatePanel::EffectTemplatePanel(const InitArgs& args)
    : TextRowsPanel(args), time_(args.iterator.getTime()), templateCookie_(args.templateCookie) {
  if (args.iterator.isValid()) {
    edit_ = args.iterator.getEdit()->getCookie();
    node_ = args.iterator.getNode()->getId();
    editChanges_ = args.iterator.getEdit()->modificationNotifier().registerInternal(
        [this](const NotifierEvent<EditModifications>& e) {
          if (e.type != NotifyMsgTypeDictionary::objectDestroyedMsgType()) refresh();
          return 0;
        });
  }
  refresh();
}

EffectTemplatePanel::~EffectTemplatePanel() = default;

void EffectTemplatePanel::refresh() {
  EditPtr edit;
  EditGraphIterator at;
  if (edit.i_open(edit_)) at = EditGraphIterator(edit, time_, node_, EditGraphIterator::positionAtNode);
  if (!at.isValid()) {
    setTitle(resourceStrW(13021) + L" : " + resourceStrW(10007), UifStd::getTitleFont());
    setRows({{resourceStrW(10007), {}, false}});
    return;
  }
  const Ux::Ptr<FXGraphNodeBase> node = at.getNode();
  setTitle(resourceStrW(13021) + L" : " + node->getName(), UifStd::getTitleFont());
  std::vector<Row> rows{{resourceStrW(13021), node->getName(), false}};
  const LightweightString<char> tag = node->tagTypeId();
  if (!tag.empty()) {
    LightweightString<wchar_t> tagText = toWide(tag);
    EffectTemplateSummary summary;
    if (EffectTemplateManager::instance().findTemplate(tag, summary) && !summary.name.empty())
      tagText += L" (" + summary.name + L")";
    rows.push_back({resourceStrW(13022), tagText, false});
  }
  if (node->getNumInputs() > 0) {
    rows.push_back({resourceStrW(13023), {}, true});
    for (unsigned i = 0; i < node->getNumInputs(); ++i) {
      const IdStamp slot = node->getInputTrackId(i);
      IdStamp channel;
      const auto feeder = EditGraphIterator::resolveInput(*edit, slot, time_, channel);
      rows.push_back({node->getInputName(i),
                      !slot.valid() ? resourceStrW(13025)
                      : feeder      ? feeder->getName()
                                    : resourceStrW(10007),
                      false});
    }
  }
  if (auto* effect = dynamic_cast<EffectInstance*>(node.get())) {
    rows.push_back({resourceStrW(13024), {}, true});
    if (effect->params().empty()) rows.push_back({resourceStrW(13026), {}, false});
    for (const auto& [key, values] : effect->params()) rows.push_back({toWide(key), valuesText(values), false});
  }
  setRows(std::move(rows));
}
