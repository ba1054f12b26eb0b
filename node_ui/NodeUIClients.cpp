#include "node_ui/NodeUIClients.h"

#include <cstdio>

#include "node_ui/NodeUIManagerBase.h"
#include "node_ui/NodeUIRecBase.h"

NodeUIRecBase* recordFromMessageText(const LightweightString<char>& text) {
  void* address = nullptr;
  if (std::sscanf(text.c_str(), "%p", &address) != 1) return nullptr;
  return static_cast<NodeUIRecBase*>(address);
}

NodeUIManagerClient::~NodeUIManagerClient() = default;

void NodeUIManagerClient::registerWith(NodeUIManagerBase* manager) {
  releaseSubscriptions();
  if (!manager) return;
  Notifier& n = manager->getNotify();
  keepSubscription(n.registerInternal(this, &NodeUIManagerClient::handleRecAdded, NodeUIManagerBase::recAddedMsgType_));
  keepSubscription(
      n.registerInternal(this, &NodeUIManagerClient::handleRecDeleted, NodeUIManagerBase::recDeletedMsgType_));
  keepSubscription(n.registerInternal(this, &NodeUIManagerClient::handleGeneral, NodeUIManagerBase::generalMsgType_));
}

int NodeUIManagerClient::handleRecAdded(const NotifyMsg& msg) {
  newNodeRecNotify(recordFromMessageText(msg.text));
  return 0;
}

int NodeUIManagerClient::handleRecDeleted(const NotifyMsg& msg) {
  nodeRecDeletedNotify(recordFromMessageText(msg.text));
  return 0;
}

int NodeUIManagerClient::handleGeneral(const NotifyMsg& msg) {
  const LightweightString<char> text = msg.text;
  nodeManagerGeneralNotify(text);
  return 0;
}

NodeUIRecClient::~NodeUIRecClient() = default;

void NodeUIRecClient::registerWith(NodeUIRecBase* rec) {
  releaseSubscriptions();
  if (!rec) return;
  keepSubscription(
      rec->getNotify().registerInternal(this, &NodeUIRecClient::handleUpdate, NodeUIRecBase::recUpdateMsgType_));
}

int NodeUIRecClient::handleUpdate(const NotifyMsg& msg) {
  nodeRecUpdateNotify(msg);
  return 0;
}
