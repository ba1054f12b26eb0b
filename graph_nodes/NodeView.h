#pragma once
#include "GrphToolApi.h"
#include "host/core/Box.h"
#include "host/core/XY.h"
#include "host/edit/EditGraphIterator.h"
#include "node_ui/VidRouting.h"

struct Colour;
class Glob;
namespace Render {
class RenderContext;
}

// The graph view as its on-screen nodes see it: how graph units land in the
// view's pixels, which way the graph runs, the edit the nodes stand in, the
// glob they draw on, and the stills they ask for. The view implements it and
// hands itself to the nodes it makes, so that nodes need nothing of the
// view's own layer.
class GRPHTOOL_API NodeView {
public:
  using Orientation = VidRouting::Orientations::Orientation;
  using PixelBox = Ux::Box<int, Ux::BottomUpTraits>;
  enum Still { thumbnailStill = 0, previewStill = 1 };

  // The glob the nodes draw on (its canvas, palette and redraw).
  virtual Glob& glob() = 0;
  virtual const EditPtr& getEdit() const = 0;
  virtual Orientation getOrientation() const = 0;
  // Pixels per graph unit at the current zoom.
  virtual double getScale() const = 0;
  virtual void graphToViewSpace(double x, double y, double& vx, double& vy) const = 0;
  virtual XY<double> graphToViewSpace(const XY<double>& p) const = 0;
  // Clips a box of view pixels to the visible window; false when nothing shows.
  virtual bool clipRectToView(int& l, int& b, int& r, int& t) const = 0;
  virtual EditGraphIterator getIteratorFor(const IdStamp& id, int flags) const = 0;
  // Text in a box of view pixels.
  virtual void drawText(const PixelBox& box, const LightweightString<wchar_t>& text, const Colour& colour,
                        const LightweightString<char>& font, int pointSize = 0) = 0;
  // Whether stills are made in the background, and asking for one there;
  // false when it is under way already.
  virtual bool stillsInBackground() const = 0;
  virtual bool requestStill(const IdStamp& node, Still what, const Render::RenderContext& context) = 0;

protected:
  ~NodeView() = default;
};
