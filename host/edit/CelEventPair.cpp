#include "host/edit/CelEventPair.h"

#include "host/edit/GraphNodeKinds.h"

bool ce_handle::valid() const {
  return edit_ && channel_ >= 0 && channel_ < edit_->getNumChans() && cel_ < edit_->getChan(channel_).cels.size();
}

IdStamp ce_handle::id() const {
  if (!valid()) return {};
  const Cel& c = edit_->getChan(channel_).cels[cel_];
  return c.kind == Cel::Kind::graph ? c.ref : IdStamp();
}

bool ce_handle::setEffectGraph(const IdStamp& head) {
  if (!valid() || !edit_->openNode(head)) return false;
  Cel& c = edit_->getChan(channel_).cels[cel_];
  c.kind = Cel::Kind::graph;
  c.ref = head;
  edit_->setDirty(true);
  return true;
}

CelEventPair::CelEventPair(const EditPtr& edit, int channel, double time) : edit_(edit), channel_(channel) {
  if (!edit_ || channel < 0 || channel >= edit_->getNumChans()) return;
  const auto& cels = edit_->getChan(channel).cels;
  for (std::size_t i = 0; i < cels.size(); ++i)
    if (cels[i].contains(time)) celIndex_ = static_cast<int>(i);
}

const Cel* CelEventPair::cel() const {
  return valid() ? &edit_->getChan(channel_).cels[static_cast<std::size_t>(celIndex_)] : nullptr;
}

double CelEventPair::editTime() const { return valid() ? cel()->start : 0; }

double CelEventPair::endEditTime() const { return valid() ? cel()->end : 0; }

bool CelEventPair::isBlack() const { return !valid() || cel()->kind == Cel::Kind::black; }

bool CelEventPair::isEffect() const { return valid() && cel()->kind == Cel::Kind::graph; }

Cookie CelEventPair::stripCookie() const {
  if (!valid()) return invalid_cookie;
  if (isEffect()) return Cookie(edit_->getCookie().id(), Cookie::effectGraphKind, 0);
  if (auto material = edit_->openObject<MaterialUsageNode>(cel()->ref)) return material->getMaterialCookie().stripped();
  return invalid_cookie;
}

ce_handle CelEventPair::getEffectHandle() const {
  if (!valid()) return {};
  return ce_handle(edit_, channel_, static_cast<std::size_t>(celIndex_));
}

IdStamp CelEventPair::getMaterialId() const {
  return valid() && cel()->kind == Cel::Kind::material ? cel()->ref : IdStamp();
}
