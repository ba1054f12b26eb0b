#pragma once
#include "GrphToolApi.h"
#include "node_ui/NodeUIManagerBase.h"
#include "node_ui/NodeUIPosRec.h"
#include "node_ui/VidRouting.h"

// The one position manager of an edit, bound to it as "NodePosManager", with
// one NodeUIPosRec per graph node. Layer "J", version 1.0, no own data.
class GRPHTOOL_API NodeUIPosManager : public NodeUIManagerBase {
  STRM_DECLARE_LAYER(NodeUIPosManager, NodeUIManagerBase)
public:
  static StreamClassRegistrar STRM_L_NodeUIPosManager_registrar_;
  static constexpr const char* bindingName = "NodePosManager";

  NodeUIPosManager() = default;
  explicit NodeUIPosManager(const EditPtr& edit) : NodeUIManagerBase(edit) {}
  ~NodeUIPosManager() override;

  // The edit's manager, made and bound on first request; null for no edit.
  static Ux::Ptr<NodeUIPosManager> getManagerFor(const EditPtr& edit);

  NodeUIPosRec* openPosRec(const IdStamp& node) const;
  // The node's record, made (at the origin, no manual position) when missing.
  NodeUIPosRec* createPosRec(const IdStamp& node, const Cookie& edit);
  // A new record placed by hand at (x, y), with the invalid cookie; null
  // when the node already has one.
  NodeUIPosRec* createPosRec(const IdStamp& node, double x, double y);

  NodeUIRecBase* createNewNodeRec(NodeUIManagerBase* owner) const override;

  // The orientation the edit's graph is laid out in, kept with its records
  // while the edit is open (it is the view's preference that persists).
  VidRouting::Orientations::Orientation getOrientation() const noexcept { return orientation_; }
  void setOrientation(VidRouting::Orientations::Orientation o) noexcept { orientation_ = o; }

  // Every record's positions, so that each undo step of the edit brings
  // back where its nodes were.
  std::shared_ptr<const UndoExtra> undoState() const override;

  void pack(PStream&) const {}
  void unpack(PStream&) {}

private:
  VidRouting::Orientations::Orientation orientation_ = VidRouting::Orientations::LeftToRight;
};
