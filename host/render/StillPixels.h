#pragma once
// The picture operations that stills are made of, on premultiplied ARGB
// frames. They read their inputs and make new frames, so a picture may be
// shared between threads once it is made.
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Colour.h"
#include "host/draw/UxImage.h"
#include "host/render/RenderContext.h"

namespace Render::Pixels {

using Image = Ux::Ptr<UxImage>;

FXHOST_API Image blank(int w, int h);
// Colour bars, "grid", "ramp" or "solid:R,G,B".
FXHOST_API Image testCard(const std::string& pattern, int w, int h);
// A picture file (square pixels) placed into a frame of `aspect` (the
// frame's display shape) as the picture-shape settings say, over a ground:
// black for material, clear for an imported image so that what it is laid
// over shows through its transparent parts.
FXHOST_API Image fitted(const Image& picture, int w, int h, double aspect, const ARCSettings& arc,
                        bool clearGround = false);
// The card of media that is not there or cannot be read: "Media offline"
// over the file's name.
FXHOST_API Image offline(const std::string& name, int w, int h);
// A flat matte, or a gradient from `bottom` to `top`.
FXHOST_API Image matte(bool flat, const Colour& bottom, const Colour& top, int w, int h);
FXHOST_API Image mix(const Image& a, const Image& b, double amount);
FXHOST_API Image wipe(const Image& a, const Image& b, double position);
// The foreground scaled and centred at (x, y), fractions of the frame with y up.
FXHOST_API Image pictureInPicture(const Image& fg, const Image& bg, double x, double y, double scale);
FXHOST_API Image colourCorrect(const Image& in, const std::vector<double>& gain);
// The picture through a view look-up table, as a new picture.
FXHOST_API Image withLUT(const UxImage& image, const ViewLUT& lut);

} // namespace Render::Pixels
