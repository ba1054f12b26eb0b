#include "host/render/RenderContext.h"

namespace {
struct Project {
  ARCSettings arc;
  bool lutEnabled = false;
  ViewLUT lut = ViewLUT::identity();
};
Project& project() {
  static Project p;
  return p;
}
} // namespace

ViewLUT ViewLUT::identity() {
  ViewLUT lut;
  for (auto& channel : lut.table)
    for (int i = 0; i < 256; ++i) channel[static_cast<std::size_t>(i)] = static_cast<uint8_t>(i);
  return lut;
}

ImageFormat getIntermediateImageFormat() { return {}; }

ARCSettings getARCSettings() { return project().arc; }

void setARCSettings(const ARCSettings& arc) { project().arc = arc; }

bool getViewLUTEnabled() { return project().lutEnabled; }

const ViewLUT& getViewLUT() { return project().lut; }

void setViewLUT(bool enabled, const ViewLUT& lut) {
  project().lutEnabled = enabled;
  project().lut = lut;
}

namespace Render {

RenderContext::RenderContext(const EditGraphIterator& at, const VideoFormat& format)
    : at_(at), time_(at.getEdit() ? at.getEdit()->wholeFrame(at.getTime()) : at.getTime()), format_(format),
      imageFormat_(getIntermediateImageFormat()), arc_(getARCSettings()) {}

} // namespace Render
