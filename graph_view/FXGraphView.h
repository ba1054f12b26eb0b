#pragma once
// The graph view: the canvas that builds, positions, draws and edits the
// on-screen graph of the focused edit.
//
// Map (implementation files)
//   FXGraphView.cpp ............. construction, focus, notifications, menus, drops
//   FXGraphViewGeometry.cpp ..... graph space <-> view pixels, zoom, pan,
//                                 scroll bars, fitting, auto-scroll, orientation
//   FXGraphViewNodeList.cpp ..... the node list: rebuild, node kinds, positions, tidy
//   FXGraphViewDrawing.cpp ...... the frame: background, wires, nodes
//   FXGraphViewMouse.cpp ........ mouse dispatch, pad clicks, the drag state
//   FXGraphViewKeyboard.cpp ..... keyboard focus and keys, hover and wire hints,
//                                 node descriptions, templates dropped on wires
//   FXGraphViewSearch.cpp ....... search to add
//   FXGraphViewNavigator.cpp .... the navigator
//   FXGraphViewArrange.cpp ...... Arrange
//
// Coordinate spaces: graph units (doubles, y up) and view pixels (the view's
// own bottom-up pixels). Conversions live here and say which way they go.
#include <array>
#include <map>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "GrphToolApi.h"
#include "graph_nodes/FXGraphViewNode.h"
#include "graph_nodes/NodeView.h"
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

class ScrollBar;

class ViewHost;

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
  bool autoScrolling() const noexcept { return autoScroll_; }
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
  // Lays the graph out as Tidy does (direction, spacing) with no two boxes
  // overlapping and each shared input beside its deepest consumer; key "l"
  // and the context menu. With hand placing on, one undo step.
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
  // The extreme nodes of the last updateMinAndMaxPositions: min x, max x, min y, max y.
  const Ux::Ptr<FXGraphViewNode>& extremeNode(int which) const { return extremes_[which]; }
  // Counts of work done, for tests and diagnostics.
  unsigned tidyCount() const noexcept { return tidies_; }
  unsigned rebuildCount() const noexcept { return rebuilds_; }

  // -- drawing ------------------------------------------------------------------
  void draw() override;
  void drawBackground();
  void drawConnections(eEdgeType type);
  void drawConnection(const XY<int>& from, const XY<int>& to, const Colour& colour, unsigned short thickness);
  void drawNodes();
  void drawPrimaryNodeHighlight();
  void drawDraggedConnection();
  void drawNodeNames();
  // A preview of the picture the graph makes (the primary node's still) in
  // the view's top-right corner.
  void drawStills();
  // Nodes that appeared in the last rebuild glow and fade over 0.4 s.
  void drawFades();
  static constexpr double fadeSeconds = 0.4;
  double fadeProgress() const noexcept { return fadeProgress_; }
  // Text in a box of view pixels (the nodes' titles and labels).
  void drawText(const PixelBox& box, const LightweightString<wchar_t>& text, const Colour& colour,
                const LightweightString<char>& font, int pointSize = 0) override;
  Glob& glob() override { return *this; }
  // The structure time range (1e99 in the first: none known).
  void setStructureRange(double from, double to) noexcept { structure_[0] = from, structure_[1] = to; }
  void calcMorphologyExtents();

  // -- mouse --------------------------------------------------------------------
  bool handleMouseEvent(const Event& e) override;
  bool handleInputClicked(Ux::Ptr<FXGraphViewNode> node, int input);
  bool handleOutputClicked(Ux::Ptr<FXGraphViewNode> node, int output);
  bool handleNodeClicked(Ux::Ptr<FXGraphViewNode> node);
  bool removeDraggedIFConnection();
  // The drag state: the anchor node (null when no wire is dragged), its pad,
  // and whether the wire hangs from an input.
  // The panel that holds the view, for what the view asks of it (commands
  // on graph items, the templates search to add offers); none when alone.
  void setHost(ViewHost* host) noexcept { host_ = host; }

  const Ux::Ptr<FXGraphViewNode>& dragAnchor() const noexcept { return anchor_; }
  int dragAnchorPad() const noexcept { return anchorPad_; }
  bool dragAnchoredAtInput() const noexcept { return anchoredAtInput_; }
  const XY<int>& dragFixedEnd() const noexcept { return fixedEnd_; }
  const Ux::Ptr<FXGraphViewNode>& movedNode() const noexcept { return moved_; }
  bool isBusy() const noexcept { return busy_; }

  // -- keyboard, hover and hints --------------------------------------------------
  // Keys the view takes: "f" fits the whole graph in the view, shift+"f"
  // centres the node under the mouse (or with focus) at the zoom it has.
  // With a node in focus: the arrows walk the graph (towards its inputs,
  // towards its output, between siblings: which arrow is which follows the
  // orientation), Return opens the effect's parameters, space switches it on
  // or off as a click does, Delete removes it as the "remove_utr" command
  // does, "p" picks a wire up or drops it at the node's pads as pad clicks
  // do, Escape lets go of the focus.
  bool handleKeyEvent(const Event& e) override;
  // The node with keyboard focus (a click on a node gives it), or none.
  const IdStamp& keyboardFocus() const noexcept { return keyFocus_; }
  void setKeyboardFocus(const IdStamp& id);
  // While a wire dangles: every pad that would take it, as the editor
  // judges (no cycle, no locked input): free inputs for a wire from an
  // output, spare output slots for a wire from an input.
  struct PadRef {
    IdStamp node;
    int index = 0;
    bool atInput = false;
  };
  std::vector<PadRef> acceptingPads() const;
  // A wire: the node it feeds and that node's input.
  struct WireRef {
    Ux::Ptr<FXGraphViewNode> to;
    int input = -1;
  };
  // The wire drawn under a view pixel (within a few pixels), if any.
  bool wireAt(XY<int> p, WireRef& out) const;
  // A point of the wire into the input that no node covers, for a drop;
  // false when the wire is not there or wholly hidden.
  bool clearPointOnWire(const IdStamp& to, int input, XY<int>& out) const;
  // The node under the mouse and every node upstream of it: the wires
  // that feed the hovered node, all the way up, are drawn highlighted.
  const std::vector<IdStamp>& highlightedNodes() const noexcept { return highlighted_; }
  // A node the mouse rests on for tooltipMs shows its description beside
  // the mouse, until the mouse moves off it or is pressed.
  static constexpr uint64_t tooltipMs = 600;
  bool tooltipShowing() const noexcept { return tipShown_; }
  // Says what a node is in words: its kind, title, whether it is on, what
  // feeds each input and what its output feeds.
  LightweightString<wchar_t> describeNode(const FXGraphViewNode& node) const;

  // -- navigator ----------------------------------------------------------------
  // The whole graph in miniature in the view's bottom-right corner, with the
  // visible window framed; a click or drag in it moves the view there. Key
  // "n" and the context menu turn it on and off (a preference, on at
  // first); it hides while the whole graph fits the view.
  static constexpr const char* navigatorPreference = "Graph View : Navigator";
  void setNavigatorOn(bool on);
  bool navigatorOn() const noexcept { return navigatorOn_; }
  // Where it is drawn and where the visible window lies in it (view pixels);
  // false while hidden.
  bool navigatorGeometry(PixelBox& box, PixelBox& window) const;

  // -- search to add ------------------------------------------------------------
  // Tab (or a letter that is no command) opens a search field over the view
  // listing the video effect templates whose names match what is typed,
  // best first (TemplateSearch). Up and Down choose, Return lays the chosen
  // effect over the node that was under the mouse when the field opened (as
  // a template dropped on it), or into the wire there, or over the node in
  // focus; Escape closes.
  struct SearchTemplates; // the templates on offer, with their names prepared
  struct Search {
    std::shared_ptr<const SearchTemplates> templates; // as the field opened
    std::wstring query;
    std::vector<EffectTemplateSummary> results;
    int chosen = -1;   // -1: nothing matches
    bool full = false; // a key was refused: the query is as long as it may be
    IdStamp target;
    WireRef wire; // else the wire under the mouse, to put the effect into
  };
  const Search* search() const noexcept { return searchOpen_ ? &search_ : nullptr; }
  void openSearch(const std::wstring& text);
  void closeSearch();
  // Lays a new effect of the template over a node: it takes the node's place
  // downstream and the node feeds its first input; one undo step.
  bool insertTemplateAbove(const EffectTemplateSummary& t, const IdStamp& node);

  // -- stills -------------------------------------------------------------------
  // Stills are made in the background: a node shows the picture it showed
  // before, or a placeholder, until its still is ready, and then only that
  // node is drawn again. With the background off, stills are made while the
  // view draws.
  void setStillsInBackground(bool on) noexcept { stillsInBackground_ = on; }
  bool stillsInBackground() const noexcept override { return stillsInBackground_; }
  // Asks for the still of a node (or of the preview) in the background;
  // false when it is under way already.
  bool requestStill(const IdStamp& node, Still what, const Render::RenderContext& context) override;
  // Stills asked for and not yet shown.
  std::size_t stillsPending() const;
  // Shows the stills made since the last call.
  void takeStills();
  // Waits for every still asked for and shows them: a headless render does
  // so before it writes its picture.
  void finishStills();

  // -- timer --------------------------------------------------------------------
  bool handleTimerEvent(const Event& e) override;
  void enableETime();
  void disableETime();
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
  // Effect templates dropped on a node (view pixels) are applied to it.
  bool canAcceptDrop(const DragDropItem& item, XY<int> position) override;
  bool acceptDrop(const DragDropItem& item, XY<int> position) override;
  LightweightString<char> idstring() const override { return "FXGraphView"; }

  // Judges of the managed values.
  bool judgeZoom(ValServer<double>* server, double& value);

private:
  friend class FXGraphViewNode;
  void keepCanvasAroundGraph(bool growOnly = false);
  // Draws again only what lies in an area of the view (view pixels).
  void redrawArea(PixelBox area);
  // What a node and its wires cover on the screen, with room round them.
  PixelBox damageOf(const FXGraphViewNode& node) const;
  Ux::Ptr<NodeUIPosManager> positionManager() const;
  static void placeUnusableRecordsAfresh(NodeUIPosManager& manager);
  void placeScrollBars();
  void storePositionsForReopen(std::map<IdStamp, XY<double>>& handPlaced);
  void drawCurve(const XY<int>& start, const XY<int>& end, const XY<int>& c1, const XY<int>& c2, const Colour& colour,
                 unsigned short thickness);
  bool drawArea(PixelBox area);
  // A wire's path: one or two cubic curves (start, end, two control points).
  using Curve = std::array<XY<int>, 4>;
  std::vector<Curve> wireCurves(const XY<int>& from, const XY<int>& to) const;
  // Points along a wire, every few pixels.
  std::vector<XY<int>> wirePoints(const FXGraphViewNode& to, int input) const;
  // Lays a new effect of the template into a wire, from its source to
  // its input; one undo step. False where the editor refuses.
  bool insertOnWire(const EffectTemplateSummary& t, const WireRef& wire);
  // Rings of `width` one-pixel frames round a box, starting `away` pixels out.
  void drawRing(const PixelBox& box, int away, int width, const Colour& colour);
  // The focus ring, the highlighted wires and, while a wire dangles, the
  // pads that would take it lit and the others dimmed.
  void drawHints();
  void walkFocus(int key);
  bool pickOrDropAtFocus();
  void updateHover(XY<int> position);
  // The navigator's mapping between its pixels and graph units.
  struct NavigatorMap {
    PixelBox box;
    GraphBox graph;
    double scale = 1; // pixels per graph unit
  };
  bool navigatorMap(NavigatorMap& map) const;
  void drawNavigator();
  void navigateTo(XY<int> pixel);
  bool handleSearchKey(const Event& e);
  void updateSearchResults();
  void drawSearch();
  PixelBox searchBox() const;

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
  bool panning_ = false;
  XY<int> panLast_;
  ScrollBar* hScroll_ = nullptr;
  ScrollBar* vScroll_ = nullptr;
  bool autoScroll_ = false;
  double lastTick_ = 0; // seconds

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
  unsigned tidies_ = 0;
  unsigned rebuilds_ = 0;

  // Drawing.
  double structure_[2] = {1e99, 0};
  std::vector<IdStamp> fading_;
  double fadeProgress_ = 1;
  void startFade(std::vector<IdStamp> ids);

  // The drag state.
  ViewHost* host_ = nullptr; // not owned: the panel owns the view
  Ux::Ptr<FXGraphViewNode> anchor_;
  int anchorPad_ = 0;
  bool anchoredAtInput_ = false;
  XY<int> fixedEnd_;
  XY<int> dragStart_;
  bool busy_ = false;
  Ux::Ptr<FXGraphViewNode> moved_;
  XY<int> grab_;
  XY<int> mouse_; // the last mouse position, view pixels

  int timerHolds_ = 0;
  uint64_t timerStart_ = 0;

  // Keyboard focus, and the consumers the walk came down through (a node
  // with shared outputs goes back the way it came); hover.
  IdStamp keyFocus_;
  std::vector<IdStamp> keyPath_;
  IdStamp hovered_;
  std::vector<IdStamp> highlighted_;
  uint64_t hoverSince_ = 0;
  bool tipHold_ = false; // a timer hold until the tooltip is due
  bool tipShown_ = false;
  void dropTooltip();
  void drawTooltip();
  bool navigatorOn_ = true;
  bool navigating_ = false; // a press in the navigator is being dragged
  bool searchOpen_ = false;
  Search search_;

  // Stills.
  bool stillsInBackground_ = true;
  bool stillsTimer_ = false; // a timer hold while stills are under way
  PixelBox previewBox_;
  Ux::Ptr<UxImage> previewShown_;
};
