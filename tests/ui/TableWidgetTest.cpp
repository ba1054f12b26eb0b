#include "host/ui/TableWidget.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "host/ui/ScrollBar.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

namespace {

// Rows of text in one column; rows named "fixed" refuse to move.
class ListAdaptor : public iTableAdaptor {
public:
  struct Click {
    TableCell cell;
    Event::Type type;
    bool significant;
  };

  int getSize() const override { return static_cast<int>(rows.size()); }
  LightweightString<wchar_t> getFieldText(const TableCell& cell) const override { return toWide(rows.at(cell.row)); }
  std::vector<ColumnDefinition> getColumnDefinitions() const override { return {ColumnDefinition{title}}; }
  bool canSwap(int a, int b) const override { return rows.at(a) != "fixed" && rows.at(b) != "fixed"; }
  void swapFields(int a, int b, int) override { std::swap(rows.at(a), rows.at(b)); }
  bool handleMouseClickEvent(const TableCell& cell, const Event& e) override {
    clicks.push_back({cell, e.type, isMouseMoveSignificant(e)});
    return true;
  }

  std::vector<std::string> rows;
  int title = noResource;
  std::vector<Click> clicks;
};

struct Tables : ::testing::Test {
  ScopedScreen screen{400, 300};
  RecordingGlob* root = new RecordingGlob({300, 240});
  ListAdaptor list;

  void SetUp() override {
    root->setPos(30, 30);
    GlobManager::realize(root);
  }
  TableWidget* addTable(int rowsHigh) {
    auto* table = new TableWidget(list, {200, rowsHigh * 22});
    root->addChild(table, Glob::BottomLeft(10, 10));
    return table;
  }
  // The middle of a row's first cell, on the screen.
  static XY<int> rowOnScreen(const TableWidget& table, int row) {
    const Glob::PixelBox b = table.getCellBox({row, 0});
    return onScreen(table, {(b.x0 + b.x1) / 2, (b.y0 + b.y1) / 2});
  }
};

} // namespace

TEST_F(Tables, DraggingARowSwapsItWithEachNeighbourItPasses) {
  list.rows = {"dissolve", "wipe", "blur", "fixed", "gain"};
  TableWidget* table = addTable(6);

  press(rowOnScreen(*table, 0));
  moveTo(rowOnScreen(*table, 1));
  EXPECT_EQ(list.rows, (std::vector<std::string>{"wipe", "dissolve", "blur", "fixed", "gain"}));
  // Two rows on in one move, then on into the row that refuses.
  moveTo(rowOnScreen(*table, 4));
  EXPECT_EQ(list.rows, (std::vector<std::string>{"wipe", "blur", "dissolve", "fixed", "gain"}));
  release(rowOnScreen(*table, 4));
  EXPECT_EQ(table->getSelectedRow(), 2) << "the selection follows the dragged row";

  // The adaptor saw the press and the release, the latter as a drag.
  ASSERT_EQ(list.clicks.size(), 2u);
  EXPECT_EQ(list.clicks[0].type, Event::mouseDown);
  EXPECT_EQ(list.clicks[0].cell, (TableCell{0, 0}));
  EXPECT_EQ(list.clicks[1].type, Event::mouseUp);
  EXPECT_TRUE(list.clicks[1].significant);
}

TEST_F(Tables, AClickReachesTheAdaptorWithItsCell) {
  list.rows = {"eq", "compressor", "source"};
  list.title = 10052;
  TableWidget* table = addTable(5);
  EXPECT_TRUE(table->hasHeader());
  // The heading takes the top row: row 0 sits under it.
  EXPECT_EQ(table->getCellBox({0, 0}).y1, table->height() - 22);

  click(rowOnScreen(*table, 1));
  ASSERT_EQ(list.clicks.size(), 2u);
  EXPECT_EQ(list.clicks[1].cell, (TableCell{1, 0}));
  EXPECT_EQ(list.clicks[1].type, Event::mouseUp);
  EXPECT_FALSE(list.clicks[1].significant);
  EXPECT_EQ(table->getSelectedRow(), 1);

  // A press below the last row is nobody's.
  EXPECT_FALSE(press(onScreen(*table, {20, 3})));
  release(onScreen(*table, {20, 3}));
  EXPECT_EQ(list.clicks.size(), 2u);

  // An event given to another glob still finds its cell by its screen point.
  Event e;
  e.screen = rowOnScreen(*table, 2);
  e.position = {1, 1};
  EXPECT_EQ(table->getCellForMouseEvent(e), (TableCell{2, 0}));
}

TEST_F(Tables, RowsThatDoNotFitScrollWithTheWheelAndTheBar) {
  for (int i = 0; i < 20; ++i) list.rows.push_back("row " + std::to_string(i));
  TableWidget* table = addTable(5);
  ASSERT_TRUE(table->scrollBar().isVisible());

  wheel(centreOf(*table), -3);
  EXPECT_EQ(table->getFirstVisibleRow(), 3);
  EXPECT_EQ(table->getCellAt({5, table->height() - 5}).row, 3);
  EXPECT_DOUBLE_EQ(table->scrollBar().getThumbPosition(), 0.15);
  wheel(centreOf(*table), -100);
  EXPECT_EQ(table->getFirstVisibleRow(), 15) << "stops with the last row at the bottom";

  // A press on the bar's trough above the thumb pages back.
  const ScrollBar& bar = table->scrollBar();
  click(onScreen(bar, {6, bar.height() - 3}));
  EXPECT_EQ(table->getFirstVisibleRow(), 10);

  list.rows.resize(3);
  table->refresh();
  EXPECT_FALSE(table->scrollBar().isVisible());
  EXPECT_EQ(table->getFirstVisibleRow(), 0);
}
