#include "host/edit/FXGraphNodeBase.h"

#include <atomic>

namespace {
NotifyMsgType nodeChangedMsgType() {
  static const NotifyMsgType type = NotifyMsgTypeDictionary::instance().intern("graphNodeChanged");
  return type;
}
std::atomic<uint64_t> changes{0};
} // namespace

FXGraphNodeBase::~FXGraphNodeBase() { countChange(); }

uint64_t FXGraphNodeBase::changeCount() noexcept { return changes.load(std::memory_order_relaxed); }

void FXGraphNodeBase::countChange() noexcept { changes.fetch_add(1, std::memory_order_relaxed); }

void FXGraphNodeBase::startBatchChange(const EffectModification& modification) {
  if (batchDepth_++ == 0) pending_ = modification;
}

void FXGraphNodeBase::endBatchChange() {
  if (batchDepth_ == 0) return;
  if (--batchDepth_ == 0) {
    NotifierEvent<EffectModification> event;
    event.value = pending_;
    clients_.issueNotification(event, nodeChangedMsgType());
  }
}

void FXGraphNodeBase::notifyChanged(const EffectModification& modification) {
  if (batchDepth_ > 0) return; // the batch's end tells of it
  NotifierEvent<EffectModification> event;
  event.value = modification;
  clients_.issueNotification(event, nodeChangedMsgType());
}

FXGraphNodeClient::~FXGraphNodeClient() = default;

void FXGraphNodeClient::registerWith(FXGraphNodeBase* node) {
  if (node == node_ && (node == nullptr || (subscription_ && subscription_->active()))) return;
  subscription_.reset();
  node_ = node;
  if (!node) return;
  subscription_ = node->clientNotifier().registerInternal([this](const NotifierEvent<EffectModification>& e) {
    if (e.type == NotifyMsgTypeDictionary::objectDestroyedMsgType()) {
      node_ = nullptr;
      return 0;
    }
    generalUpdateNotification(e.value);
    return 0;
  });
}
