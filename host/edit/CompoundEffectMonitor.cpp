#include "host/edit/CompoundEffectMonitor.h"

#include <algorithm>
#include <set>

#include "host/edit/EditGraphIterator.h"

CompoundEffectMonitorClient::~CompoundEffectMonitorClient() = default;

CompoundEffectMonitor::CompoundEffectMonitor(Vob* vob) : VobClient(vob, 1) {
  // The first channel is current to begin with.
  if (EditPtr edit = getEdit(); edit && edit->getNumChans() > 0) track_ = edit->getChanId(0);
}

CompoundEffectMonitor::~CompoundEffectMonitor() = default;

EditPtr CompoundEffectMonitor::getEdit() const { return getVob() ? getVob()->getEdit() : EditPtr(); }

int CompoundEffectMonitor::getKinds() const {
  EditPtr edit = getEdit();
  int kinds = 0;
  if (!edit) return kinds;
  for (int i = 0; i < edit->getNumChans(); ++i)
    kinds |= edit->getChan(i).type == TrackType::video ? hasVideo : hasAudio;
  return kinds;
}

void CompoundEffectMonitor::setTrackID(const IdStamp& track) {
  if (track == track_) return;
  ChangeDescription change;
  change.oldTrack = track_;
  change.newTrack = track;
  track_ = track;
  tell(change);
}

std::vector<Ux::Ptr<EffectInstance>> CompoundEffectMonitor::chain() const {
  std::vector<Ux::Ptr<EffectInstance>> out;
  EditPtr edit = getEdit();
  if (!edit || !getVob()) return out;
  EditGraphIterator it = EditGraphIterator::atChannel(edit, getVob()->getCurrentTime(), track_);
  std::set<IdStamp> seen;
  while (it.isValid()) {
    auto effect = Ux::dynamicCast<EffectInstance>(it.getNode());
    if (!effect || !seen.insert(effect->getId()).second) break;
    out.push_back(effect);
    if (!it.moveToInput(0)) break;
  }
  return out;
}

int CompoundEffectMonitor::getNumComponents(int what) const {
  return what == chainEffects ? static_cast<int>(chain().size()) : 0;
}

Ux::Ptr<EffectInstance> CompoundEffectMonitor::getEffect(int row) const {
  const auto effects = chain();
  return row >= 0 && static_cast<std::size_t>(row) < effects.size() ? effects[static_cast<std::size_t>(row)] : nullptr;
}

void CompoundEffectMonitor::registerForChangeNotifications(CompoundEffectMonitorClient* client, bool add) {
  std::erase(clients_, client);
  if (add && client) clients_.push_back(client);
}

void CompoundEffectMonitor::handleModifications(const EditModifications& mods, const VobModification& vobMod) {
  if (mods.empty() && !(vobMod.flags & (VobModification::timeChanged | VobModification::editReplaced))) return;
  ChangeDescription change;
  change.structural = true;
  change.oldTrack = change.newTrack = track_;
  tell(change);
}

void CompoundEffectMonitor::tell(const ChangeDescription& change) {
  const auto hearing = clients_;
  for (CompoundEffectMonitorClient* c : hearing)
    if (std::find(clients_.begin(), clients_.end(), c) != clients_.end()) c->handleCompoundEffectChanges(change);
}
