#pragma once
// One box of the effect graph as the graph view shows it.
//
// Map
//   FXGraphViewNode ... identity and host graph node; position (its own
//                       position record, kept in step with the node's stored
//                       record in the edit's position manager); geometry and
//                       hit testing; the wire tables; drawing
#include <map>

#include "GrphToolApi.h"
#include "host/core/Box.h"
#include "host/core/Colour.h"
#include "host/core/iObject.h"
#include "host/draw/UxImage.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/FXGraphNodeBase.h"
#include "node_ui/NodeUIClients.h"
#include "node_ui/NodeUIPosRec.h"
#include "values/ValClient.h"

class NodeView;

class GRPHTOOL_API FXGraphViewNode : public NodeUIRecClient,
                                     public FXGraphNodeClient,
                                     public iObject,
                                     private NodeUIPosRec::DrawFollower {
public:
  using PixelBox = Ux::Box<int, Ux::BottomUpTraits>;
  using GraphBox = Ux::Box<double, Ux::BottomUpTraits>;
  enum PadType { eInputPad = 1, eOutputPad = 2 };
  // Hit-test results of translateMouseEvent.
  enum Hit { eNothing = 0, eBody = 1, eOutput = 2, eInput = 3 };

  // One end of a wire: for an input entry, the output index on the source
  // node; for an output entry, the input index on the destination node. The
  // node is not owned; null marks a disconnected slot.
  struct NodeInfoT {
    int index = 0;
    FXGraphViewNode* node = nullptr;
  };
  // Where the node was met: its channel, the input number under its parent
  // and the depth of the walk.
  struct Locator {
    IdStamp channel;
    int inputNum = -1;
    int depth = 0;
  };

  // Pad size in graph units; only y (0.02) is used, for the pad's side.
  static const XY<double> padSize_;
  static constexpr double halfWidth = 0.0625; // graph units: a node is 0.125 wide
  static constexpr double margin = 0.0125;    // above and below the picture area

  FXGraphViewNode(NodeView* view, const EditGraphIterator& at);
  ~FXGraphViewNode() override;
  FXGraphViewNode(const FXGraphViewNode&) = delete;
  FXGraphViewNode& operator=(const FXGraphViewNode&) = delete;

  // -- identity ---------------------------------------------------------------
  virtual void generalUpdateNotify();
  virtual IdStamp getNodeID() const;
  const Ux::Ptr<FXGraphNodeBase>& graphNode() const noexcept { return node_; }
  const EditPtr& edit() const noexcept { return edit_; }
  NodeView* view() const noexcept { return view_; }
  const Locator& locator() const noexcept { return locator_; }
  // Reopens the host graph node by id when the pointer was released.
  void ensureNodeHValid();
  // False only for a bypassed effect.
  bool getNodeActive() const;
  // An iterator at this node (the view's, at its current time).
  EditGraphIterator getIterator() const;

  // -- position (graph units) ------------------------------------------------
  // Moves the node; also records the position in the node's stored record.
  virtual bool setPosition(double x, double y, bool notify);
  XY<double> getPosition() const { return pos_.getDrawPosition(); }
  NodeUIPosRec& positionRecord() noexcept { return pos_; }
  // The node's record in the edit's position manager, which the node keeps
  // in step with its own draw position (either may change; the other follows).
  // With none (null) the node hears its own record's updates instead. A new
  // node hears neither until this is called.
  void followStoredRecord(NodeUIPosRec* stored);
  NodeUIPosRec* storedRecord() const noexcept { return stored_.get(); }
  // Programmatic moves are bracketed so that the node's own notification does
  // not reach the view that made them.
  void suspendNotifications() { pos_.suspendNotifications(); }
  void resumeNotifications() { pos_.resumeNotifications(); }

  // -- geometry ---------------------------------------------------------------
  virtual double getL() const;
  virtual double getB() const;
  virtual double getR() const;
  virtual double getT() const;
  // The picture aspect ratio (aspect code 2).
  double getAspectRatio() const;
  // (L, B, R, T) in graph units; with `pixels`, the same corners in view
  // pixels (unrounded), so its width and height are the node's pixel size.
  GraphBox getBounds(bool pixels) const;
  PixelBox calcPixelExtents() const;
  const PixelBox& pixelBox() const noexcept { return pixelBox_; }
  virtual XY<int> getInputPos(unsigned long i) const;
  virtual XY<int> getOutputPos(unsigned char i) const;
  PixelBox getNodePadArea(XY<int> centre, PadType type) const;
  PixelBox getTitleBarRect() const;
  // Graph units along the input edge left for pads.
  double getTotalInputSpace() const;
  PixelBox calcThumbArea();
  const PixelBox& thumbBox() const noexcept { return thumbBox_; }
  bool roomForThumbnail() const;
  virtual bool roomForInputs() const { return true; }
  bool isVisible(const PixelBox& box) const;
  // The input count offered to the mouse: cut to the connected inputs and
  // one more when there are more than three.
  unsigned hitTestInputCount() const;
  // What a view pixel falls on (Hit), with the pad's index.
  int translateMouseEvent(int x, int y, int& index) const;

  // -- wires ------------------------------------------------------------------
  bool connectInput(int i, FXGraphViewNode* source);
  void disconnectInput(int i);
  int addOutputConnection(FXGraphViewNode* destination, int input);
  void disconnectOutput(int i);
  void initConnections();
  FXGraphViewNode* getInputConnect(int i) const;
  FXGraphViewNode* getOutputConnect(int i) const;
  int findInputConnectFor(const FXGraphViewNode* node, int i) const;
  int findOutputConnectFor(const FXGraphViewNode* node, int i) const;
  const std::map<int, NodeInfoT>& inputTable() const noexcept { return inputs_; }
  const std::map<int, NodeInfoT>& outputTable() const noexcept { return outputs_; }
  void determineConnectionEditability(const EditGraphIterator& at);
  // While one lives, nodes made leave their editability to the one who makes
  // them (the view's walk settles it for every node once it knows the paths),
  // rather than climbing the path at every node.
  struct GRPHTOOL_API EditabilityLater {
    EditabilityLater() noexcept { ++held_; }
    ~EditabilityLater() { --held_; }
    EditabilityLater(const EditabilityLater&) = delete;
    EditabilityLater& operator=(const EditabilityLater&) = delete;
  };
  // The same rule with what the path holds already known: whether an effect
  // locked against rewiring lies above the node on its path. For walks that
  // carry that along instead of climbing the path at every node.
  void determineConnectionEditability(bool lockedAbove);
  bool isOutputEditable(int i) const;
  bool inputsEditable() const noexcept { return inputsEditable_; }
  bool outputEditable() const noexcept { return outputEditable_; }
  virtual bool isEquivalentTo(const EditGraphIterator& at) const;
  virtual LightweightString<wchar_t> getTitleStr() const;
  virtual Colour getMainCol() const;

  // -- state the view keeps on its nodes ---------------------------------------
  int rootIndex() const noexcept { return rootIndex_; }
  void setRootIndex(int i) noexcept { rootIndex_ = i; }
  int channelIndex() const noexcept { return channelIndex_; }
  bool isFixed() const noexcept { return fixed_; }
  void setFixed(bool on) noexcept { fixed_ = on; }
  bool isPrimary() const noexcept { return primary_; }
  void setPrimary(bool on) noexcept { primary_ = on; }
  bool isVisibleFlag() const noexcept { return visible_; }
  void setVisibleFlag(bool on) noexcept { visible_ = on; }
  bool drawnLast() const noexcept { return drawnLast_; }

  // -- drawing ----------------------------------------------------------------
  void draw();
  void drawTitleBar(bool);
  Colour getTitleBarColour() const;
  void drawInputs(bool labels, bool pads);
  void drawOutputs();
  void drawConnectionPad(XY<int> position, FXGraphViewNode* other, PadType type);
  void drawThumbnailBorder();
  virtual bool hasThumbnail() const { return false; }
  // A node made afresh for the same graph node as `before` (a rebuild of
  // the list) shows before's picture until its own is ready.
  virtual void takeOverPicture(const FXGraphViewNode& before) { (void)before; }
  virtual void drawThumbnail();
  virtual void drawThumbnail(const EditGraphIterator& at);
  Colour getPadCol(bool input) const;
  Colour getPadOutlineCol(bool input) const;
  double lastThumbnailTime() const noexcept { return lastThumbTime_; }
  // The colour the thumbnail showed, as last drawn, at the middle of its box
  // (the pixel the box's integer centre falls on); false when none is drawn.
  virtual bool thumbnailColour(Colour&) const { return false; }

  // -- notifications -----------------------------------------------------------
  void generalUpdateNotification(const EffectModification& modification) override;
  void nodeRecUpdateNotify(const NotifyMsg& msg) override;

protected:
  NodeView* view_;
  Ux::Ptr<FXGraphNodeBase> node_;
  EditPtr edit_;
  PixelBox pixelBox_;
  PixelBox thumbBox_;
  static inline int held_ = 0; // EditabilityLater guards alive (UI thread)
  bool inputsEditable_ = true;
  bool outputEditable_ = true;
  double lastThumbTime_ = 1e99;

  // The colour of a picture drawn into the thumbnail box, at the box's middle.
  bool pictureColourAtMiddle(const UxImage* picture, Colour& out) const;

private:
  void makeLocator(const EditGraphIterator& at);
  // One record moved: the other follows, quietly.
  void ownMoved();
  void storedMoved();

  // Either record moved (the node follows both).
  void drawMoved(NodeUIPosRec& record) override;

  NodeUIPosRec pos_;
  IdStamp id_;
  Locator locator_;
  Colour typeColour_;
  std::map<int, NodeInfoT> inputs_;
  std::map<int, NodeInfoT> outputs_;

  // The stored record in the edit's position manager, when there is one.
  Ux::Ptr<NodeUIPosRec> stored_;
  bool syncing_ = false; // a copy between the records is under way

  int rootIndex_ = 0;
  int channelIndex_ = -1;
  bool fixed_ = false;
  bool primary_ = false;
  bool visible_ = true;
  bool drawnLast_ = false;
};
