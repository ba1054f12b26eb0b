#pragma once
#include "GrphToolApi.h"
#include "host/notify/NotifyWithDisable.h"

class NodeUIManagerBase;
class NodeUIRecBase;

// A client of one node UI manager at a time. Records travel in the messages
// as "%p" text and are only used while alive: deletion is announced before a
// record goes.
class GRPHTOOL_API NodeUIManagerClient : public Notifiable {
public:
  ~NodeUIManagerClient() override;

  // Drops any manager followed so far; then, for a manager, subscribes to
  // "nodeRecAdded", "nodeRecDeleted" and "NodeManagerGeneral", in that order.
  virtual void registerWith(NodeUIManagerBase* manager);

  virtual void newNodeRecNotify(NodeUIRecBase* rec) = 0;
  virtual void nodeRecDeletedNotify(NodeUIRecBase* rec) = 0;
  virtual void nodeManagerGeneralNotify(const LightweightString<char>& text) = 0;

private:
  int handleRecAdded(const NotifyMsg& msg);
  int handleRecDeleted(const NotifyMsg& msg);
  int handleGeneral(const NotifyMsg& msg);
};

// A client of one node UI record at a time ("nodeRecUpdate").
class GRPHTOOL_API NodeUIRecClient : public Notifiable {
public:
  ~NodeUIRecClient() override;

  virtual void registerWith(NodeUIRecBase* rec);
  virtual void nodeRecUpdateNotify(const NotifyMsg& msg) = 0;

private:
  int handleUpdate(const NotifyMsg& msg);
};

// The record whose address a message carries ("%p"), or null.
GRPHTOOL_API NodeUIRecBase* recordFromMessageText(const LightweightString<char>& text);
