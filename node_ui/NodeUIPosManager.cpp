#include "node_ui/NodeUIPosManager.h"

#include "node_ui/PositionsUndo.h"

STRM_DEFINE_LAYER(NodeUIPosManager, "J")
STRM_REGISTER_LAYER(NodeUIPosManager);

NodeUIPosManager::~NodeUIPosManager() = default;

Ux::Ptr<NodeUIPosManager> NodeUIPosManager::getManagerFor(const EditPtr& edit) {
  if (!edit) return nullptr;
  Ux::Ptr<NodeUIPosManager> manager = Ux::dynamicCast<NodeUIPosManager>(edit->openObjectInternal(bindingName));
  if (manager) {
    manager->setEdit(edit);
    return manager;
  }
  manager = new NodeUIPosManager(edit);
  edit->bindObjectToEdit(bindingName, manager);
  return manager;
}

NodeUIPosRec* NodeUIPosManager::openPosRec(const IdStamp& node) const {
  return dynamic_cast<NodeUIPosRec*>(findRec(node));
}

NodeUIPosRec* NodeUIPosManager::createPosRec(const IdStamp& node, const Cookie& edit) {
  if (NodeUIPosRec* existing = openPosRec(node)) return existing;
  auto* rec = new NodeUIPosRec(this, node, edit);
  addNewRec(rec);
  return rec;
}

NodeUIPosRec* NodeUIPosManager::createPosRec(const IdStamp& node, double x, double y) {
  if (findRec(node)) return nullptr;
  auto* rec = new NodeUIPosRec(this, node, invalid_cookie);
  rec->setManualPos(x, y);
  rec->setDrawPosition(x, y, false);
  addNewRec(rec);
  return rec;
}

NodeUIRecBase* NodeUIPosManager::createNewNodeRec(NodeUIManagerBase* owner) const {
  return new NodeUIPosRec(owner, IdStamp(0, 0, 0), invalid_cookie);
}

std::shared_ptr<const UndoExtra> NodeUIPosManager::undoState() const {
  if (recordCount() == 0) return nullptr;
  return std::make_shared<PositionsUndo>(Ux::Ptr<NodeUIPosManager>(const_cast<NodeUIPosManager*>(this)));
}
