#pragma once
#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/edit/Vob.h"
#include "host/ui/TextRowsPanel.h"

// A floating panel with a shot's project-database record, field by field,
// its name first. It follows a vob (the one showing the shot when one is
// open, else the current player) and reads the record again whenever that
// vob tells of a change.
class FXHOST_API FloatingLogMetadataPanel : public TextRowsPanel, public VobClient {
public:
  // The panel of a shot, its bottom-left corner at a screen position (moved
  // onto the screen). Null, with the reason in the host log, for a cookie
  // without a record, or no screen.
  static FloatingLogMetadataPanel* create(const Cookie& shot, XY<int> position);
  ~FloatingLogMetadataPanel() override;

  const Cookie& getShot() const noexcept { return shot_; }
  // Reads the record again and shows it.
  void refresh();

  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;
  LightweightString<char> vobClientId() const override { return "FloatingLogMetadataPanel"; }
  LightweightString<char> idstring() const override { return "FloatingLogMetadataPanel"; }

private:
  explicit FloatingLogMetadataPanel(const Cookie& shot);
  Cookie shot_;
};
