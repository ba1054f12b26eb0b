#include "host/ui/PushButton.h"

#include "host/ui/TextMetrics.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int labelMargin = 10; // each side of the label, pixels
}

PushButton::PushButton(const LightweightString<wchar_t>& label, const LightweightString<char>& message, int width,
                       int height)
    : Button({width > 0 ? width : calcWidth(label), height}, message), label_(label) {}

int PushButton::calcHeight() { return UifStd::getRowHeight(); }

int PushButton::calcWidth(const LightweightString<wchar_t>& label) { return measureText(label).x + 2 * labelMargin; }

void PushButton::setLabel(const LightweightString<wchar_t>& label, bool redrawNow) {
  label_ = label;
  if (redrawNow) redraw();
}

void PushButton::draw() {
  const PixelBox face{0, 0, width(), height()};
  drawFace(face);
  // A pressed face moves its label down and right by a pixel.
  const int shift = isPressed() ? 1 : 0;
  drawText({2 + shift, -shift, width() - 2 + shift, height() - shift}, label_, inkColour(), {}, 1);
}
