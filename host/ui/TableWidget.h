#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Glob.h"
#include "host/ui/iTableAdaptor.h"

class ScrollBar;

// A table of rows one row high, with a heading row when any column has a
// title, filled by an iTableAdaptor (not owned; it must outlive the table).
// A vertical scroll bar appears when the rows do not fit; the wheel scrolls
// too. A left press selects a row; dragging it onto a neighbour swaps the two
// when the adaptor agrees, row by row as the mouse goes. A right click shows
// the context menu of the table or of its nearest parent that offers one.
class FXHOST_API TableWidget : public Glob {
public:
  TableWidget(iTableAdaptor& adaptor, XY<int> size);

  iTableAdaptor& adaptor() noexcept { return adaptor_; }
  // Reads the row count again and redraws: call after the content changed.
  void refresh(bool redrawNow = true);

  // The cell under an event's mouse position; invalid (row -1) off the cells.
  TableCell getCellForMouseEvent(const Event& e) const;
  // The cell at a point in the table's pixels.
  TableCell getCellAt(XY<int> position) const;
  // A cell's box in the table's pixels; empty when it is scrolled out of view.
  PixelBox getCellBox(const TableCell& cell) const;

  bool hasHeader() const;
  int getFirstVisibleRow() const noexcept { return firstRow_; }
  int visibleRowCount() const;
  void scrollToRow(int row, bool redrawNow);
  int getSelectedRow() const noexcept { return selected_; }
  void setSelectedRow(int row, bool redrawNow);
  const ScrollBar& scrollBar() const noexcept { return *scrollBar_; }

  void resize(double w, double h) override;
  bool handleMouseEvent(const Event& e) override;
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  void draw() override;
  LightweightString<char> idstring() const override { return "TableWidget"; }

private:
  int headerHeight() const;
  int contentWidth() const;
  // Each column's left and right edge.
  std::vector<std::pair<int, int>> columnEdges() const;
  void updateScrollBar();

  iTableAdaptor& adaptor_;
  ScrollBar* scrollBar_ = nullptr; // a child
  int rows_ = 0;                   // the adaptor's size when last read
  int firstRow_ = 0;
  int selected_ = -1;
  int dragRow_ = -1; // the row being dragged, -1 when none
  int dragColumn_ = -1;
};
