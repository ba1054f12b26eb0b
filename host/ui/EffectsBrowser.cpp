#include "host/ui/EffectsBrowser.h"

#include <algorithm>
#include <cmath>

#include "host/render/EffectTemplateManager.h"
#include "host/ui/GlobManager.h"
#include "host/ui/MenuGlob.h"
#include "host/ui/ScrollBar.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int rowHeight = UifStd::getRowHeight();
constexpr int headingIndent = 16; // room for the fold triangle
const Colour selection(0.24, 0.44, 0.74);
} // namespace

EffectTemplateDragItem::EffectTemplateDragItem(const EffectTemplateSummary& summary)
    : DragDropItem(kindName, summary.name), summary_(summary) {}

EffectTemplateDragItem::~EffectTemplateDragItem() = default;

EffectsBrowser::InitArgs::InitArgs(Vob* vob_, int viewType_, int flags_, uint16_t width, uint16_t height)
    : StandardPanel::InitArgs({width, height}), vob(vob_), viewType(viewType_), flags(flags_) {}

EffectsBrowser::EffectsBrowser(const InitArgs& args)
    : Glob(args.creationInfo.size), vob_(args.vob), viewType_(args.viewType), flags_(args.flags) {
  setPalette(args.palette);
  scrollBar_ = static_cast<ScrollBar*>(
      addChild(new ScrollBar(ScrollBar::vertical, std::max(1, static_cast<int>(height()))), BottomRight(0, 0)));
  scrollBar_->setVisible(false);
}

EffectsBrowser::~EffectsBrowser() = default;

void EffectsBrowser::getCategories(std::vector<EffectCategory>& out) {
  EffectTemplateManager::instance().getCategories(out, TemplateMatcher(), EffectTemplateManager::withTemplatesOnly);
}

void EffectsBrowser::ensureContent() {
  if (gathered_) return;
  gathered_ = true;
  categories_.clear();
  getCategories(categories_);
  buildRows();
}

void EffectsBrowser::refresh(bool redrawNow) {
  gathered_ = false;
  selected_ = {-1, -1};
  pressedRow_ = -1;
  ensureContent();
  if (redrawNow) redraw();
}

const std::vector<EffectCategory>& EffectsBrowser::categories() {
  ensureContent();
  return categories_;
}

void EffectsBrowser::buildRows() {
  rows_.clear();
  for (int c = 0; c < static_cast<int>(categories_.size()); ++c) {
    if (viewType_ != templatesOnly) rows_.push_back({c, -1});
    if (viewType_ != templatesOnly && isCollapsed(c)) continue;
    for (int t = 0; t < static_cast<int>(categories_[c].templates.size()); ++t) rows_.push_back({c, t});
  }
  scrollToRow(firstRow_, false);
}

int EffectsBrowser::rowCount() {
  ensureContent();
  return static_cast<int>(rows_.size());
}

int EffectsBrowser::visibleRowCount() const { return height() / rowHeight; }

int EffectsBrowser::listWidth() const { return width() - (scrollBar_->isVisible() ? ScrollBar::thickness() : 0); }

void EffectsBrowser::updateScrollBar() {
  const int rows = static_cast<int>(rows_.size());
  const bool needed = rows > visibleRowCount();
  scrollBar_->setVisible(needed);
  if (!needed) return;
  scrollBar_->setThumbSize(double(visibleRowCount()) / rows, false);
  scrollBar_->setThumbPosition(double(firstRow_) / rows, false);
}

void EffectsBrowser::scrollToRow(int row, bool redrawNow) {
  firstRow_ = std::clamp(row, 0, std::max(0, static_cast<int>(rows_.size()) - visibleRowCount()));
  updateScrollBar();
  if (redrawNow) redraw();
}

int EffectsBrowser::rowAt(XY<int> p) {
  ensureContent();
  if (p.x < 0 || p.x >= listWidth() || p.y < 0 || p.y >= height()) return -1;
  const int row = firstRow_ + (height() - 1 - p.y) / rowHeight;
  return row < static_cast<int>(rows_.size()) ? row : -1;
}

Glob::PixelBox EffectsBrowser::rowBox(int row) {
  ensureContent();
  const int shown = row - firstRow_;
  if (row < 0 || row >= static_cast<int>(rows_.size()) || shown < 0 || shown >= visibleRowCount()) return {};
  const int top = height() - shown * rowHeight;
  return {0, top - rowHeight, listWidth(), top};
}

const EffectTemplateSummary* EffectsBrowser::summaryOf(const Row& row) const {
  if (row.category < 0 || row.category >= static_cast<int>(categories_.size()) || row.item < 0) return nullptr;
  const auto& templates = categories_[row.category].templates;
  return row.item < static_cast<int>(templates.size()) ? &templates[row.item] : nullptr;
}

const EffectTemplateSummary* EffectsBrowser::templateAt(XY<int> position) {
  const int row = rowAt(position);
  return row < 0 ? nullptr : summaryOf(rows_[row]);
}

const EffectTemplateSummary* EffectsBrowser::getSelectedTemplate() {
  ensureContent();
  return summaryOf(selected_);
}

bool EffectsBrowser::isCollapsed(int category) const {
  if (category < 0 || category >= static_cast<int>(categories_.size())) return false;
  return std::find(collapsed_.begin(), collapsed_.end(), categories_[category].name) != collapsed_.end();
}

void EffectsBrowser::setCollapsed(int category, bool collapsed, bool redrawNow) {
  ensureContent();
  if (category < 0 || category >= static_cast<int>(categories_.size()) || isCollapsed(category) == collapsed) return;
  if (collapsed)
    collapsed_.push_back(categories_[category].name);
  else
    std::erase(collapsed_, categories_[category].name);
  if (collapsed && selected_.category == category) selected_ = {-1, -1};
  buildRows();
  if (redrawNow) redraw();
}

void EffectsBrowser::resize(double w, double h) {
  Glob::resize(w, h);
  if (!scrollBar_) return;
  scrollBar_->resize(ScrollBar::thickness(), std::max(1, static_cast<int>(height())));
  layoutChildren();
  scrollToRow(firstRow_, false);
}

bool EffectsBrowser::handleMouseEvent(const Event& e) {
  if (!isActive()) return false;
  ensureContent();
  if (e.type == Event::wheel) {
    // Away from the user scrolls towards the top of the list.
    scrollToRow(firstRow_ - e.wheelSteps, true);
    return true;
  }
  if (mouse_right_event(e)) return MenuGlob::processRightMouseClicks(this, e);
  if (!mouse_left_event(e)) return false;
  if (mouse_down_event(e)) {
    const int row = rowAt(e.position);
    if (row < 0) return false;
    if (rows_[row].item < 0) {
      setCollapsed(rows_[row].category, !isCollapsed(rows_[row].category), true);
      return true;
    }
    selected_ = rows_[row];
    pressedRow_ = row;
    dragging_ = false;
    redraw();
    return true;
  }
  if (pressedRow_ < 0) return false;
  if (mouse_move_event(e) && !dragging_ && isMouseMoveSignificant(e)) {
    if (const EffectTemplateSummary* s = summaryOf(rows_[pressedRow_]))
      dragging_ = GlobManager::startDrag(Ux::Ptr<DragDropItem>(new EffectTemplateDragItem(*s)));
  }
  if (mouse_up_event(e)) {
    pressedRow_ = -1;
    dragging_ = false;
  }
  return true;
}

bool EffectsBrowser::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  double position = 0;
  if (sender != scrollBar_ || !ScrollBar::parsePosition(msg, position)) return false;
  scrollToRow(static_cast<int>(std::lround(position * static_cast<double>(rows_.size()))), true);
  return true;
}

void EffectsBrowser::draw() {
  ensureContent();
  const Palette& p = getPalette();
  drawRect({0, 0, width(), height()}, p.window(1));
  const int last = std::min(static_cast<int>(rows_.size()), firstRow_ + visibleRowCount() + 1);
  for (int i = firstRow_; i < last; ++i) {
    const Row& row = rows_[i];
    const int top = height() - (i - firstRow_) * rowHeight;
    const PixelBox box{0, top - rowHeight, listWidth(), top};
    if (row.item < 0) {
      drawRect(box, p.window(4));
      const bool open = !isCollapsed(row.category);
      // A fold triangle: pointing down when open, right when folded.
      CanvasRenderer r = canvas().renderer();
      const int cx = 8, cy = (box.y0 + box.y1) / 2;
      const NormalisedRGB ink = fromColour(p.text());
      for (int k = 0; k < 4; ++k) {
        if (open)
          r.renderPrimitive(Glib::LineDescription{{cx - 3 + k, cy + 2 - k}, {cx + 3 - k, cy + 2 - k}, ink, 1});
        else
          r.renderPrimitive(Glib::LineDescription{{cx - 2 + k, cy - 3 + k}, {cx - 2 + k, cy + 3 - k}, ink, 1});
      }
      drawText({headingIndent, box.y0, box.x1 - 4, box.y1}, categories_[row.category].name, p.text(), "Sans Bold", 0);
      continue;
    }
    const EffectTemplateSummary& s = categories_[row.category].templates[row.item];
    const bool selected = row.category == selected_.category && row.item == selected_.item;
    if (selected) drawRect(box, selection);
    const Colour ink = selected ? Colour(1, 1, 1) : p.text();
    const int indent = viewType_ == templatesOnly ? 6 : headingIndent + UifStd::getIndentWidth();
    drawText({indent, box.y0, box.x1 - 4, box.y1}, s.name, ink, {}, 0);
  }
}
