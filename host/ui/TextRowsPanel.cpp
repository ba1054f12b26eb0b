#include "host/ui/TextRowsPanel.h"

#include <algorithm>

#include "host/notify/Log.h"
#include "host/ui/UifStd.h"

namespace {
// A row's text takes the full row height; the gap keeps the rows off the frame.
constexpr int margin = UifStd::getWidgetGap();

bool onScreen(const Glob* g) {
  if (!GlobManager::initialised()) return false;
  const auto& roots = GlobManager::roots();
  return std::find(roots.begin(), roots.end(), g) != roots.end();
}
} // namespace

TextRowsPanel::TextRowsPanel(const InitArgs& args) : StandardPanel(args) {
  setMovable(true);
  addStandardWidgets(titleWidget | closeWidget);
}

TextRowsPanel::~TextRowsPanel() = default;

int TextRowsPanel::heightFor(std::size_t rowCount) const {
  return 2 * borderSize() + headerHeight() + UifStd::getWidgetGap() +
         static_cast<int>(rowCount) * UifStd::getRowHeight() + reserveBottom_ + margin;
}

void TextRowsPanel::setReserve(int bottom, int right) {
  reserveBottom_ = std::max(0, bottom);
  reserveRight_ = std::max(0, right);
}

void TextRowsPanel::setRows(std::vector<Row> rows) {
  rows_ = std::move(rows);
  const int h = heightFor(rows_.size());
  if (h != height()) {
    if (onScreen(this)) {
      setPos(getX(), getY() + height() - h);
      GlobManager::invalidate();
    }
    resize(width(), h);
  }
  if (onScreen(this)) redraw();
}

Glob::PixelBox TextRowsPanel::rowBox(std::size_t index) const {
  const PixelBox user = getUserArea();
  const int top = user.y1 - static_cast<int>(index) * UifStd::getRowHeight();
  return {user.x0 + margin, top - UifStd::getRowHeight(), user.x1 - margin - reserveRight_, top};
}

void TextRowsPanel::draw() {
  StandardPanel::draw();
  const Colour ink = getPalette().text();
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    const Row& row = rows_[i];
    const PixelBox box = rowBox(i);
    if (row.heading || row.value.empty()) {
      drawText(box, row.label, ink, row.heading ? UifStd::getTitleFont() : LightweightString<char>(), 0);
      continue;
    }
    // Labels take two fifths of the row, values the rest.
    const int split = box.x0 + (box.x1 - box.x0) * 2 / 5;
    drawText({box.x0, box.y0, split - margin, box.y1}, row.label, ink, {}, 0);
    drawText({split, box.y0, box.x1, box.y1}, row.value, ink, {}, 0);
  }
}

bool TextRowsPanel::showOnScreen(Glob* root, XY<int> position) {
  if (!root) return false;
  if (!GlobManager::initialised()) {
    Log::printf("%s cannot be shown: there is no screen", root->idstring().c_str());
    delete root;
    return false;
  }
  const XY<int> at = GlobManager::getSafePosForGlob(root->canvas(), position, {root->width(), root->height()});
  root->setPos(at.x, at.y);
  GlobManager::realize(root);
  return true;
}
