#include "node_ui/NodeUIPosRec.h"

#include <algorithm>

STRM_DEFINE_LAYER(NodeUIPosRec, "K")
STRM_REGISTER_LAYER(NodeUIPosRec);

NodeUIPosRec::NodeUIPosRec() { followOwnValues(); }

NodeUIPosRec::NodeUIPosRec(NodeUIManagerBase* manager, const IdStamp& node, const Cookie& edit)
    : NodeUIRecBase(manager, node, edit) {
  followOwnValues();
}

NodeUIPosRec::~NodeUIPosRec() = default;

// As their owner: a record is a client of both its values without a
// subscription to either, which counts when an edit holds many thousands.
void NodeUIPosRec::followOwnValues() {
  reserveRegistrations(2);
  followOwn(&drawX_);
  followOwn(&drawY_);
}

NodeUIPosRec& NodeUIPosRec::operator=(const NodeUIPosRec& other) {
  if (this == &other) return *this;
  NodeUIRecBase::operator=(other);
  drawX_.setValueQuietly(other.drawY_.getValue());
  drawY_.setValueQuietly(other.drawY_.getValue());
  manualX_ = other.manualX_;
  manualY_ = other.manualY_;
  manualSet_ = other.manualSet_;
  extra_ = other.extra_;
  return *this;
}

void NodeUIPosRec::setManualPos(double x, double y) {
  manualX_ = x;
  manualY_ = y;
  manualSet_ = true;
}

void NodeUIPosRec::setDrawPosition(double x, double y, bool notify) {
  if (x == drawX_.getValue() && y == drawY_.getValue()) return;
  // Observers of each coordinate still hear it; this record's own
  // valChangedNtfy is held back so that one call sends one update at most.
  {
    NotificationsSuspended quiet(this);
    drawX_ = x;
    drawY_ = y;
  }
  if (notify) sendUpdateNotification();
}

void NodeUIPosRec::valChangedNtfy(ValServer<double>*) { sendUpdateNotification(); }

void NodeUIPosRec::addDrawFollower(DrawFollower* follower) {
  if (follower && std::find(followers_.begin(), followers_.end(), follower) == followers_.end())
    followers_.push_back(follower);
}

void NodeUIPosRec::removeDrawFollower(DrawFollower* follower) { std::erase(followers_, follower); }

void NodeUIPosRec::ownedValNotify(ValServer<double>* server, NotifyMsgType type) {
  MultiValClient<double>::ownedValNotify(server, type);
  if (type != ValServerBase::valChangedMsgType_) return;
  for (std::size_t i = 0; i < followers_.size(); ++i) followers_[i]->drawMoved(*this);
}

void NodeUIPosRec::pack(PStream& s) const {
  s.setDouble(drawX_.getValue());
  s.setDouble(drawY_.getValue());
  s.setDouble(manualX_);
  s.setDouble(manualY_);
  s.setCookedChar(manualSet_ ? 1 : 0);
}

void NodeUIPosRec::unpack(PStream& s) {
  const double x = s.getDouble();
  const double y = s.getDouble();
  const double mx = s.getDouble();
  const double my = s.getDouble();
  const uint8_t flag = s.getCookedChar();
  if (s.error()) return;
  drawX_ = x;
  drawY_ = y;
  manualX_ = mx;
  manualY_ = my;
  manualSet_ = flag != 0;
  followOwnValues();
}
