#pragma once
#include "host/FxHostApi.h"
#include "host/edit/CelEventPair.h"
#include "host/render/RenderContext.h"

namespace Render {

// Renders stills of graph positions: materials are generated test cards or
// picture files, effects a few real operations (mix, wipe, picture in
// picture, colour correction, flat and gradient mattes); an aliased input,
// an unknown or a bypassed effect shows its input 0; a free input, and a
// node met again on its own path (a cycle), are black. Picture files are
// placed as the context's picture-shape settings say.
struct FXHOST_API VidRenderUtils {
  // The picture at the context's position; black when there is nothing to
  // show; null only for an invalid format.
  static Ux::Ptr<UxImage> renderStill(const RenderContext& context);
  // The still for the context from the stills cache, or rendered and kept there.
  static Ux::Ptr<UxImage> cachedStill(const RenderContext& context);
  // Drops the cached stills of the cel's graph (or of the material it
  // shows): of every frame, or only of the frames the cel spans.
  static void unRender(const CelEventPair& cel, bool everyFrame);
};

} // namespace Render
