#include "graph_tool/PanelStatus.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "host/edit/Vob.h"
#include "host/ui/TextMetrics.h"

PanelStatus::PanelStatus(std::function<Vob*()> vob, XY<int> size) : Glob(size), vob_(std::move(vob)) {}

LightweightString<wchar_t> PanelStatus::timecode(double seconds, double frameRate) {
  const double rate = std::isfinite(frameRate) && frameRate > 0 ? std::min(frameRate, 1000.0) : 25.0;
  const long long fps = std::max(1LL, std::llround(rate));
  // Capped at 9999 hours, past any edit's length, so the text stays short.
  const double most = 3600.0 * 9999;
  const double t = std::isfinite(seconds) ? std::clamp(seconds, 0.0, most) : 0.0;
  const long long frames = std::llround(t * double(fps));
  const long long f = frames % fps, s = frames / fps;
  wchar_t text[32];
  std::swprintf(text, 32, L"%02lld:%02lld:%02lld:%02lld", s / 3600, (s / 60) % 60, s % 60, f);
  return LightweightString<wchar_t>(text);
}

bool PanelStatus::unsaved() const {
  Vob* vob = vob_();
  const EditPtr edit = vob ? vob->getEdit() : EditPtr();
  return edit && edit->isDirty();
}

LightweightString<wchar_t> PanelStatus::text() const {
  Vob* vob = vob_();
  const EditPtr edit = vob ? vob->getEdit() : EditPtr();
  if (!edit) return {};
  LightweightString<wchar_t> line = timecode(vob->getCurrentTime(), edit->getFrameRate());
  if (edit->isDirty()) line += L"   \u25cf Unsaved changes";
  return line;
}

void PanelStatus::refresh() {
  const LightweightString<wchar_t> now = text();
  if (now == shown_) return;
  shown_ = now;
  redraw();
}

void PanelStatus::draw() {
  shown_ = text();
  drawRect({0, 0, width(), height()}, getPalette().window(3));
  Vob* vob = vob_();
  const EditPtr edit = vob ? vob->getEdit() : EditPtr();
  if (!edit) return;
  // The time in the panel's ink; the warning after it stands out.
  const LightweightString<wchar_t> time = timecode(vob->getCurrentTime(), edit->getFrameRate());
  const int timeWidth = measureText(time).x;
  drawText({4, 0, std::min<int>(width(), 4 + timeWidth + 2), height()}, time, getPalette().text(), {}, 0);
  if (edit->isDirty())
    drawText({timeWidth + 16, 0, width() - 2, height()}, L"\u25cf Unsaved changes", Colour(0.75, 0.3, 0.0), {}, 0);
}
