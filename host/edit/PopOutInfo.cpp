#include "host/edit/PopOutInfo.h"

#include <set>

#include "host/config/Resources.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/GraphNodeKinds.h"

BinItem::~BinItem() = default;

namespace {
PopOutInfo cannotPopOut(int resource, double time) {
  PopOutInfo info;
  info.kind = 'I';
  info.message = resourceStr(resource);
  info.time = time;
  return info;
}
} // namespace

PopOutInfo getPopOutShotInfo(const EditPtr& edit, int channel, double time) {
  if (!edit || channel < 0 || channel >= edit->getNumChans()) return cannotPopOut(13044, time);
  const Cel* cel = edit->getChan(channel).celAt(time);
  if (!cel || cel->kind == Cel::Kind::black) return cannotPopOut(13040, time);
  double start = cel->start;
  Ux::Ptr<FXGraphNodeBase> node = edit->openNode(cel->ref);
  // A chain that loops back on itself ends where it first repeats.
  std::set<IdStamp> seen;
  while (node && seen.insert(node->getId()).second) {
    if (auto* material = dynamic_cast<MaterialUsageNode*>(node.get())) {
      PopOutInfo info;
      info.cookie = material->getMaterialCookie();
      info.kind = 'M';
      info.time = time - start;
      return info;
    }
    if (dynamic_cast<ImageImportEffect*>(node.get())) return cannotPopOut(13041, time);
    if (dynamic_cast<ComplexBackgroundEffect*>(node.get())) return cannotPopOut(13042, time);
    if (node->getNumInputs() == 0) break;
    IdStamp via; // set when the slot names a channel: that channel's cel supplies the node
    node = EditGraphIterator::resolveInput(*edit, node->getInputTrackId(0), time, via);
    if (node && via.valid())
      if (const Cel* supplier = edit->getChan(edit->findChan(via)).celAt(time)) start = supplier->start;
  }
  return cannotPopOut(13043, time);
}
