#pragma once
#include <vector>

#include "GrphToolApi.h"
#include "host/core/XY.h"
#include "node_ui/NodeUIRecBase.h"
#include "values/ValClient.h"
#include "values/ValServer.h"

// The position record of one graph node: an observable draw position (graph
// units, updated by the view and the layout) and a manual position set when
// the user places the node by hand, with its flag.
//
// Layer "K", version 1.0. Own data, 33 bytes: draw x, draw y, manual x,
// manual y (doubles), manual flag (one byte, 1 or 0).
class GRPHTOOL_API NodeUIPosRec : public NodeUIRecBase, public MultiValClient<double> {
  STRM_DECLARE_LAYER(NodeUIPosRec, NodeUIRecBase)
public:
  static StreamClassRegistrar STRM_L_NodeUIPosRec_registrar_;

  NodeUIPosRec();
  NodeUIPosRec(NodeUIManagerBase* manager, const IdStamp& node, const Cookie& edit);
  ~NodeUIPosRec() override;

  // Copies the source's draw y into both draw values (quietly), and the
  // manual position, flag and extra value. The source's draw x is not copied:
  // records have always been assigned this way.
  NodeUIPosRec& operator=(const NodeUIPosRec& other);

  // Stores the manual position and sets the flag; sends nothing.
  void setManualPos(double x, double y);
  // Restores a saved manual position and flag as they were (import tools).
  void restoreManualState(double x, double y, bool set) {
    manualX_ = x;
    manualY_ = y;
    manualSet_ = set;
  }
  // Moves the draw position; at most one "nodeRecUpdate", none unless `notify`.
  void setDrawPosition(double x, double y, bool notify);
  void setDrawPosition(const XY<double>& p, bool notify) { setDrawPosition(p.x, p.y, notify); }

  XY<double> getDrawPosition() const { return {drawX_.getValue(), drawY_.getValue()}; }
  XY<double> getManualPos() const { return {manualX_, manualY_}; }
  bool isManualPosSet() const noexcept { return manualSet_; }
  ValServer<double>& drawX() noexcept { return drawX_; }
  ValServer<double>& drawY() noexcept { return drawY_; }

  // A value that travels with assignment only; it is not streamed.
  uint32_t getExtraValue() const noexcept { return extra_; }
  void setExtraValue(uint32_t v) noexcept { extra_ = v; }

  void valChangedNtfy(ValServer<double>* server) override;

  // Told of every move of the draw position, quiet ones included, once per
  // coordinate, right after the record itself. A view node keeps its own
  // position in step with a record this way: a pointer in a list, where
  // watching both values would cost two subscriptions and two subscriber
  // lists per shown node. A follower must not add or remove followers while
  // it is told.
  class DrawFollower {
  public:
    virtual void drawMoved(NodeUIPosRec& record) = 0;

  protected:
    ~DrawFollower() = default;
  };
  void addDrawFollower(DrawFollower* follower);
  void removeDrawFollower(DrawFollower* follower);
  std::size_t drawFollowerCount() const noexcept { return followers_.size(); }
  void ownedValNotify(ValServer<double>* server, NotifyMsgType type) override;

  void pack(PStream& s) const;
  void unpack(PStream& s);

private:
  void followOwnValues();

  ValServer<double> drawX_{0.0};
  ValServer<double> drawY_{0.0};
  double manualX_ = 0.0;
  double manualY_ = 0.0;
  bool manualSet_ = false;
  uint32_t extra_ = 0;
  std::vector<DrawFollower*> followers_; // not copied by assignment
};
