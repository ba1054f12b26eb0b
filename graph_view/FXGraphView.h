#pragma once
// The graph view: the canvas that builds, positions, draws and edits the
// on-screen graph of the focused edit.
//
// Map (implementation files)
//   FXGraphView.cpp ............. construction, focus, the timer, notifications,
//                                 menus, drops
//   FXGraphViewGeometry.cpp ..... graph space <-> view pixels, zoom, pan,
//                                 scroll bars, fitting, auto-scroll, orientation
//   FXGraphViewNodeList.cpp ..... the node list: rebuild, node kinds, positions, tidy
//   FXGraphViewDrawing.cpp ...... the frame: background, wires, nodes; where wires run
//   FXGraphViewInput.cpp ........ the mouse and key rules, pad clicks, the interaction
//
// The features added to the canvas are parts with their own state, each in
// its own file, handed the calls they answer (ViewPart): Navigator,
// SearchToAdd, KeyboardFocus, HoverHints, ViewStills, TemplateDrops and
// NodeFades; Arrangement lays the graph out. Which gesture holds the view is one Interaction.
//
// Coordinate spaces: graph units (doubles, y up) and view pixels (the view's
// own bottom-up pixels). Conversions live here and say which way they go.
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "GrphToolApi.h"
#include "graph_nodes/FXGraphViewNode.h"
#include "graph_nodes/NodeView.h"
#include "graph_view/Interaction.h"
#include "host/core/Vector.h"
#include "host/edit/CelEventPair.h"
#include "host/edit/Vob.h"
#include "host/render/EffectTemplateSummary.h"
#include "host/render/RenderContext.h"
#include "host/ui/DragDrop.h"
#include "host/ui/Glob.h"
#include "host/ui/MenuItem.h"
#include "node_ui/NodeUIClients.h"
#include "node_ui/NodeUIPosManager.h"
#include "node_ui/NodeUIPosSource.h"
#include "values/ValManager.h"
#include "values/ValServer.h"

class Arrangement;
class FXEditor;
class HoverHints;
class KeyboardFocus;
class ViewNotice;
class Navigator;
class NodeFades;
class ScrollBar;
class SearchToAdd;
class TemplateDrops;
class ViewHost;
class ViewStills;

class GRPHTOOL_API FXGraphView : public Glob,
                                 public VobClient,
                                 public NodeUIManagerClient,
                                 public ValManager<double, FXGraphView>,
                                 public NodeUIPosSource,
                                 public DragDropDestination,
                                 public NodeView {
public:
  using Orientation = VidRouting::Orientations::Orientation;
  using PixelBox = Glob::PixelBox;
  using GraphBox = Ux::Box<double, Ux::BottomUpTraits>;
  enum eEdgeType { eNormalEdge = 0, eHighlightEdge = 1 };
  // resetView: a zero redraw flag always asks for an update; refit flags as
  // in ensureNodeListVisible (0 fit, 1 leave a fitting box alone, 2 re-centre a fitting box).
  using FXGraphVieweRedrawFlag = int;
  using FXGraphViewRefitFlag = int;
  // View scopes.
  static constexpr int wholeEdit = 1;
  static constexpr int singleFocus = 0;
  // Layout constants, graph units.
  static constexpr double layoutGap = 0.1875;
  static constexpr double treeStackingGap = 0.125;
  static constexpr int timerInterestBit = 4096;
  // The largest node size; the largest physical scale is 8 times it.
  static constexpr int defaultMaxNodeSize = 160;

  FXGraphView(Vob* vob, XY<int> size, const Palette& palette, int scope = wholeEdit);
  ~FXGraphView() override;

  // -- focus --------------------------------------------------------------------
  // Shows an edit (scope whole edit, or the tree under one node) and rebuilds.
  void setEditFocus(const EditPtr& edit, const IdStamp& focusNode = {}, int scope = wholeEdit);
  const EditPtr& getEdit() const noexcept override { return edit_; }
  int scope() const noexcept { return scope_; }
  double currentTime() const;
  int getPrimaryChanIx() const;

  // -- geometry (graph units <-> view pixels) -----------------------------------
  Ux::Box<int, Ux::BottomUpTraits> getWindowPos() const;
  void graphToViewSpace(double x, double y, double& vx, double& vy) const override;
  XY<double> graphToViewSpace(const XY<double>& p) const override;
  void viewToGraphSpace(double vx, double vy, double& x, double& y) const;
  XY<double> viewToGraphSpace(const XY<double>& p) const;
  XY<int> graphToPixels(double x, double y) const;
  bool clipRectToView(int& l, int& b, int& r, int& t) const override;
  void constrainToCanvas(double& x, double& y) const;
  void constrainToCanvas(XY<double>& p) const { constrainToCanvas(p.x, p.y); }
  virtual void setViewCentre(double x, double y);
  virtual void setViewZoom(double z);
  void setMaxNodeSize(int n);
  double calcPhysicalScale(double zoom) const;
  // The zoom that gives that scale (pixels a graph unit) on the canvas as it now is.
  void keepScale(double scale);
  double fitViewToCanvRect(const GraphBox& box) const;
  double calcAutoScale(double& cx, double& cy) const;
  GraphBox getGraphExtents() const;
  virtual int handleZoom(int direction);
  int checkForPanAndZoom(const Event& e);
  void updateScrollbars(bool redraw);
  int getEdgeThickness(eEdgeType type) const;
  XY<int> getNodeSize() const;
  bool mouseInAutoScrollArea() const;
  void setAutoScrollState(bool on);
  bool autoScrolling() const noexcept { return static_cast<bool>(autoScroll_); }
  void rotateNodes(double angle);
  void resetView(FXGraphVieweRedrawFlag redrawFlag, FXGraphViewRefitFlag refitFlag);
  void setOrientation(Orientation orientation, bool refit);
  void changeOrientation(const NotifyMsg& msg);
  Orientation getOrientation() const override { return orientation_; }
  bool ensureNodeListVisible(const Vector<IdStamp>& ids, FXGraphViewRefitFlag refitFlag);
  void resize(double w, double h) override;
  void handleScrollbarMsg(ScrollBar* bar, const LightweightString<char>& msg);

  double getZoom() const noexcept { return zoom_.getValue(); }
  double getScale() const noexcept override { return scale_; }
  XY<double> getViewCentre() const noexcept { return centre_.getValue(); }
  const GraphBox& canvasRect() const noexcept { return canvas_; }
  int getMaxNodeSize() const noexcept { return maxNodeSize_; }
  ValServer<double>& zoomValue() noexcept { return zoom_; }
  ValServer<XY<double>>& centreValue() noexcept { return centre_; }
  ValServer<bool>& manualPositioningValue() noexcept { return manualPositioning_; }
  bool manualPositioning() const noexcept { return manualPositioning_.getValue(); }
  ScrollBar* horizontalScrollBar() const noexcept { return hScroll_; }
  ScrollBar* verticalScrollBar() const noexcept { return vScroll_; }

  // -- the node list ------------------------------------------------------------
  void recalcNodeList(bool sendGroupUpdate);
  int createViewNodeRecs();
  int createViewNodeRecs(const IdStamp& root, int rootIndex);
  int createViewNodeRecsInternal(EditGraphIterator& at, FXGraphViewNode* parent, int rootIndex);
  int makeViewNodesOnce(EditGraphIterator& at, FXGraphViewNode* parent, int rootIndex,
                        std::unordered_set<const FXGraphNodeBase*>& met);
  void settleEditability(EditGraphIterator& at, bool lockedAbove, std::unordered_set<const FXGraphNodeBase*>& met);
  Ux::Ptr<FXGraphViewNode> createViewNode(EditGraphIterator& at);
  std::vector<IdStamp> getRoots();
  void getAllNodes(Vector<IdStamp>& out) const;
  void calcVisibleNodeList(Vector<IdStamp>& out) const;
  Ux::Ptr<FXGraphViewNode> findViewRecForNode(const IdStamp& id) const;
  NodeUIPosRec* getPosRecForNode(const IdStamp& id) override;
  NodeUIPosRec* getPosRecForUtr(CelEventPair& event);
  bool assignPositionFromChannel(FXGraphViewNode* node);
  bool assignPositionFromConnections(FXGraphViewNode* node);
  int assignPositionsManual(Vector<FXGraphViewNode*>& nodes, double x, double y, double span, int count);
  XY<double> findMaterialNodePosition();
  void autoTidy();
  void autoTidyNodeRecs(const std::vector<IdStamp>& roots, XY<double> origin);
  void tidy();
  void tidy(const NotifyMsg& msg);
  // Arrange (Arrangement): key "l" and the context menu.
  void arrange();
  void checkForCoincidentNodes();
  void updateMinAndMaxPositions();
  void translateManuallyPositionedNodes(EditGraphIterator& at, double dx, double dy);
  void translateManuallyPositionedNodes(Ux::Ptr<FXGraphNodeBase> node, double dx, double dy, bool);
  void relativeMoveTree(EditGraphIterator& at, double dx, double dy, int rootIndex, NodeUIPosRec** moved, int& count);
  void flushNodeList();
  EditGraphIterator getIteratorFor(const IdStamp& id, int flags) const override;
  EditGraphIterator getIteratorFor(const Ux::Ptr<FXGraphNodeBase>& node, int flags) const;
  const std::vector<Ux::Ptr<FXGraphViewNode>>& nodes() const noexcept { return nodes_; }
  // Counts of work done, for tests and benchmarks.
  struct Stats {
    unsigned tidies = 0;
    unsigned rebuilds = 0;
  };
  const Stats& stats() const noexcept { return stats_; }

  // -- drawing ------------------------------------------------------------------
  void draw() override;
  void drawBackground();
  void drawConnections(eEdgeType type);
  void drawConnection(const XY<int>& from, const XY<int>& to, const Colour& colour, unsigned short thickness);
  void drawNodes();
  void drawPrimaryNodeHighlight();
  void drawDraggedConnection();
  void drawNodeNames();
  // Text in a box of view pixels (the nodes' titles and labels).
  void drawText(const PixelBox& box, const LightweightString<wchar_t>& text, const Colour& colour,
                const LightweightString<char>& font, int pointSize = 0) override;
  Glob& glob() override { return *this; }
  void calcMorphologyExtents();

  // -- the mouse and keys ---------------------------------------------------------
  bool handleMouseEvent(const Event& e) override;
  // Keys the view takes: "f" fits the whole graph in the view, shift+"f"
  // centres the node under the mouse (or with focus) at the zoom it has, "l"
  // arranges, "n" turns the navigator on or off, Escape puts a held wire
  // back, Tab or a letter that is no command opens search to add; the
  // others go to the parts.
  bool handleKeyEvent(const Event& e) override;
  bool handleInputClicked(Ux::Ptr<FXGraphViewNode> node, int input);
  bool handleOutputClicked(Ux::Ptr<FXGraphViewNode> node, int output);
  // Both pad clicks: drops the held wire on the pad, or picks one up there.
  bool handlePadClicked(const WireEnd& clicked);
  bool handleNodeClicked(Ux::Ptr<FXGraphViewNode> node);
  bool removeDraggedIFConnection();
  // Lets the held wire go, and puts back the wire it was taken from.
  bool putBackHeldWire();
  // The panel that holds the view, for what the view asks of it (commands
  // on graph items, the templates search to add offers); none when alone.
  void setHost(ViewHost* host) noexcept { host_ = host; }

  // Which gesture holds the view. Starting one needs the view free (false
  // otherwise); ending it frees the view.
  const Interaction& interaction() const noexcept { return interaction_; }
  bool beginInteraction(Interaction::Kind kind);
  void endInteraction();
  void endNavigating();
  // The drag state: the anchor node (null when no wire is dragged), its
  // pad, and whether the wire hangs from an input; the node moved by hand.
  const Ux::Ptr<FXGraphViewNode>& dragAnchor() const noexcept { return interaction_.held.node; }
  int dragAnchorPad() const noexcept { return interaction_.held.pad; }
  bool dragAnchoredAtInput() const noexcept { return interaction_.held.atInput; }
  const XY<int>& dragFixedEnd() const noexcept { return interaction_.fixedEnd; }
  const Ux::Ptr<FXGraphViewNode>& movedNode() const noexcept { return interaction_.moved; }
  bool isBusy() const noexcept { return busy_; }
  // The last mouse position, view pixels.
  XY<int> mousePosition() const noexcept { return mouse_; }

  // A pad of a node: its node, its index, whether it is an input.
  struct PadRef {
    IdStamp node;
    int index = 0;
    bool atInput = false;
  };
  // A wire: the node it feeds and that node's input.
  struct WireRef {
    Ux::Ptr<FXGraphViewNode> to;
    int input = -1;
  };
  // Lays a new effect of the template over a node (TemplateDrops).
  bool insertTemplateAbove(const EffectTemplateSummary& t, const IdStamp& node);

  // -- the parts ------------------------------------------------------------------
  Navigator& navigator() noexcept { return *navigator_; }
  const Navigator& navigator() const noexcept { return *navigator_; }
  SearchToAdd& searchField() noexcept { return *search_; }
  TemplateDrops& drops() noexcept { return *drops_; }
  const SearchToAdd& searchField() const noexcept { return *search_; }
  KeyboardFocus& keyboard() noexcept { return *keyboard_; }
  HoverHints& hints() noexcept { return *hints_; }
  const HoverHints& hints() const noexcept { return *hints_; }
  ViewStills& stills() noexcept { return *stills_; }
  const ViewStills& stills() const noexcept { return *stills_; }
  ViewNotice& notice() noexcept { return *notice_; }
  const ViewNotice& notice() const noexcept { return *notice_; }
  // The node with keyboard focus, or none.
  const IdStamp& keyboardFocus() const noexcept;
  // What the nodes ask of the stills (NodeView).
  bool stillsInBackground() const noexcept override;
  bool requestStill(const IdStamp& node, Still what, const Render::RenderContext& context) override;

  // -- timer --------------------------------------------------------------------
  bool handleTimerEvent(const Event& e) override;
  // How many holds keep the timer running (TimerHold takes and gives them).
  int timerHolds() const noexcept { return timerHolds_; }

  // -- notifications, menus, drops ---------------------------------------------
  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;
  void newNodeRecNotify(NodeUIRecBase* rec) override;
  void nodeRecDeletedNotify(NodeUIRecBase* rec) override;
  void nodeManagerGeneralNotify(const LightweightString<char>& text) override;
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  bool handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) override;
  // The view's context menu: the orientation entries, then the graph-item
  // commands of the node under the mouse.
  MenuItems getMenuItems(const Event* e) override;
  // Effect templates dropped on a node or a wire (TemplateDrops).
  bool canAcceptDrop(const DragDropItem& item, XY<int> position) override;
  bool acceptDrop(const DragDropItem& item, XY<int> position) override;
  void dragHover(const DragDropItem* item, XY<int> position) override;
  LightweightString<char> idstring() const override { return "FXGraphView"; }

  // Judges of the managed values.
  bool judgeZoom(ValServer<double>* server, double& value);

  // Text boxes lower than this (pixels) are left empty: unreadable.
  static constexpr int minTextHeight = 9;
  // Drawing helpers for the view and its parts. Whether anything of an area
  // is left to draw inside the clip; rings of `width` one-pixel frames round
  // a box, starting `away` pixels out; drawing again only what lies in an
  // area (view pixels).
  bool drawArea(PixelBox area);
  void drawRing(const PixelBox& box, int away, int width, const Colour& colour);
  void redrawArea(PixelBox area);
  // A wire's path: one or two cubic curves (start, end, two control points).
  using Curve = std::array<XY<int>, 4>;
  struct WireCurves {
    std::array<Curve, 2> curves;
    int count = 0;
    const Curve* begin() const noexcept { return curves.data(); }
    const Curve* end() const noexcept { return curves.data() + count; }
  };
  WireCurves wireCurves(const XY<int>& from, const XY<int>& to) const;

private:
  friend class FXGraphViewNode;
  friend class Arrangement;
  friend class Framing;
  friend class SearchToAdd;
  friend class KeyboardFocus;
  friend class TimerHold;
  void enableETime();
  void disableETime();
  void keepCanvasAroundGraph(bool growOnly = false);
  // What a node and its wires cover on the screen, with room round them.
  PixelBox damageOf(const FXGraphViewNode& node) const;
  Ux::Ptr<NodeUIPosManager> positionManager() const;
  static void placeUnusableRecordsAfresh(NodeUIPosManager& manager);
  void placeScrollBars();
  void storePositionsForReopen(std::map<IdStamp, XY<double>>& handPlaced);
  void drawCurve(const XY<int>& start, const XY<int>& end, const XY<int>& c1, const XY<int>& c2, const Colour& colour,
                 unsigned short thickness);
  // The mouse rules, each case of handleMouseEvent.
  bool navigate(const Event& e);
  void pressLeft(const Event& e);
  void releaseMovedNode(const Event& e);
  void dragMovedNode(const Event& e);
  // The two halves of a pad click.
  void dropHeldWire(FXEditor& editor, const WireEnd& clicked);
  void pickUpWire(FXEditor& editor, const WireEnd& clicked);
  // Focus.
  EditPtr edit_;
  IdStamp focusNode_;
  int scope_;
  Orientation orientation_ = VidRouting::Orientations::LeftToRight;

  // Geometry.
  ValServer<XY<double>> centre_;
  ValServer<double> zoom_;
  double scale_ = 0;
  int maxNodeSize_ = defaultMaxNodeSize;
  GraphBox canvas_{-1, -1, 1, 1};
  ScrollBar* hScroll_ = nullptr;
  ScrollBar* vScroll_ = nullptr;
  TimerHold autoScroll_; // held while the view scrolls at its edges
  double lastTick_ = 0;  // seconds

  // The node list, and the index of the first node of each id in it.
  std::vector<Ux::Ptr<FXGraphViewNode>> nodes_;
  std::unordered_map<IdStamp, std::size_t> nodeIndex_;
  void appendNode(const Ux::Ptr<FXGraphViewNode>& node);
  // The focused edit's position manager, fetched once per focus.
  mutable Ux::Ptr<NodeUIPosManager> manager_;
  ValServer<bool> manualPositioning_{true};
  // While the node list is rebuilt: the node that heads each channel at the
  // time, to the channel (first in channel order).
  const std::unordered_map<IdStamp, IdStamp>* headsDuringRebuild_ = nullptr;
  // The roots, found once per rebuild when first asked for: making the nodes
  // and tidying them both ask.
  std::optional<std::vector<IdStamp>>* rootsDuringRebuild_ = nullptr;
  // Nodes found by getIteratorFor's search, for the edit, revision and time
  // they were found at.
  mutable std::unordered_map<IdStamp, EditGraphIterator> found_;
  mutable struct {
    const Edit* edit = nullptr;
    uint64_t revision = 0;
    double time = -1;
  } foundFor_;
  std::map<std::pair<IdStamp, int>, XY<double>> channelCache_;
  Ux::Ptr<FXGraphViewNode> extremes_[4];
  Stats stats_;

  // Drawing.
  double structure_[2] = {1e99, 0};

  // Which gesture holds the view, with its data; the panel holding the view.
  Interaction interaction_;
  ViewHost* host_ = nullptr; // not owned: the panel owns the view
  bool busy_ = false;        // the view's own change of the edit is under way
  XY<int> mouse_;            // the last mouse position, view pixels

  int timerHolds_ = 0;
  uint64_t timerStart_ = 0;

  // The parts, in the order the frame draws them.
  std::unique_ptr<HoverHints> hints_;
  std::unique_ptr<KeyboardFocus> keyboard_;
  std::unique_ptr<ViewStills> stills_;
  std::unique_ptr<Navigator> navigator_;
  std::unique_ptr<SearchToAdd> search_;
  std::unique_ptr<TemplateDrops> drops_;
  std::unique_ptr<NodeFades> fades_;
  std::unique_ptr<ViewNotice> notice_;
};
