#pragma once
#include <cstddef>
#include <initializer_list>
#include <map>
#include <stdexcept>

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
  FakePosSource(std::initializer_list<IdStamp> nodes, Orientation o = VidRouting::Orientations::LeftToRight)
      : onDemand_(false), orientation_(o) {
    for (const IdStamp& id : nodes) add(id);
  }

  NodeUIPosRec* getPosRecForNode(const IdStamp& node) override {
    if (NodeUIPosRec* rec = find(node)) return rec;
    return onDemand_ ? add(node) : nullptr;
  }
  Orientation getOrientation() const override { return orientation_; }

  // The record of a node without making one; null when there is none.
  NodeUIPosRec* find(const IdStamp& node) const {
    const auto it = records_.find(node);
    return it == records_.end() ? nullptr : it->second.get();
  }
  // The draw position of a node's record; the record must exist.
  XY<double> pos(const IdStamp& node) const {
    if (const NodeUIPosRec* rec = find(node)) return rec->getDrawPosition();
    throw std::logic_error("no position record for " + node.asString().str());
  }
  std::size_t size() const { return records_.size(); }
  const std::map<IdStamp, Ux::Ptr<NodeUIPosRec>>& records() const { return records_; }

private:
  NodeUIPosRec* add(const IdStamp& node) {
    Ux::Ptr<NodeUIPosRec>& rec = records_[node];
    if (!rec) rec = new NodeUIPosRec(nullptr, node, Cookie());
    return rec.get();
  }

  std::map<IdStamp, Ux::Ptr<NodeUIPosRec>> records_;
  bool onDemand_ = true;
  Orientation orientation_;
};

} // namespace testsupport
