#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/ui/StandardPanel.h"

// A framed panel that shows rows of text under its header: a label with an
// optional value beside it, or a heading. Its height follows its rows; once
// it is on the screen its top edge stays put while it does.
class FXHOST_API TextRowsPanel : public StandardPanel {
public:
  struct Row {
    LightweightString<wchar_t> label;
    LightweightString<wchar_t> value; // empty: the label takes the whole row
    bool heading = false;
  };

  explicit TextRowsPanel(const InitArgs& args);
  ~TextRowsPanel() override;

  const std::vector<Row>& rows() const noexcept { return rows_; }
  // Replaces the rows, fits the height to them and redraws.
  void setRows(std::vector<Row> rows);
  // The height a panel of this border needs for that many rows.
  int heightFor(std::size_t rowCount) const;

  void draw() override;
  LightweightString<char> idstring() const override { return "TextRowsPanel"; }

  // Puts a root panel on the screen with its bottom-left corner at `position`,
  // moved as needed to lie on the screen, on top. Without a screen the root
  // is deleted, the log says why, and the answer is false.
  static bool showOnScreen(Glob* root, XY<int> position);

protected:
  // Pixels kept free under the rows (for buttons) and right of them.
  void setReserve(int bottom, int right);
  // A row's box in the panel's pixels.
  PixelBox rowBox(std::size_t index) const;

private:
  std::vector<Row> rows_;
  int reserveBottom_ = 0;
  int reserveRight_ = 0;
};
