#pragma once
#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/edit/EditGraphIterator.h"
#include "host/notify/Notifier.h"
#include "host/ui/TextRowsPanel.h"

// A panel that describes the effect at a graph position: its name, its
// template (tag type id, and the template's name when the template manager
// knows it), its inputs with what feeds each, and its parameter values. It
// follows the node by id, so it stays right when the graph is rewired or an
// undo puts back a copy of the node, and it reads the edit again whenever the
// edit tells of a change.
class FXHOST_API EffectTemplatePanel : public TextRowsPanel {
public:
  struct FXHOST_API InitArgs : StandardPanel::InitArgs {
    // A creation size of zero takes calcSize(templateCookie) across.
    InitArgs(const GlobCreationInfo& info, const EditGraphIterator& at, const Cookie& templateCookie);
    ~InitArgs() override;
    EditGraphIterator iterator;
    // A stored template to describe it by; this host keeps its templates by
    // tag type id, so the cookie is kept for the owner and the effect's own
    // tag finds its template.
    Cookie templateCookie;
  };

  explicit EffectTemplatePanel(const InitArgs& args);
  ~EffectTemplatePanel() override;

  // The size of the panel: every template panel is as wide here; its height
  // then follows its rows.
  static XY<int> calcSize(const Cookie& templateCookie);

  const Cookie& getTemplateCookie() const noexcept { return templateCookie_; }
  // Reads the effect again and shows it.
  void refresh();
  LightweightString<char> idstring() const override { return "EffectTemplatePanel"; }

private:
  Cookie edit_;
  double time_;
  IdStamp node_;
  Cookie templateCookie_;
  SubscriptionHandle editChanges_;
};
