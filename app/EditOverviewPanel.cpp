#include "app/EditOverviewPanel.h"

#include <algorithm>
#include <cstdio>

#include "host/config/Resources.h"
#include "host/config/StripColours.h"
#include "host/edit/EditGraphIterator.h"
#include "host/render/StillsCache.h"
#include "host/render/VidRenderUtils.h"
#include "host/ui/UifStd.h"

namespace fxgraph {
namespace {
constexpr int nameWidth = 48;
} // namespace

EditOverviewPanel::EditOverviewPanel(Vob* vob, XY<int> size) : StandardPanel(size), VobClient(vob, 1) {
  setBorder(getDefaultBorder());
  setMovable(true);
  setResizable(true);
  const LightweightString<wchar_t> name = vob && vob->getEdit() ? vob->getEdit()->getName() : L"";
  setTitle(paddedResourceStrW(11587, "", " : ") + name, UifStd::getTitleFont());
  addStandardWidgets(titleWidget | closeWidget);
  setMinSize(360, 220);
  slider_ = new ScrollBar(ScrollBar::horizontal, std::max(40, int(width()) - 2 * borderSize() - 80));
  addChild(slider_, BottomLeft(borderSize() + UifStd::getWidgetGap(), borderSize() + UifStd::getWidgetGap()));
  slider_->setThumbSize(0.04, false);
  syncSlider();
}

EditOverviewPanel::~EditOverviewPanel() = default;

double EditOverviewPanel::editLength() const {
  return getVob() && getVob()->getEdit() ? std::max(1e-6, getVob()->getEdit()->getEndTime()) : 1.0;
}

void EditOverviewPanel::resize(double w, double h) {
  StandardPanel::resize(w, h);
  if (slider_) slider_->resize(std::max(40, int(width()) - 2 * borderSize() - 80), ScrollBar::thickness());
}

Glob::PixelBox EditOverviewPanel::timelineBox() const {
  const PixelBox user = getUserArea();
  const int bottom = user.y0 + ScrollBar::thickness() + 3 * UifStd::getWidgetGap();
  return {user.x0 + UifStd::getWidgetGap(), bottom, (user.x0 + user.x1) / 2, user.y1 - UifStd::getWidgetGap()};
}

Glob::PixelBox EditOverviewPanel::stillBox() const {
  const PixelBox t = timelineBox();
  const PixelBox user = getUserArea();
  const int left = t.x1 + 2 * UifStd::getWidgetGap();
  const int right = user.x1 - UifStd::getWidgetGap();
  // A 16:9 picture as wide as the space allows, at the top.
  const int w = std::max(0, right - left);
  const int h = std::min(t.y1 - t.y0, w * 9 / 16);
  return {left, t.y1 - h, left + h * 16 / 9, t.y1};
}

void EditOverviewPanel::draw() {
  StandardPanel::draw();
  drawTimeline();
  drawStill();
  char text[48];
  std::snprintf(text, sizeof text, "%.2f s", getVob() ? getVob()->getCurrentTime() : 0.0);
  const int x = slider_->getX() + slider_->width() + UifStd::getWidgetGap();
  drawText({x, slider_->getY() - 4, x + 70, slider_->getY() + slider_->height() + 4}, toWide(text), getPalette().text(),
           {}, 0);
}

void EditOverviewPanel::drawTimeline() {
  const PixelBox box = timelineBox();
  if (!getVob() || !getVob()->getEdit() || box.y1 <= box.y0) return;
  const Edit& edit = *getVob()->getEdit();
  const int n = edit.getNumChans();
  if (n == 0) return;
  const int row = std::min(UifStd::getRowHeight() + 4, (box.y1 - box.y0) / n);
  const double length = editLength();
  const int x0 = box.x0 + nameWidth, x1 = box.x1;
  auto xAt = [&](double t) { return x0 + static_cast<int>((x1 - x0) * std::clamp(t / length, 0.0, 1.0)); };
  for (int i = 0; i < n; ++i) {
    const EditChannel& c = edit.getChan(i);
    const int top = box.y1 - i * row, bottom = top - row + 3;
    drawText({box.x0, bottom, x0 - 4, top}, c.name, getPalette().text(), {}, 0);
    drawRect({x0, bottom, x1, top}, getPalette().window(5));
    for (const Cel& cel : c.cels) {
      Colour colour(0.08, 0.08, 0.08);
      if (cel.kind == Cel::Kind::graph)
        colour = StripColourManager::getTypeColour(c.type == TrackType::audio ? StripColourManager::audio
                                                                              : StripColourManager::effect);
      else if (cel.kind == Cel::Kind::material)
        colour = StripColourManager::getTypeColour(StripColourManager::material);
      const PixelBox celBox{xAt(cel.start), bottom + 1, std::max(xAt(cel.start) + 1, xAt(cel.end) - 1), top - 1};
      drawRect(celBox, colour);
      if (auto node = edit.openNode(cel.ref))
        drawText({celBox.x0 + 3, celBox.y0, celBox.x1 - 2, celBox.y1}, node->getName(), nodeTextColour(), {}, 0);
    }
  }
  // The play position.
  const int px = xAt(getVob()->getCurrentTime());
  const int low = box.y1 - n * row;
  drawRect({px - 1, low, px + 1, box.y1}, Colour(0.9, 0.2, 0.15));
}

void EditOverviewPanel::drawStill() {
  const PixelBox box = stillBox();
  if (box.x1 - box.x0 < 8 || box.y1 - box.y0 < 8) return;
  drawRect(box, Colour(0, 0, 0));
  if (!getVob() || !getVob()->getEdit()) return;
  // The first video channel with something to show at the time.
  const EditPtr& edit = getVob()->getEdit();
  const double t = getVob()->getCurrentTime();
  EditGraphIterator at;
  for (int i = 0; i < edit->getNumChans() && !at.isValid(); ++i)
    if (edit->getChan(i).type == TrackType::video) at = EditGraphIterator::atChannel(edit, t, edit->getChanId(i));
  if (!at.isValid()) return;
  const Render::RenderContext context(at, VideoFormat{"overview", box.x1 - box.x0, box.y1 - box.y0, 16.0 / 9.0});
  Render::StillsCache& cache = Render::StillsCache::instance();
  Ux::Ptr<UxImage> still = cache.getStillImage(context);
  if (!still) {
    still = Render::VidRenderUtils::renderStill(context);
    cache.add(context, still);
  }
  CanvasRenderer r = canvas().renderer();
  r.renderPrimitive(Glib::ImageDescription{box, still});
  r.addModifiedArea(box);
  drawFrame(box, getPalette().window(6), 1);
  drawText({box.x0, box.y0 - UifStd::getRowHeight(), box.x1, box.y0}, at.getNode()->getName(), getPalette().text());
}

void EditOverviewPanel::syncSlider() {
  if (!slider_ || !getVob()) return;
  const double size = slider_->getThumbSize();
  slider_->setThumbPosition(std::clamp(getVob()->getCurrentTime() / editLength(), 0.0, 1.0) * (1 - size), true);
}

bool EditOverviewPanel::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  double position = 0;
  if (sender == slider_ && ScrollBar::parsePosition(msg, position)) {
    if (getVob()) {
      const double size = slider_->getThumbSize();
      const double t = size < 1 ? position / (1 - size) * editLength() : 0;
      getVob()->setCurrentTime(getVob()->getEdit() ? getVob()->getEdit()->wholeFrame(t) : t);
    }
    return true;
  }
  return StandardPanel::handleMessageEvent(msg, sender);
}

bool EditOverviewPanel::handleKeyEvent(const Event& e) {
  if (e.type != Event::keyDown || !getVob() || !getVob()->getEdit()) return false;
  // Left and right step a frame (SDL's arrow key codes).
  const double frame = 1.0 / getVob()->getEdit()->getFrameRate();
  if (e.key == 0x40000050)
    getVob()->setCurrentTime(std::max(0.0, getVob()->getCurrentTime() - frame));
  else if (e.key == 0x4000004F)
    getVob()->setCurrentTime(getVob()->getCurrentTime() + frame);
  else
    return false;
  return true;
}

void EditOverviewPanel::handleModifications(const EditModifications&, const VobModification& vobMod) {
  if (vobMod.flags & VobModification::closing) return;
  syncSlider();
  redraw();
}

} // namespace fxgraph
