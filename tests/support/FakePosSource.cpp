#include "tests/support/FakePosSource.h"

#include <stdexcept>

namespace testsupport {

FakePosSource::FakePosSource(std::initializer_list<IdStamp> nodes, Orientation orientation)
    : onDemand_(false), orientation_(orientation) {
  for (const IdStamp& id : nodes) add(id);
}

NodeUIPosRec* FakePosSource::getPosRecForNode(const IdStamp& node) {
  if (NodeUIPosRec* rec = find(node)) return rec;
  return onDemand_ ? add(node) : nullptr;
}

NodeUIPosRec* FakePosSource::find(const IdStamp& node) const {
  const auto it = records_.find(node);
  return it == records_.end() ? nullptr : it->second.get();
}

NodeUIPosRec* FakePosSource::add(const IdStamp& node) {
  Ux::Ptr<NodeUIPosRec>& rec = records_[node];
  if (!rec) rec = new NodeUIPosRec(nullptr, node, Cookie());
  return rec.get();
}

XY<double> FakePosSource::pos(const IdStamp& node) const {
  const NodeUIPosRec* rec = find(node);
  if (!rec) throw std::logic_error("no position record for " + node.asString().str());
  return rec->getDrawPosition();
}

} // namespace testsupport
