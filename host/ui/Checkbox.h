#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Button.h"

// A box that is ticked or not, with a label to its right. A click flips the
// state and sends "Checkbox On" or "Checkbox Off" (the new state) to the
// parent, which can also ask the sender for getState().
class FXHOST_API Checkbox : public Button {
public:
  static constexpr const char* messagePrefix = "Checkbox ";

  // A width of 0 fits the label; the height defaults to one row.
  Checkbox(const LightweightString<wchar_t>& label, bool checked, int width = 0, int height = 0);

  // The width that shows the box and the whole label. Border type 0 has no
  // frame round the widget; any other adds a one-pixel frame on both sides.
  // The appearance and the last flag choose looks that this host draws alike.
  static int calcWidth(const LightweightString<wchar_t>& label, int borderType, int appearance, bool compact);

  bool getState() const noexcept { return checked_; }
  // Sets the state without sending a message.
  void setState(bool checked, bool redrawNow = true);
  const LightweightString<wchar_t>& getLabel() const noexcept { return label_; }

  void draw() override;
  LightweightString<char> idstring() const override { return "Checkbox"; }

protected:
  void clicked() override;

private:
  LightweightString<wchar_t> label_;
  bool checked_;
};
