#pragma once
#include "graph_nodes/NodeView.h"
#include "graph_view/TimerHold.h"
#include "graph_view/ViewPart.h"
#include "host/core/Ptr.h"
#include "host/draw/UxImage.h"

// The view's stills: the preview of the picture the graph makes (the
// primary node's still) in the view's top-right corner, under the graph so
// that it never hides a node (key "v" and the context menu show and hide it,
// a preference), and the making of
// stills for it and for the nodes' thumbnails. Stills are made in the
// background: a node shows the picture it showed before, or a placeholder,
// until its still is ready, and then only that node is drawn again. With
// the background off, stills are made while the view draws.
class GRPHTOOL_API ViewStills : public ViewPart {
public:
  using PixelBox = Ux::Box<int, Ux::BottomUpTraits>;

  static constexpr const char* preference = "Graph View : Preview";

  explicit ViewStills(FXGraphView& view);
  ~ViewStills() override;

  void setOn(bool on);
  bool on() const noexcept { return on_; }
  // Where the preview goes (view pixels); false while it is hidden.
  bool previewPlace(PixelBox& box) const;
  // The part of the view below the preview's band: where a framed graph goes.
  PixelBox freeArea() const;

  void setInBackground(bool on) noexcept { inBackground_ = on; }
  bool inBackground() const noexcept { return inBackground_; }
  // Asks for the still of a node (or of the preview) in the background;
  // false when it is under way already.
  bool request(const IdStamp& node, NodeView::Still what, const Render::RenderContext& context);
  // Stills asked for and not yet shown.
  std::size_t pending() const;
  // Shows the stills made since the last call.
  void take();
  // Waits for every still asked for and shows them: a headless render does
  // so before it writes its picture.
  void finish();
  // The edit closes: stills under way would keep it open.
  void forget();

  // The preview.
  void draw() override;

private:
  bool on_ = true;
  bool inBackground_ = true;
  TimerHold timer_; // the timer runs while stills are under way
  PixelBox previewBox_;
  Ux::Ptr<UxImage> previewShown_;
};
