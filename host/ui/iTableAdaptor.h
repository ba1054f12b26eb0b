#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/config/Resources.h"
#include "host/core/Box.h"
#include "host/core/LightweightString.h"
#include "host/core/Palette.h"
#include "host/ui/Event.h"

class Glob;

// A cell of a table: rows from 0 at the top, columns from 0 at the left.
struct TableCell {
  int row = -1;
  int column = -1;
  bool valid() const noexcept { return row >= 0 && column >= 0; }
  friend bool operator==(const TableCell&, const TableCell&) = default;
};

// One column of a table.
struct ColumnDefinition {
  int titleResource = noResource; // the heading's text; noResource for none
  int width = 0;                  // pixels; 0 shares out what fixed columns leave
  int alignment = 0;              // of the cells' text: 0 left, 1 centred, 2 right
};

// What a TableWidget shows and what it does when the user acts on it: the
// table asks its adaptor for everything each time it draws.
class FXHOST_API iTableAdaptor {
public:
  iTableAdaptor() = default;
  iTableAdaptor(const iTableAdaptor&) = default;
  iTableAdaptor& operator=(const iTableAdaptor&) = default;
  virtual ~iTableAdaptor();

  // The number of rows.
  virtual int getSize() const = 0;
  virtual LightweightString<wchar_t> getFieldText(const TableCell& cell) const = 0;
  virtual std::vector<ColumnDefinition> getColumnDefinitions() const = 0;

  // Reordering: a row dragged onto its neighbour swaps with it when both
  // agree. `column` is the column the drag began in.
  virtual bool canSwap(int, int) const { return false; }
  virtual void swapFields(int, int, int) {}

  // Left and middle button presses and releases on a cell (the event as the
  // table got it, in the table's pixels); true when the adaptor acted.
  virtual bool handleMouseClickEvent(const TableCell&, const Event&) { return false; }

  // A row's background; by default rows alternate between two shades.
  virtual Colour getColourFor(int row, const Palette& palette) const;
  // A cell's text and background colours; by default the palette's text
  // colour on getColourFor(row).
  virtual void getFieldColours(const TableCell& cell, const Palette& palette, Colour& text, Colour& background) const;
  // Draws a cell itself, in the table's pixels, over its background;
  // false leaves it to the table, which draws the field's text.
  virtual bool drawField(const TableCell&, Glob&, const Ux::Box<int>&) { return false; }
};
