#include "node_ui/NodeUIManagerBase.h"

#include <algorithm>
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
  // Room for the records the bytes can hold (a record takes at least its
  // two layer headers), not for whatever the count says.
  firstForNode_.reserve(static_cast<std::size_t>(std::min<uint64_t>(count, s.remaining() / 24)));
  // The count is only a promise: the loop ends when the bytes do, so a lying
  // count costs no more than the stream is long.
  uint32_t emptyPasses = 0;
  for (uint32_t i = 0; i < count; ++i) {
    Ux::Ptr<NodeUIRecBase> rec(createNewNodeRec(this));
    if (!rec) {
      debugPrintf("Danger Will Robinson! ::createNewNodeRec() returned NULL!\n");
      // Nothing is read on such a pass, so every later one would be the same.
      if (++emptyPasses >= maxEmptyPasses && i + 1 < count) {
        Log::printf("Position records: no record could be made for %u of %u records at offset %llu; the rest were "
                    "not read.",
                    emptyPasses, count, static_cast<unsigned long long>(s.position()));
        return;
      }
      continue;
    }
    const uint64_t at = s.position();
    rec->STRM_hierarchyUnpack(s);
    if (s.position() == at) {
      // Nothing was there to read: the stream ended before the count did.
      Log::printf("Position records: the stream ended at offset %llu after %u of %u records.",
                  static_cast<unsigned long long>(at), i, count);
      return;
    }
    // Whatever the chain's result, the record keeps what it read.
    appendRecord(rec.get());
  }
}
