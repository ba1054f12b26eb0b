#pragma once
#include "host/edit/Vob.h"
#include "host/ui/ScrollBar.h"
#include "host/ui/StandardPanel.h"

namespace fxgraph {

// A panel showing what a vob shows: the edit's channels with their cels over
// time and the play position, the picture at the current time, and a time
// slider that moves the vob's time.
class EditOverviewPanel : public StandardPanel, public VobClient {
public:
  EditOverviewPanel(Vob* vob, XY<int> size);
  ~EditOverviewPanel() override;

  void resize(double w, double h) override;
  void draw() override;
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  bool handleKeyEvent(const Event& e) override;
  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;
  LightweightString<char> idstring() const override { return "EditOverviewPanel"; }

private:
  PixelBox timelineBox() const;
  PixelBox stillBox() const;
  void drawTimeline();
  void drawStill();
  void syncSlider();
  double editLength() const;

  ScrollBar* slider_ = nullptr;
};

} // namespace fxgraph
