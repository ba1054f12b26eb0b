#include "host/render/VidRenderUtils.h"

#include "host/render/RenderCounters.h"
#include "host/render/StillPlan.h"
#include "host/render/StillsCache.h"

namespace Render {

Ux::Ptr<UxImage> VidRenderUtils::renderStill(const RenderContext& context) {
  StillPlan plan(context);
  Ux::Ptr<UxImage> picture = plan.run();
  if (picture) ++counters().stillsRendered;
  return picture;
}

Ux::Ptr<UxImage> VidRenderUtils::cachedStill(const RenderContext& context) {
  StillsCache& cache = StillsCache::instance();
  if (Ux::Ptr<UxImage> still = cache.getStillImage(context)) return still;
  Ux::Ptr<UxImage> still = renderStill(context);
  cache.add(context, still);
  return still;
}

void VidRenderUtils::unRender(const CelEventPair& cel, bool everyFrame) {
  const ce_handle handle = cel.getEffectHandle();
  if (!handle.valid()) return;
  // A graph cel's graph, or the material a material cel shows.
  const IdStamp head = handle.id().valid() ? handle.id() : cel.getMaterialId();
  if (!head.valid()) return;
  if (everyFrame)
    StillsCache::instance().forgetGraph(handle.edit(), head);
  else
    StillsCache::instance().forgetGraph(handle.edit(), head, cel.editTime(), cel.endEditTime());
}

} // namespace Render
