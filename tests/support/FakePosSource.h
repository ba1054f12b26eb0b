#pragma once
#include <cstddef>
#include <initializer_list>
#include <map>

#include "host/core/IdStamp.h"
#include "host/core/Ptr.h"
#include "host/core/XY.h"
#include "node_ui/NodeUIPosRec.h"
#include "node_ui/NodeUIPosSource.h"
#include "node_ui/VidRouting.h"

namespace testsupport {

// A position source standing in for the graph view: owns one position record
// per node id, made on first request (or only those made up front), and an
// orientation the test sets.
class FakePosSource : public NodeUIPosSource {
public:
  using Orientation = VidRouting::Orientations::Orientation;

  explicit FakePosSource(Orientation orientation = VidRouting::Orientations::LeftToRight) : orientation_(orientation) {}
  // Only these nodes have records; any other id has none.
  FakePosSource(std::initializer_list<IdStamp> nodes, Orientation orientation = VidRouting::Orientations::LeftToRight);

  NodeUIPosRec* getPosRecForNode(const IdStamp& node) override;
  Orientation getOrientation() const override { return orientation_; }
  void setOrientation(Orientation o) { orientation_ = o; }

  // The record of a node without making one; null when there is none.
  NodeUIPosRec* find(const IdStamp& node) const;
  // Makes (or returns) a node's record even when records are not made on demand.
  NodeUIPosRec* add(const IdStamp& node);
  void remove(const IdStamp& node) { records_.erase(node); }
  // The draw position of a node's record; the record must exist.
  XY<double> pos(const IdStamp& node) const;
  std::size_t size() const { return records_.size(); }
  const std::map<IdStamp, Ux::Ptr<NodeUIPosRec>>& records() const { return records_; }

private:
  std::map<IdStamp, Ux::Ptr<NodeUIPosRec>> records_;
  bool onDemand_ = true;
  Orientation orientation_;
};

} // namespace testsupport
