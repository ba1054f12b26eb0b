#pragma once
#include "GrphToolApi.h"
#include "host/core/Cookie.h"
#include "host/core/DLList.h"
#include "host/core/IdStamp.h"
#include "host/edit/FXGraphNodeBase.h"
#include "host/notify/NotifyWithDisable.h"
#include "host/stream/StreamClassRegistrar.h"
#include "host/stream/StreamableTraits.h"

class NodeUIManagerBase;

// One user-interface record about one graph node, kept by a manager bound to
// the node's edit. Identifies its node by IdStamp and its edit by Cookie,
// follows the node as its client, and announces its own updates
// ("nodeRecUpdate").
//
// Layer "L", version 1.1. Own data: the IdStamp encoding byte (2), the node
// id, and (from 1.1) the edit cookie's text form as a string.
class GRPHTOOL_API NodeUIRecBase : public DLListRec,
                                   public FXGraphNodeClient,
                                   public NotifyWithDisable,
                                   public Streamable {
  STRM_DECLARE_LAYER(NodeUIRecBase, Streamable)
public:
  static StreamClassRegistrar STRM_L_NodeUIRecBase_registrar_;
  static const NotifyMsgType recUpdateMsgType_;

  NodeUIRecBase();
  NodeUIRecBase(NodeUIManagerBase* manager, const IdStamp& node, const Cookie& edit);
  NodeUIRecBase(const NodeUIRecBase&) = delete;
  ~NodeUIRecBase() override;

  // Copies node id, cookie and layer version.
  NodeUIRecBase& operator=(const NodeUIRecBase& other);
  // Records are the same record when they are the same object.
  bool operator==(const DLListRec& other) const override { return this == &other; }

  const IdStamp& getNodeId() const noexcept { return nodeId_; }
  const Cookie& getCookie() const noexcept { return cookie_; }
  NodeUIManagerBase* getManager() const noexcept { return manager_; }
  void setManager(NodeUIManagerBase* manager) noexcept { manager_ = manager; }

  // Follows the graph node when the manager's edit holds it.
  void registerWithNode();
  // "nodeRecUpdate", unless this record's notifications are suspended.
  void sendUpdateNotification();
  void generalUpdateNotification(const EffectModification&) override {}

  void pack(PStream& s) const;
  void unpack(PStream& s);

protected:
  // An owning list holds a reference rather than deleting outright, so a
  // record still held elsewhere outlives its removal from the list.
  void adoptedByList() override { incRefCount(); }
  void disposeFromList() override { decRefCount(); }

private:
  NodeUIManagerBase* manager_ = nullptr;
  IdStamp nodeId_;
  Cookie cookie_;
};
