// The table widget through its adaptor (clicks, row drags that swap, the
// wheel) and the tabbed dialogue's page changes, driven by screen events.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/ui/TabbedDialogue.h"
#include "host/ui/TableWidget.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

namespace {

// Rows of text in one column; rows named "fixed" refuse to move.
class ListAdaptor : public iTableAdaptor {
public:
  int getSize() const override { return static_cast<int>(rows.size()); }
  LightweightString<wchar_t> getFieldText(const TableCell& cell) const override { return toWide(rows.at(cell.row)); }
  std::vector<ColumnDefinition> getColumnDefinitions() const override { return {ColumnDefinition{noResource}}; }
  bool canSwap(int a, int b) const override { return rows.at(a) != "fixed" && rows.at(b) != "fixed"; }
  void swapFields(int a, int b, int) override { std::swap(rows.at(a), rows.at(b)); }
  bool handleMouseClickEvent(const TableCell& cell, const Event& e) override {
    clicks.push_back({cell.row, e.type == Event::mouseUp && isMouseMoveSignificant(e)});
    return true;
  }

  std::vector<std::string> rows;
  std::vector<std::pair<int, bool>> clicks; // row, released after a drag
};

struct TableAndTabs : UiTest {
  ListAdaptor list;
  TableWidget* addTable(int rowsHigh) {
    auto* table = new TableWidget(list, {200, rowsHigh * 22});
    root->addChild(table, Glob::BottomLeft(10, 10));
    return table;
  }
  static XY<int> rowOnScreen(const TableWidget& table, int row) {
    const Glob::PixelBox b = table.getCellBox({row, 0});
    return onScreen(table, {(b.x0 + b.x1) / 2, (b.y0 + b.y1) / 2});
  }
};

} // namespace

TEST_F(TableAndTabs, RowsAreClickedDraggedPastNeighboursAndScrolled) {
  list.rows = {"dissolve", "wipe", "blur", "fixed", "gain"};
  TableWidget* table = addTable(6);
  click(rowOnScreen(*table, 1));
  EXPECT_EQ(table->getSelectedRow(), 1);

  // Dragging swaps with each row passed, and stops at one that refuses.
  press(rowOnScreen(*table, 0));
  moveTo(rowOnScreen(*table, 4));
  release(rowOnScreen(*table, 4));
  EXPECT_EQ(list.rows, (std::vector<std::string>{"wipe", "blur", "dissolve", "fixed", "gain"}));
  EXPECT_EQ(table->getSelectedRow(), 2) << "the selection follows the dragged row";
  EXPECT_EQ(list.clicks, (std::vector<std::pair<int, bool>>{{1, false}, {1, false}, {0, false}, {4, true}}));

  // Rows that do not fit scroll with the wheel, never past the last row.
  for (int i = 0; i < 20; ++i) list.rows.push_back("row " + std::to_string(i));
  table->refresh();
  wheel(centreOf(*table), -3);
  EXPECT_EQ(table->getFirstVisibleRow(), 3);
  wheel(centreOf(*table), -100);
  EXPECT_EQ(table->getFirstVisibleRow(), static_cast<int>(list.rows.size()) - 6);
}

TEST_F(TableAndTabs, ClickingAnotherTabSelectsItAndTellsTheParentOnce) {
  TabbedDialogue::InitArgs args;
  args.creationInfo.size = {root->width(), TabbedDialogue::minHeight()};
  auto* tabs = new TabbedDialogue(args);
  root->addChild(tabs, Glob::TopLeft(0, 0));
  tabs->setPages({L"Video", L"A1", L"A2"}, 0, false);
  tabs->setPageID(2, L"1.0.3");
  EXPECT_EQ(tabs->findPageIdx(L"1.0.3"), 2);

  const Glob::PixelBox third = tabs->tabBox(2);
  const XY<int> at = onScreen(*tabs, {(third.x0 + third.x1) / 2, (third.y0 + third.y1) / 2});
  click(at);
  EXPECT_EQ(tabs->getCurrentTabIndex(), 2);
  click(at);
  ASSERT_EQ(root->dataMessages.size(), 1u) << "the selected tab again is no change";
  EXPECT_EQ(root->dataMessages[0].message, TabbedDialogue::changePageMsg);
  EXPECT_EQ(root->dataMessages[0].sender, tabs);

  // From code, the parent hears only when asked to.
  tabs->selectPage(0, false, false);
  tabs->selectPage(1, true, true);
  EXPECT_EQ(tabs->getCurrentTabIndex(), 1);
  EXPECT_EQ(root->dataMessages.size(), 2u);
}
