#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Button.h"

// A button with a text label; a click sends its message to the parent.
class FXHOST_API PushButton : public Button {
public:
  // A width of 0 fits the label.
  PushButton(const LightweightString<wchar_t>& label, const LightweightString<char>& message, int width = 0,
             int height = calcHeight());

  static int calcHeight();
  // The width that shows the whole label.
  static int calcWidth(const LightweightString<wchar_t>& label);

  const LightweightString<wchar_t>& getLabel() const noexcept { return label_; }
  void setLabel(const LightweightString<wchar_t>& label, bool redrawNow = true);

  void draw() override;
  LightweightString<char> idstring() const override { return "PushButton"; }

private:
  LightweightString<wchar_t> label_;
};
