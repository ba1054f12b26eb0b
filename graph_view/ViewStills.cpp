// Stills in the view: the preview of the picture the graph makes, and the
// background making of stills for it and for the nodes' thumbnails.
#include "graph_view/ViewStills.h"

#include <algorithm>
#include <unordered_set>

#include "graph_view/FXGraphView.h"
#include "host/config/EditorPreferences.h"
#include "host/render/StillsCache.h"
#include "host/render/StillsQueue.h"
#include "host/render/VidRenderUtils.h"

ViewStills::ViewStills(FXGraphView& view) : ViewPart(view), on_(prefs().getPreference(preference, true)) {}

ViewStills::~ViewStills() { forget(); }

void ViewStills::setOn(bool on) {
  if (on == on_) return;
  on_ = on;
  prefs().setPreference(preference, on);
  view_.redraw();
}

bool ViewStills::previewPlace(PixelBox& box) const {
  const auto w = view_.getWindowPos();
  if (!on_ || w.x1 - w.x0 < 360 || w.y1 - w.y0 < 240 || !view_.getEdit()) return false;
  // However large the view, the preview stays a picture the stills cache
  // keeps: one it could not keep would be asked for again at every frame.
  const int pw = std::min((w.x1 - w.x0) / 5, 1920), ph = pw * 9 / 16;
  box = {w.x1 - pw - 6, w.y1 - ph - 6, w.x1 - 6, w.y1 - 6};
  return true;
}

ViewStills::PixelBox ViewStills::freeArea() const {
  const auto w = view_.getWindowPos();
  PixelBox free{w.x0, w.y0, w.x1, w.y1};
  PixelBox preview;
  // The band the preview heads: what is framed lies below it.
  if (previewPlace(preview)) free.y1 = std::max(free.y0 + 1, preview.y0 - 6);
  return free;
}

void ViewStills::forget() {
  if (!timer_) return;
  Render::StillsQueue::instance().forget(&view_);
  timer_.release();
}

void ViewStills::draw() {
  PixelBox box;
  if (!previewPlace(box)) return;
  Ux::Ptr<FXGraphViewNode> primary;
  for (const auto& n : view_.nodes())
    if (n->isPrimary()) primary = n;
  if (!primary) return;
  const int pw = box.x1 - box.x0, ph = box.y1 - box.y0;
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
  // The preview lies under the graph: its area is drawn again whole.
  if (preview) view_.redrawArea({previewBox_.x0 - 2, previewBox_.y0 - 2, previewBox_.x1 + 2, previewBox_.y1 + 2});
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
