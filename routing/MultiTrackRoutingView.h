#pragma once
// The routing of a compound effect over several tracks: one tab per track,
// and below the tabs the graph view of the video routing or the audio
// routing table of the selected track. It follows the vob's compound effect
// monitor: its tracks, its current track and its changes.
#include <vector>

#include "GrphToolApi.h"
#include "graph_view/FXGraphView.h"
#include "host/edit/CompoundEffectMonitor.h"
#include "host/ui/StandardPanel.h"
#include "host/ui/TabbedDialogue.h"
#include "routing/AudioRoutingView.h"

class GRPHTOOL_API MultiTrackRoutingView : public StandardPanel, public CompoundEffectMonitorClient {
public:
  struct GRPHTOOL_API InitArgs : StandardPanel::InitArgs {
    InitArgs(Vob* vob_, XY<int> size) : StandardPanel::InitArgs(size), vob(vob_) {}
    Vob* vob; // the player whose monitor the dialogue follows; not owned
  };

  explicit MultiTrackRoutingView(const InitArgs& args);
  ~MultiTrackRoutingView() override;

  // Opens the dialogue of a vob that has a compound effect monitor, or
  // raises the open one; null when the vob has no monitor.
  static MultiTrackRoutingView* openFor(Vob* vob);
  static MultiTrackRoutingView* findFor(const Vob* vob);

  void createViewWidget();
  bool createAudioViewWidget();
  bool createVideoViewWidget();
  void updateTracksWidget();

  PixelBox getUserArea() const override;
  MenuItems getMenuItems(const Event* e) override;
  bool handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) override;
  void handleCompoundEffectChanges(const ChangeDescription& change) override;
  void resize(double w, double h) override;
  LightweightString<char> idstring() const override { return "MultiTrackRoutingView"; }

  CompoundEffectMonitor* monitor() const noexcept { return monitor_; }
  FXGraphView* videoView() const noexcept { return videoView_; }
  TabbedDialogue* tabs() const noexcept { return tabs_; }
  AudioRoutingView* audioView() const noexcept { return audioView_; }
  const std::vector<LightweightString<wchar_t>>& pageIds() const noexcept { return pageIds_; }
  const std::vector<LightweightString<wchar_t>>& pageTitles() const noexcept { return pageTitles_; }

private:
  void selectTrackTab();

  Vob* vob_;
  CompoundEffectMonitor* monitor_ = nullptr;
  FXGraphView* videoView_ = nullptr;
  TabbedDialogue* tabs_ = nullptr;
  AudioRoutingView* audioView_ = nullptr;
  std::vector<LightweightString<wchar_t>> pageIds_;
  std::vector<LightweightString<wchar_t>> pageTitles_;
};
