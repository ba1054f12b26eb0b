#include "node_ui/NodeUIManagerBase.h"

#include <cstdio>

#include "host/notify/Log.h"

STRM_DEFINE_LAYER(NodeUIManagerBase, "N")
STRM_REGISTER_LAYER(NodeUIManagerBase);

const NotifyMsgType NodeUIManagerBase::recAddedMsgType_ = NotifyMsgTypeDictionary::instance().intern("nodeRecAdded");
const NotifyMsgType NodeUIManagerBase::recDeletedMsgType_ =
    NotifyMsgTypeDictionary::instance().intern("nodeRecDeleted");
const NotifyMsgType NodeUIManagerBase::generalMsgType_ =
    NotifyMsgTypeDictionary::instance().intern("NodeManagerGeneral");

namespace {
LightweightString<char> recordText(const NodeUIRecBase* rec) { return formatText("%p", static_cast<const void*>(rec)); }
} // namespace

NodeUIManagerBase::NodeUIManagerBase() = default;

NodeUIManagerBase::NodeUIManagerBase(const EditPtr& edit) : edit_(edit) {}

NodeUIManagerBase::~NodeUIManagerBase() { flushList(); }

NodeUIManagerBase& NodeUIManagerBase::operator=(const NodeUIManagerBase& other) {
  if (this == &other) return *this;
  flushList();
  edit_ = other.edit_;
  for (NodeUIRecBase* rec : other.records_.as<NodeUIRecBase>()) {
    Ux::Ptr<Streamable> copy = rec->clone(Streamable::BuilderType{});
    auto* copied = dynamic_cast<NodeUIRecBase*>(copy.get());
    if (!copied) continue;
    copied->assign(rec);
    copied->setManager(this);
    appendRecord(copied);
  }
  return *this;
}

void NodeUIManagerBase::init(const EditPtr& edit) {
  flushList();
  edit_ = edit;
}

void NodeUIManagerBase::setEdit(const EditPtr& edit) {
  edit_ = edit;
  removeDeadNodes();
  for (NodeUIRecBase* rec : records_.as<NodeUIRecBase>()) rec->registerWithNode();
}

NodeUIRecBase* NodeUIManagerBase::findRec(const IdStamp& node) const {
  auto it = firstForNode_.find(node);
  return it == firstForNode_.end() ? nullptr : it->second;
}

bool NodeUIManagerBase::appendRecord(NodeUIRecBase* rec) {
  if (!records_.append(rec)) return false;
  firstForNode_.try_emplace(rec->getNodeId(), rec);
  return true;
}

void NodeUIManagerBase::destroyRecord(NodeUIRecBase* rec) {
  const IdStamp id = rec->getNodeId();
  const bool wasFirst = findRec(id) == rec;
  records_.destroy(rec);
  if (!wasFirst) return;
  // The next record for the node, if any, is now the first.
  firstForNode_.erase(id);
  for (NodeUIRecBase* other : records_.as<NodeUIRecBase>())
    if (other->getNodeId() == id) {
      firstForNode_[id] = other;
      break;
    }
}

void NodeUIManagerBase::addNewRec(NodeUIRecBase* rec) {
  if (!rec || !appendRecord(rec)) return;
  rec->setManager(this);
  rec->registerWithNode();
  sendRecAddedNotification(rec);
  if (edit_) edit_->setDirty(true);
}

void NodeUIManagerBase::deleteRec(NodeUIRecBase* rec) {
  if (!records_.contains(rec)) return;
  // Announced first: clients may still use the record while they hear of it.
  sendRecDeleteNotification(rec);
  destroyRecord(rec);
  if (edit_) edit_->setDirty(true);
}

void NodeUIManagerBase::nodeIsBeingDestroyed(NodeUIRecBase* rec) {
  if (records_.contains(rec)) destroyRecord(rec);
}

bool NodeUIManagerBase::recordIsLive(const NodeUIRecBase& rec) const {
  EditPtr edit;
  if (!edit.i_open(rec.getCookie())) return false;
  Ux::Ptr<TagBase> tag = edit->getTagBag().openObject(rec.getNodeId());
  return tag && tag->instance();
}

void NodeUIManagerBase::removeDeadNodes() {
  if (!edit_) return;
  DLListRec* link = records_.head();
  while (link) {
    DLListRec* next = link->next();
    if (!recordIsLive(*static_cast<NodeUIRecBase*>(link))) destroyRecord(static_cast<NodeUIRecBase*>(link));
    link = next;
  }
}

void NodeUIManagerBase::flushList() {
  records_.flush();
  firstForNode_.clear();
}

void NodeUIManagerBase::sendGeneralUpdateNotification(const LightweightString<char>& text) {
  issueNotification(text, generalMsgType_);
}

void NodeUIManagerBase::sendRecAddedNotification(NodeUIRecBase* rec) {
  issueNotification(recordText(rec), recAddedMsgType_);
}

void NodeUIManagerBase::sendRecDeleteNotification(NodeUIRecBase* rec) {
  issueNotification(recordText(rec), recDeletedMsgType_);
}

NodeUIRecBase* NodeUIManagerBase::createNewNodeRec(NodeUIManagerBase*) const { return nullptr; }

void NodeUIManagerBase::pack(PStream& s) const {
  // Stale records are never saved. Pruning changes the list, not the
  // manager's meaning, so it is done even when writing a const manager.
  const_cast<NodeUIManagerBase*>(this)->removeDeadNodes();
  s.setUnsignedLong(static_cast<uint32_t>(records_.size()));
  for (const NodeUIRecBase* rec : records_.as<NodeUIRecBase>()) s.writeObject(*rec);
}

void NodeUIManagerBase::unpack(PStream& s) {
  flushList();
  const uint32_t count = s.getUnsignedLong();
  if (s.error()) return;
  // Each record takes at least minimumRecordBytes, so no honest count exceeds this.
  const uint64_t possible = s.remaining() / minimumRecordBytes;
  uint32_t read = 0;
  for (uint32_t i = 0; i < count; ++i) {
    if (i >= possible) {
      s.failRead(formatText(" Record count %u cannot fit in the %llu bytes left; stopped after %u records.", count,
                            static_cast<unsigned long long>(s.remaining()), read));
      return;
    }
    Ux::Ptr<NodeUIRecBase> rec(createNewNodeRec(this));
    if (!rec) {
      debugPrintf("Danger Will Robinson! ::createNewNodeRec() returned NULL!\n");
      continue;
    }
    const uint64_t at = s.position();
    const int result = rec->STRM_hierarchyUnpack(s);
    // A record that read nothing, or left the stream failing, means the
    // stream ran out before the count did, whatever the code says.
    if (result == StreamResult::error || result == StreamResult::unexpectedEof || s.error() || s.position() == at) {
      s.failRead(formatText(" Record %u of %u at offset %llu could not be read (result %d); kept the %u before it.",
                            i + 1, count, static_cast<unsigned long long>(at), result, read));
      return;
    }
    appendRecord(rec.get());
    ++read;
  }
}
