#pragma once
#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"
#include "host/edit/EffectModification.h"
#include "host/notify/Notifier.h"
#include "host/notify/NotifyWithDisable.h"
#include "host/stream/Taggable.h"


// A node of an edit's effect graph, kept in the edit's tag bag under its id.
// Clients (FXGraphNodeClient) hear of its changes; a batch change delivers
// one notification at its end.
class FXHOST_API FXGraphNodeBase : public Taggable {
public:
  FXGraphNodeBase() = default;
  explicit FXGraphNodeBase(const IdStamp& id, LightweightString<wchar_t> name = {})
      : id_(id), name_(std::move(name)) {}
  FXGraphNodeBase(const FXGraphNodeBase& o) : Taggable(o), id_(o.id_), name_(o.name_) {}
  ~FXGraphNodeBase() override;

  const IdStamp& getId() const noexcept { return id_; }
  const LightweightString<wchar_t>& getName() const noexcept { return name_; }
  void setName(const LightweightString<wchar_t>& name) { name_ = name; }

  // Changes made between these two reach clients as one notification.
  void startBatchChange(const EffectModification& modification);
  void endBatchChange();
  // Tells clients of a change at once (or at the end of the batch under way).
  void notifyChanged(const EffectModification& modification);

  NotifierEx<EffectModification>& clientNotifier() noexcept { return clients_; }

private:
  IdStamp id_;
  LightweightString<wchar_t> name_;
  NotifierEx<EffectModification> clients_;
  int batchDepth_ = 0;
  EffectModification pending_;
  bool pendingChange_ = false;
};

// An observer of one graph node. Registration holds a subscription, so the
// client and the node may go in either order.
class FXHOST_API FXGraphNodeClient {
public:
  FXGraphNodeClient() = default;
  FXGraphNodeClient(const FXGraphNodeClient&) {}
  FXGraphNodeClient& operator=(const FXGraphNodeClient&) { return *this; }
  virtual ~FXGraphNodeClient();

  // Follows the node (null: follows none).
  void registerWith(FXGraphNodeBase* node);
  FXGraphNodeBase* registeredNode() const noexcept { return node_; }

  // A change of the followed node.
  virtual void generalUpdateNotification(const EffectModification&) {}

private:
  FXGraphNodeBase* node_ = nullptr;
  SubscriptionHandle subscription_;
};
