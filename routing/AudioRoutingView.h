#pragma once
// The chain of audio effects of one audio track at the current time, as a
// one-column table: one row per effect, the head of the chain (what the
// track's output hears) first, and a last row for the source that feeds the
// chain. Rows can be swapped with a neighbour, a click switches an effect on
// or off, and a right click offers the effect's commands.
#include <vector>

#include "GrphToolApi.h"
#include "host/edit/CelEventPair.h"
#include "host/edit/CompoundEffectMonitor.h"
#include "host/edit/EditModification.h"
#include "host/ui/StandardPanel.h"
#include "host/ui/TableWidget.h"
#include "host/ui/iTableAdaptor.h"

class GRPHTOOL_API AudioRoutingView : public StandardPanel, public iTableAdaptor, public CompoundEffectMonitorClient {
public:
  struct GRPHTOOL_API InitArgs : StandardPanel::InitArgs {
    InitArgs(CompoundEffectMonitor* monitor_, XY<int> size) : StandardPanel::InitArgs(size), monitor(monitor_) {}
    CompoundEffectMonitor* monitor; // not owned
    bool singleRow = false;         // claim exactly one effect row
  };

  // The tag type id of the audio crossfade, which keeps its place.
  static constexpr const char* crossfadeTag = "\\ZMV\\AUD\\FX\\XF";

  explicit AudioRoutingView(const InitArgs& args);
  ~AudioRoutingView() override;

  // Effect rows: the single-row flag's one, else the monitor's chain.
  int getNumNodes() const;
  Ux::Ptr<EffectInstance> getNode(int row) const;
  IdStamp getNodeID(int row) const;
  static bool canMove(const EffectInstance* effect);
  bool canMove(int row) const;

  // iTableAdaptor
  int getSize() const override;
  LightweightString<wchar_t> getFieldText(const TableCell& cell) const override;
  std::vector<ColumnDefinition> getColumnDefinitions() const override;
  bool canSwap(int a, int b) const override;
  void swapFields(int a, int b, int column) override;
  bool handleMouseClickEvent(const TableCell& cell, const Event& e) override;
  Colour getColourFor(int row, const Palette& palette) const override;
  bool drawField(const TableCell& cell, Glob& glob, const Ux::Box<int>& box) override;

  // The source row's name: the material's name, else the track's display name.
  LightweightString<wchar_t> getSegmentName(const CelEventPair& segment) const;
  void setTrack(const IdStamp& track);
  const IdStamp& getTrack() const noexcept { return track_; }
  // Reads the track's segment at the vob's current time again.
  void initForSegment();
  const LightweightString<wchar_t>& segmentName() const noexcept { return segmentName_; }
  // Edit changes to audio effects of the chain read the segment again.
  void handleCompoundEffectChanges(const EditModifications& modifications);
  void handleCompoundEffectChanges(const ChangeDescription& change) override;
  // The effect commands of the row under the mouse.
  MenuItems reviewMenu(const Event& e);

  TableWidget* table() const noexcept { return table_; }
  CompoundEffectMonitor* monitor() const noexcept { return monitor_; }
  MenuItems getMenuItems(const Event* e) override;
  void resize(double w, double h) override;
  LightweightString<char> idstring() const override { return "AudioRoutingView"; }

private:
  Vob* vob() const { return monitor_ ? monitor_->getVob() : nullptr; }
  EditPtr edit() const { return monitor_ ? monitor_->getEdit() : EditPtr(); }
  void changed(int kind);

  CompoundEffectMonitor* monitor_;
  bool singleRow_;
  IdStamp track_;
  LightweightString<wchar_t> segmentName_;
  TableWidget* table_ = nullptr;
};
