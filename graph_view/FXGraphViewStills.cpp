// Stills in the view: the preview of the picture the graph makes, and the
// background making of stills for it and for the nodes' thumbnails.
#include <algorithm>
#include <unordered_set>

#include "graph_view/FXGraphView.h"
#include "host/render/StillsCache.h"
#include "host/render/StillsQueue.h"
#include "host/render/VidRenderUtils.h"

void FXGraphView::drawStills() {
  const auto w = getWindowPos();
  if (w.x1 - w.x0 < 360 || w.y1 - w.y0 < 240 || !edit_) return;
  Ux::Ptr<FXGraphViewNode> primary;
  for (const auto& n : nodes_)
    if (n->isPrimary()) primary = n;
  if (!primary) return;
  // However large the view, the preview stays a picture the stills cache
  // keeps: one it could not keep would be asked for again at every frame.
  const int pw = std::min((w.x1 - w.x0) / 5, 1920), ph = pw * 9 / 16;
  const PixelBox box{w.x1 - pw - 6, w.y1 - ph - 6, w.x1 - 6, w.y1 - 6};
  previewBox_ = box;
  if (!drawArea(box)) return;
  EditGraphIterator at = getIteratorFor(primary->getNodeID(), 9);
  if (!at.isValid()) return;
  const Render::RenderContext context(at, VideoFormat{"preview", pw, ph, edit_->getVideoMetadata().aspectRatio()});
  Ux::Ptr<UxImage> still;
  if (stillsInBackground_) {
    still = Render::StillsCache::instance().getStillImage(context);
    if (still) {
      previewShown_ = still;
    } else {
      requestStill(primary->getNodeID(), previewStill, context);
      // The picture shown before stands in while it fits.
      if (previewShown_ && previewShown_->width() == pw && previewShown_->height() == ph) still = previewShown_;
    }
  } else {
    still = previewShown_ = Render::VidRenderUtils::cachedStill(context);
  }
  CanvasRenderer r = canvas().renderer();
  r.renderPrimitive(
      Glib::RectDescription{{box.x0 - 2, box.y0 - 2, box.x1 + 2, box.y1 + 2}, fromColour(getPalette().window(6))});
  if (still)
    r.renderPrimitive(Glib::ImageDescription{box, still});
  else
    r.renderPrimitive(Glib::RectDescription{box, fromColour(getPalette().window(3))});
  r.addModifiedArea(box);
}

bool FXGraphView::requestStill(const IdStamp& node, Still what, const Render::RenderContext& context) {
  if (!Render::StillsQueue::instance().request(this, node, what, context)) return false;
  if (!stillsTimer_) {
    // Finished stills are looked for on each tick.
    stillsTimer_ = true;
    enableETime();
  }
  return true;
}

std::size_t FXGraphView::stillsPending() const {
  return stillsTimer_ ? Render::StillsQueue::instance().outstanding(this) : 0;
}

void FXGraphView::takeStills() {
  if (!stillsTimer_) return;
  Render::StillsQueue& queue = Render::StillsQueue::instance();
  std::vector<Render::StillsQueue::Finished> finished = queue.take(this);
  if (queue.outstanding(this) == 0) {
    stillsTimer_ = false;
    disableETime();
  }
  if (finished.empty()) return;
  std::unordered_set<IdStamp> nodes;
  bool preview = false;
  for (Render::StillsQueue::Finished& f : finished) {
    Render::StillsCache::instance().add(f.context, f.still);
    if (f.what == previewStill)
      preview = true;
    else
      nodes.insert(f.node);
  }
  if (preview) {
    // The preview lies over everything else: it alone is drawn again.
    const auto w = getWindowPos();
    const PixelBox held = canvas().getClipRect();
    canvas().setClipRect({std::max(previewBox_.x0 - 2, w.x0), std::max(previewBox_.y0 - 2, w.y0),
                          std::min(previewBox_.x1 + 2, w.x1), std::min(previewBox_.y1 + 2, w.y1)});
    drawStills();
    canvas().setClipRect(held);
  }
  // Only what shows the new thumbnails is drawn again; many at once, in one go.
  std::vector<PixelBox> areas;
  for (const auto& n : nodes_)
    if (n->drawnLast() && nodes.count(n->getNodeID())) {
      const PixelBox& t = n->thumbBox();
      areas.push_back({t.x0 - 1, t.y0 - 1, t.x1 + 1, t.y1 + 1});
    }
  if (areas.size() <= 8) {
    for (const PixelBox& a : areas) redrawArea(a);
    return;
  }
  PixelBox all = areas.front();
  for (const PixelBox& a : areas)
    all = {std::min(all.x0, a.x0), std::min(all.y0, a.y0), std::max(all.x1, a.x1), std::max(all.y1, a.y1)};
  redrawArea(all);
}

void FXGraphView::finishStills() {
  Render::StillsQueue& queue = Render::StillsQueue::instance();
  // Showing a still may ask for another (the edit moved on meanwhile).
  while (stillsTimer_) {
    queue.wait(this);
    takeStills();
  }
}
