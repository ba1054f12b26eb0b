// Stills in the view: the preview of the picture the graph makes, and the
// background making of stills for it and for the nodes' thumbnails.
#include "graph_view/ViewStills.h"

#include <algorithm>
#include <unordered_set>

#include "graph_view/FXGraphView.h"
#include "host/render/StillsCache.h"
#include "host/render/StillsQueue.h"
#include "host/render/VidRenderUtils.h"

ViewStills::~ViewStills() { forget(); }

void ViewStills::forget() {
  if (!timer_) return;
  Render::StillsQueue::instance().forget(&view_);
  timer_.release();
}

void ViewStills::draw() {
  const auto w = view_.getWindowPos();
  if (w.x1 - w.x0 < 360 || w.y1 - w.y0 < 240 || !view_.getEdit()) return;
  Ux::Ptr<FXGraphViewNode> primary;
  for (const auto& n : view_.nodes())
    if (n->isPrimary()) primary = n;
  if (!primary) return;
  // However large the view, the preview stays a picture the stills cache
  // keeps: one it could not keep would be asked for again at every frame.
  const int pw = std::min((w.x1 - w.x0) / 5, 1920), ph = pw * 9 / 16;
  const PixelBox box{w.x1 - pw - 6, w.y1 - ph - 6, w.x1 - 6, w.y1 - 6};
  previewBox_ = box;
  if (!view_.drawArea(box)) return;
  EditGraphIterator at = view_.getIteratorFor(primary->getNodeID(), EditGraphIterator::atNode);
  if (!at.isValid()) return;
  const Render::RenderContext context(
      at, VideoFormat{"preview", pw, ph, view_.getEdit()->getVideoMetadata().aspectRatio()});
  Ux::Ptr<UxImage> still;
  if (inBackground_) {
    still = Render::StillsCache::instance().getStillImage(context);
    if (still) {
      previewShown_ = still;
    } else {
      request(primary->getNodeID(), NodeView::previewStill, context);
      // The picture shown before stands in while it fits.
      if (previewShown_ && previewShown_->width() == pw && previewShown_->height() == ph) still = previewShown_;
    }
  } else {
    still = previewShown_ = Render::VidRenderUtils::cachedStill(context);
  }
  CanvasRenderer r = view_.canvas().renderer();
  r.renderPrimitive(Glib::RectDescription{{box.x0 - 2, box.y0 - 2, box.x1 + 2, box.y1 + 2},
                                          fromColour(view_.getPalette().window(6))});
  if (still)
    r.renderPrimitive(Glib::ImageDescription{box, still});
  else
    r.renderPrimitive(Glib::RectDescription{box, fromColour(view_.getPalette().window(3))});
  r.addModifiedArea(box);
}

bool ViewStills::request(const IdStamp& node, NodeView::Still what, const Render::RenderContext& context) {
  if (!Render::StillsQueue::instance().request(&view_, node, what, context)) return false;
  if (!timer_) {
    // Finished stills are looked for on each tick.
    timer_ = TimerHold(view_);
  }
  return true;
}

std::size_t ViewStills::pending() const { return timer_ ? Render::StillsQueue::instance().outstanding(&view_) : 0; }

void ViewStills::take() {
  if (!timer_) return;
  Render::StillsQueue& queue = Render::StillsQueue::instance();
  std::vector<Render::StillsQueue::Finished> finished = queue.take(&view_);
  if (queue.outstanding(&view_) == 0) {
    timer_.release();
  }
  if (finished.empty()) return;
  std::unordered_set<IdStamp> nodes;
  bool preview = false;
  for (Render::StillsQueue::Finished& f : finished) {
    Render::StillsCache::instance().add(f.context, f.still);
    if (f.what == NodeView::previewStill)
      preview = true;
    else
      nodes.insert(f.node);
  }
  if (preview) {
    // The preview lies over everything else: it alone is drawn again.
    const auto w = view_.getWindowPos();
    const ViewStills::PixelBox held = view_.canvas().getClipRect();
    view_.canvas().setClipRect({std::max(previewBox_.x0 - 2, w.x0), std::max(previewBox_.y0 - 2, w.y0),
                                std::min(previewBox_.x1 + 2, w.x1), std::min(previewBox_.y1 + 2, w.y1)});
    draw();
    view_.canvas().setClipRect(held);
  }
  // Only what shows the new thumbnails is drawn again; many at once, in one go.
  std::vector<PixelBox> areas;
  for (const auto& n : view_.nodes())
    if (n->drawnLast() && nodes.count(n->getNodeID())) {
      const PixelBox& t = n->thumbBox();
      areas.push_back({t.x0 - 1, t.y0 - 1, t.x1 + 1, t.y1 + 1});
    }
  if (areas.size() <= 8) {
    for (const PixelBox& a : areas) view_.redrawArea(a);
    return;
  }
  PixelBox all = areas.front();
  for (const PixelBox& a : areas)
    all = {std::min(all.x0, a.x0), std::min(all.y0, a.y0), std::max(all.x1, a.x1), std::max(all.y1, a.y1)};
  view_.redrawArea(all);
}

void ViewStills::finish() {
  Render::StillsQueue& queue = Render::StillsQueue::instance();
  // Showing a still may ask for another (the edit moved on meanwhile).
  while (timer_) {
    queue.wait(&view_);
    take();
  }
}
