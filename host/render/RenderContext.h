#pragma once
#include <array>
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/EditGraphIterator.h"
#include "host/render/VideoFormats.h"

// The project's picture settings that renders follow.
struct FXHOST_API ImageFormat {
  int bitsPerChannel = 8;
};
struct FXHOST_API ARCSettings {
  // How a picture file of another shape goes into the frame: 0 letterbox
  // (the whole picture, bars around it), 1 centre cut (the frame filled, the
  // picture's overhang cut off), 2 stretch (the frame filled, shape lost).
  enum { letterbox = 0, centreCut = 1, stretch = 2 };
  int fit = letterbox;
};
// A view look-up table: per channel, 256 output levels.
struct FXHOST_API ViewLUT {
  std::array<std::array<uint8_t, 256>, 3> table{};
  static ViewLUT identity();
};
FXHOST_API ImageFormat getIntermediateImageFormat();
FXHOST_API ARCSettings getARCSettings();
FXHOST_API void setARCSettings(const ARCSettings& arc);
FXHOST_API bool getViewLUTEnabled();
FXHOST_API const ViewLUT& getViewLUT();
// Turns the project's view LUT on (with its table) or off.
FXHOST_API void setViewLUT(bool enabled, const ViewLUT& lut = ViewLUT::identity());

namespace Render {

// What picture is wanted: the graph position (a copy of an iterator), the
// time rounded to a whole frame, the output format and the project's
// picture settings.
class FXHOST_API RenderContext {
public:
  RenderContext(const EditGraphIterator& at, const VideoFormat& format);

  const EditGraphIterator& iterator() const noexcept { return at_; }
  EditGraphIterator& iterator() noexcept { return at_; }
  double time() const noexcept { return time_; }
  const VideoFormat& format() const noexcept { return format_; }
  const ImageFormat& imageFormat() const noexcept { return imageFormat_; }
  const ARCSettings& arc() const noexcept { return arc_; }
  void setViewLUT(const ViewLUT& lut) {
    lut_ = lut;
    lutEnabled_ = true;
  }
  bool hasViewLUT() const noexcept { return lutEnabled_; }
  const ViewLUT& viewLUT() const noexcept { return lut_; }

private:
  EditGraphIterator at_;
  double time_;
  VideoFormat format_;
  ImageFormat imageFormat_;
  ARCSettings arc_;
  bool lutEnabled_ = false;
  ViewLUT lut_;
};

} // namespace Render
