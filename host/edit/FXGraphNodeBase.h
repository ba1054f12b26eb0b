#pragma once
#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"
#include "host/edit/EffectModification.h"
#include "host/notify/Notifier.h"
#include "host/notify/NotifyWithDisable.h"
#include "host/stream/Taggable.h"

// The kind of picture or sound a node carries; channel types use the same numbers.
enum class TrackType { video = 1, audio = 2 };

// A node of an edit's effect graph, kept in the edit's tag bag under its id.
// Input slots name what feeds them by IdStamp: a graph node, or a channel
// (whatever that channel holds at the time looked at); (0, 0, 0) is a free
// slot. Clients (FXGraphNodeClient) hear of changes; a batch change delivers
// one notification at its end.
class FXHOST_API FXGraphNodeBase : public Taggable {
public:
  FXGraphNodeBase() { countChange(); }
  FXGraphNodeBase(const IdStamp& id, LightweightString<wchar_t> name, TrackType type = TrackType::video)
      : id_(id), name_(std::move(name)), trackType_(type) {
    countChange();
  }
  ~FXGraphNodeBase() override;

  const IdStamp& getId() const noexcept { return id_; }
  const LightweightString<wchar_t>& getName() const noexcept { return name_; }
  void setName(const LightweightString<wchar_t>& name) { name_ = name; }
  TrackType getTrackType() const noexcept { return trackType_; }

  // Input slots. Nodes without inputs (sources) have none.
  virtual unsigned getNumInputs() const { return 0; }
  virtual IdStamp getInputTrackId(unsigned) const { return {}; }
  // False for a slot the node does not have. With `notify` the node's
  // clients hear of the change (kind 5).
  virtual bool setInputTrackId(unsigned, const IdStamp&, bool) { return false; }
  virtual LightweightString<wchar_t> getInputName(unsigned) const { return {}; }

  // An independent copy with the same id (for undo snapshots).
  virtual Ux::Ptr<FXGraphNodeBase> cloneNode() const = 0;

  // Changes made between these two reach clients as one notification.
  void startBatchChange(const EffectModification& modification);
  void endBatchChange();
  // Tells clients of a change at once (or at the end of the batch under way).
  void notifyChanged(const EffectModification& modification);

  NotifierEx<EffectModification>& clientNotifier() noexcept { return clients_; }

  // Counts, process-wide, every change to what nodes' pictures are made of
  // (inputs, switches, parameters, sources) and every node made or gone,
  // whether or not it went through an edit: a picture made at one count is
  // current while the count stands.
  static uint64_t changeCount() noexcept;

protected:
  FXGraphNodeBase(const FXGraphNodeBase& o) : Taggable(o), id_(o.id_), name_(o.name_), trackType_(o.trackType_) {
    countChange();
  }
  static void countChange() noexcept;

private:
  IdStamp id_;
  LightweightString<wchar_t> name_;
  TrackType trackType_ = TrackType::video;
  NotifierEx<EffectModification> clients_;
  int batchDepth_ = 0;
  EffectModification pending_;
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
