#pragma once
// What a renderer draws. All positions are screen pixels, bottom-up.
#include <vector>

#include "host/core/Box.h"
#include "host/core/LightweightString.h"
#include "host/core/Palette.h"
#include "host/core/Ptr.h"
#include "host/core/XY.h"
#include "host/draw/UxImage.h"

namespace Glib {

using PixelBox = Ux::Box<int, Ux::BottomUpTraits>;

struct RectDescription {
  PixelBox box;
  NormalisedRGB colour;
};

// A frame round a box. Style 1 is a plain line one pixel wide; style 2 a
// raised bevel (light top-left, dark bottom-right).
struct FrameDescription {
  PixelBox box;
  NormalisedRGB colour;
  int style = 1;
};

// A cubic Bezier curve from `start` to `end`, pulled by `control1` (the
// start's) and `control2` (the end's).
struct BezierCurveDescription {
  NormalisedRGB colour;
  XY<int> start, end, control1, control2;
  unsigned short thickness = 1;
};

// A disc or a sector of one (angles in degrees, anticlockwise from east);
// with `outline` only its edge is drawn.
struct DiscDescription {
  XY<int> centre;
  int radius = 0;
  NormalisedRGB colour;
  double startAngle = 0, endAngle = 360;
  bool outline = false;
  unsigned short thickness = 1;
};

// Text in a box. Alignment: 0 left, 1 centred, 2 right; vertically centred.
struct TextDescription {
  PixelBox box;
  LightweightString<wchar_t> text;
  LightweightString<char> font; // a family name; empty is the default font
  int pointSize = 0;            // 0: fitted to the box's height
  NormalisedRGB colour;
  int alignment = 1;
};

// An image scaled into a box.
struct ImageDescription {
  PixelBox box;
  Ux::Ptr<UxImage> image;
};

// A straight line.
struct LineDescription {
  XY<int> from, to;
  NormalisedRGB colour;
  unsigned short thickness = 1;
};

} // namespace Glib
