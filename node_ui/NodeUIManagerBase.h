#pragma once
#include <unordered_map>

#include "GrphToolApi.h"
#include "host/core/DLList.h"
#include "host/edit/Edit.h"
#include "host/notify/NotifyWithDisable.h"
#include "host/stream/StreamClassRegistrar.h"
#include "host/stream/Taggable.h"
#include "node_ui/NodeUIRecBase.h"

// A manager of per-node user-interface records, bound to one edit. Owns its
// records in list order, prunes those whose nodes have gone, and announces
// additions ("nodeRecAdded"), deletions ("nodeRecDeleted") and general
// changes ("NodeManagerGeneral"); nothing is sent while its suspension
// count is non-zero.
//
// Layer "N", version 1.0. Own data: the record count (32-bit), then each
// record's whole layer chain, in list order.
class GRPHTOOL_API NodeUIManagerBase : public Taggable, public NotifyWithDisable {
  STRM_DECLARE_LAYER(NodeUIManagerBase, Taggable)
public:
  static StreamClassRegistrar STRM_L_NodeUIManagerBase_registrar_;
  static const NotifyMsgType recAddedMsgType_;
  static const NotifyMsgType recDeletedMsgType_;
  static const NotifyMsgType generalMsgType_;
  // Passes on which the factory made no record before reading gives up.
  static constexpr uint32_t maxEmptyPasses = 64;

  NodeUIManagerBase();
  explicit NodeUIManagerBase(const EditPtr& edit);
  ~NodeUIManagerBase() override;
  // A copy of every record (cloned) and of the edit reference.
  NodeUIManagerBase& operator=(const NodeUIManagerBase& other);

  void init(const EditPtr& edit);
  // Sets the edit, prunes dead records and registers the rest with their nodes.
  void setEdit(const EditPtr& edit);
  const EditPtr& getEdit() const noexcept { return edit_; }

  NodeUIRecBase* findRec(const IdStamp& node) const;
  void addNewRec(NodeUIRecBase* rec);
  void deleteRec(NodeUIRecBase* rec);
  void nodeIsBeingDestroyed(NodeUIRecBase* rec);
  void removeDeadNodes();
  void flushList();

  void sendGeneralUpdateNotification(const LightweightString<char>& text);
  void sendRecAddedNotification(NodeUIRecBase* rec);
  void sendRecDeleteNotification(NodeUIRecBase* rec);

  const DLList& records() const noexcept { return records_; }
  std::size_t recordCount() const noexcept { return records_.size(); }

  void pack(PStream& s) const;
  void unpack(PStream& s);

  // An empty record of the concrete kind; none here.
  virtual NodeUIRecBase* createNewNodeRec(NodeUIManagerBase* owner) const;

private:
  bool recordIsLive(const NodeUIRecBase& rec) const;
  // Every change of the list goes through these, which keep the index.
  bool appendRecord(NodeUIRecBase* rec);
  void destroyRecord(NodeUIRecBase* rec);

  DLList records_{true};
  // The first record in list order for each node id: findRec without a walk.
  std::unordered_map<IdStamp, NodeUIRecBase*> firstForNode_;
  EditPtr edit_;
};
