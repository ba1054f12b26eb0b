#include "node_ui/VidRouting.h"

namespace VidRouting {

LightweightString<char> Orientations::asString(Orientation o) {
  switch (o) {
  case LeftToRight:
    return "LeftToRight";
  case BottomToTop:
    return "BottomToTop";
  }
  return LightweightString<char>(std::string());
}

Orientations::Orientation Orientations::fromString(const LightweightString<char>& text) {
  return text == "BottomToTop" ? BottomToTop : LeftToRight;
}

} // namespace VidRouting
