#pragma once
#include "graph_view/ViewPart.h"
#include "host/core/LightweightString.h"

// One line along the view's bottom edge saying why something asked for was
// not done (a drop the editor refused, a Return with nothing to act on): the
// refusal is never silent. The next press or key takes it away.
class GRPHTOOL_API ViewNotice : public ViewPart {
public:
  explicit ViewNotice(FXGraphView& view) : ViewPart(view) {}

  void say(const LightweightString<wchar_t>& text);
  const LightweightString<wchar_t>& text() const noexcept { return text_; }

  bool mouse(const Event& e) override;
  bool key(const Event& e) override;
  void draw() override;

private:
  void clear();
  LightweightString<wchar_t> text_;
};
