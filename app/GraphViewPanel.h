#pragma once
#include "graph_view/FXGraphView.h"
#include "host/edit/Vob.h"
#include "host/ui/ScrollBar.h"
#include "host/ui/StandardPanel.h"

namespace fxgraph {

// The plain host panel that holds the graph view: the view fills the user
// area above a strip with the time slider. Messages sent to the panel from
// host menus go on to the view; control+Z and control+Y undo and redo.
class GraphViewPanel : public StandardPanel, public VobClient {
public:
  GraphViewPanel(Vob* vob, XY<int> size);
  ~GraphViewPanel() override;

  FXGraphView* view() const noexcept { return view_; }
  void resize(double w, double h) override;
  void draw() override;
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  bool handleKeyEvent(const Event& e) override;
  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;
  LightweightString<char> idstring() const override { return "GraphViewPanel"; }
  // Brings the title in line with the edit's name.
  void updateTitle();

private:
  int stripHeight() const;
  void syncSlider();

  FXGraphView* view_ = nullptr;
  ScrollBar* slider_ = nullptr;
};

} // namespace fxgraph
