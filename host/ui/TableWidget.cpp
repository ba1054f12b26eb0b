#include "host/ui/TableWidget.h"

#include <algorithm>
#include <cmath>

#include "host/ui/MenuGlob.h"
#include "host/ui/ScrollBar.h"
#include "host/ui/UifStd.h"

namespace {
constexpr int cellPadding = 4; // left and right of a cell's text
constexpr int rowHeight = UifStd::getRowHeight();
} // namespace

iTableAdaptor::~iTableAdaptor() = default;

Colour iTableAdaptor::getColourFor(int row, const Palette& palette) const {
  return palette.window(row % 2 == 0 ? 1 : 2);
}

void iTableAdaptor::getFieldColours(const TableCell& cell, const Palette& palette, Colour& text,
                                    Colour& background) const {
  text = palette.text();
  background = getColourFor(cell.row, palette);
}

TableWidget::TableWidget(iTableAdaptor& adaptor, XY<int> size) : Glob(size), adaptor_(adaptor) {
  scrollBar_ = static_cast<ScrollBar*>(
      addChild(new ScrollBar(ScrollBar::vertical, std::max(1, size.y - headerHeight())), BottomRight(0, 0)));
  refresh(false);
}

bool TableWidget::hasHeader() const {
  for (const ColumnDefinition& c : adaptor_.getColumnDefinitions())
    if (!resourceStrW(c.titleResource).empty()) return true;
  return false;
}

int TableWidget::headerHeight() const { return hasHeader() ? rowHeight : 0; }

int TableWidget::visibleRowCount() const { return std::max(0, (height() - headerHeight()) / rowHeight); }

int TableWidget::contentWidth() const {
  return width() - (scrollBar_ && scrollBar_->isVisible() ? ScrollBar::thickness() : 0);
}

std::vector<std::pair<int, int>> TableWidget::columnEdges() const {
  const std::vector<ColumnDefinition> columns = adaptor_.getColumnDefinitions();
  int fixed = 0, shared = 0;
  for (const ColumnDefinition& c : columns) c.width > 0 ? fixed += c.width : ++shared;
  const int spare = std::max(0, contentWidth() - fixed);
  std::vector<std::pair<int, int>> edges;
  int x = 0, sharedSoFar = 0;
  for (const ColumnDefinition& c : columns) {
    int w = c.width;
    if (w <= 0) {
      // The last shared column takes the pixels that division leaves over.
      ++sharedSoFar;
      w = sharedSoFar == shared ? spare - spare / shared * (shared - 1) : spare / shared;
    }
    edges.emplace_back(x, x + w);
    x += w;
  }
  return edges;
}

void TableWidget::refresh(bool redrawNow) {
  rows_ = std::max(0, adaptor_.getSize());
  if (selected_ >= rows_) selected_ = -1;
  scrollToRow(firstRow_, false);
  if (redrawNow) redraw();
}

void TableWidget::updateScrollBar() {
  const int visible = visibleRowCount();
  const bool needed = rows_ > visible;
  scrollBar_->setVisible(needed);
  if (!needed) return;
  scrollBar_->setThumbSize(double(visible) / rows_, false);
  scrollBar_->setThumbPosition(double(firstRow_) / rows_, false);
}

void TableWidget::scrollToRow(int row, bool redrawNow) {
  firstRow_ = std::clamp(row, 0, std::max(0, rows_ - visibleRowCount()));
  updateScrollBar();
  if (redrawNow) redraw();
}

void TableWidget::setSelectedRow(int row, bool redrawNow) {
  selected_ = row >= 0 && row < rows_ ? row : -1;
  if (redrawNow) redraw();
}

void TableWidget::resize(double w, double h) {
  Glob::resize(w, h);
  if (scrollBar_) {
    scrollBar_->resize(ScrollBar::thickness(), std::max(1, height() - headerHeight()));
    layoutChildren();
    scrollToRow(firstRow_, false);
  }
}

TableCell TableWidget::getCellAt(XY<int> p) const {
  const int top = height() - headerHeight();
  if (p.x < 0 || p.x >= contentWidth() || p.y < 0 || p.y >= top) return {};
  const int row = firstRow_ + (top - 1 - p.y) / rowHeight;
  if (row >= rows_) return {};
  const auto edges = columnEdges();
  for (int c = 0; c < static_cast<int>(edges.size()); ++c)
    if (p.x >= edges[c].first && p.x < edges[c].second) return {row, c};
  return {};
}

TableCell TableWidget::getCellForMouseEvent(const Event& e) const {
  // The screen point: the event may have been given to another glob.
  return getCellAt(e.screen - screenPos());
}

Glob::PixelBox TableWidget::getCellBox(const TableCell& cell) const {
  const auto edges = columnEdges();
  if (!cell.valid() || cell.row >= rows_ || cell.column >= static_cast<int>(edges.size())) return {};
  const int shown = cell.row - firstRow_;
  if (shown < 0 || shown >= visibleRowCount()) return {};
  const int top = height() - headerHeight() - shown * rowHeight;
  return {edges[cell.column].first, top - rowHeight, edges[cell.column].second, top};
}

bool TableWidget::handleMouseEvent(const Event& e) {
  if (!isActive()) return false;
  if (e.type == Event::wheel) {
    // Away from the user scrolls towards the first row.
    scrollToRow(firstRow_ - e.wheelSteps, true);
    return true;
  }
  if (mouse_right_event(e)) return MenuGlob::processRightMouseClicks(this, e);
  const TableCell cell = getCellAt(e.position);
  if (mouse_down_event(e)) {
    if (!cell.valid()) return false;
    setSelectedRow(cell.row, true);
    if (mouse_left_event(e)) {
      dragRow_ = cell.row;
      dragColumn_ = cell.column;
    }
    adaptor_.handleMouseClickEvent(cell, e);
    return true;
  }
  if (mouse_move_event(e)) {
    if (dragRow_ < 0 || !cell.valid()) return dragRow_ >= 0;
    // Step to the row under the mouse one neighbour at a time, as far as the adaptor lets it.
    bool swapped = false;
    while (cell.row != dragRow_) {
      const int next = dragRow_ + (cell.row > dragRow_ ? 1 : -1);
      if (!adaptor_.canSwap(dragRow_, next)) break;
      adaptor_.swapFields(dragRow_, next, dragColumn_);
      dragRow_ = next;
      swapped = true;
    }
    if (swapped) {
      selected_ = dragRow_;
      refresh(true);
    }
    return true;
  }
  if (mouse_up_event(e)) {
    const bool wasDragging = dragRow_ >= 0;
    dragRow_ = dragColumn_ = -1;
    if (cell.valid()) adaptor_.handleMouseClickEvent(cell, e);
    refresh(true);
    return wasDragging || cell.valid();
  }
  return false;
}

bool TableWidget::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  double position = 0;
  if (sender != scrollBar_ || !ScrollBar::parsePosition(msg, position)) return false;
  firstRow_ = std::clamp(static_cast<int>(std::lround(position * rows_)), 0, std::max(0, rows_ - visibleRowCount()));
  redraw();
  return true;
}

void TableWidget::draw() {
  // The adaptor may have changed without a refresh().
  refresh(false);
  const Palette& p = getPalette();
  const int w = contentWidth(), h = height();
  drawRect({0, 0, width(), h}, p.window(3));
  const auto columns = adaptor_.getColumnDefinitions();
  const auto edges = columnEdges();
  if (hasHeader()) {
    drawRect({0, h - rowHeight, w, h}, p.window(4));
    for (std::size_t c = 0; c < columns.size(); ++c)
      drawText({edges[c].first + cellPadding, h - rowHeight, edges[c].second - cellPadding, h},
               resourceStrW(columns[c].titleResource), p.text(), {}, columns[c].alignment);
  }
  const int last = std::min(rows_, firstRow_ + visibleRowCount());
  for (int row = firstRow_; row < last; ++row) {
    for (int c = 0; c < static_cast<int>(columns.size()); ++c) {
      const TableCell cell{row, c};
      const PixelBox box = getCellBox(cell);
      Colour text, background;
      adaptor_.getFieldColours(cell, p, text, background);
      drawRect(box, background);
      if (!adaptor_.drawField(cell, *this, box))
        drawText({box.x0 + cellPadding, box.y0, box.x1 - cellPadding, box.y1}, adaptor_.getFieldText(cell), text, {},
                 columns[c].alignment);
    }
    if (row == selected_) {
      const PixelBox first = getCellBox({row, 0});
      drawFrame({0, first.y0, w, first.y1}, p.window(7), 1);
    }
  }
}
