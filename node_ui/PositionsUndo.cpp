#include "node_ui/PositionsUndo.h"

#include "node_ui/NodeUIPosManager.h"

PositionsUndo::PositionsUndo(Ux::Ptr<NodeUIPosManager> manager) : manager_(std::move(manager)) {
  saved_.reserve(manager_->recordCount());
  for (const NodeUIRecBase* base : manager_->records().as<NodeUIRecBase>())
    if (const auto* rec = dynamic_cast<const NodeUIPosRec*>(base))
      saved_.push_back({rec->getNodeId(), rec->getDrawPosition(), rec->getManualPos(), rec->isManualPosSet()});
}

std::shared_ptr<const UndoExtra> PositionsUndo::capture() const { return std::make_shared<PositionsUndo>(manager_); }

void PositionsUndo::restore() const {
  // Quietly, record by record (what follows a record's draw position hears
  // even so), then once for all.
  for (const Saved& s : saved_)
    if (NodeUIPosRec* rec = manager_->openPosRec(s.id)) {
      rec->restoreManualState(s.manual.x, s.manual.y, s.manualSet);
      rec->setDrawPosition(s.draw, false);
    }
  manager_->sendGeneralUpdateNotification(restoredMsg);
}
