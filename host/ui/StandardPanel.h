#pragma once
#include "host/FxHostApi.h"
#include "host/ui/Glob.h"
#include "host/ui/GlobManager.h"

class TitleLabel;

// A framed panel: a border, a header row with its title widgets (the title
// text and a close button), and a user area below the header where its
// content goes. It can be moved by its header and resized from its
// bottom-right corner, and is never made smaller than its minimum size.
class FXHOST_API StandardPanel : public Glob {
public:
  struct FXHOST_API InitArgs {
    GlobCreationInfo creationInfo;
    Palette palette;
    InitArgs() = default;
    explicit InitArgs(XY<int> size) { creationInfo.size = size; }
    virtual ~InitArgs();
  };
  // Flags of addStandardWidgets.
  enum StandardWidgets { titleWidget = 1, closeWidget = 16 };

  explicit StandardPanel(const InitArgs& args);
  explicit StandardPanel(XY<int> size);
  ~StandardPanel() override;

  static Border getDefaultBorder() { return Border{0, 4, 15}; }
  void setBorder(const Border& b);
  const Border& getBorder() const noexcept { return border_; }
  int borderSize() const noexcept { return border_.width; }
  // The inset of header widgets from the panel's top edge.
  static int calcSize(int spacing, int theme, const Border& border);
  // The height of the header row.
  int headerHeight() const;

  void setResizable(bool on) noexcept { resizable_ = on; }
  void setMovable(bool on) noexcept { movable_ = on; }
  void setPersistable(bool on) noexcept { persistable_ = on; }
  bool isPersistable() const noexcept { return persistable_; }
  void setTitle(const LightweightString<wchar_t>& title, const LightweightString<char>& font);
  LightweightString<wchar_t> getTitle() const;
  // Makes the title widgets: flags 1 the title text, 16 the close button.
  void addStandardWidgets(int flags);
  // Title widget 0 is the title text, 1 the close button; null when absent.
  Glob* getTitleWidget(int index) const;
  // Takes a widget out of the panel (deleting it with `destroy`).
  bool removeWidget(Glob* widget, bool destroy) { return removeChild(widget, destroy); }

  void setMinSize(int w, int h);
  XY<int> getMinSize() const noexcept { return min_; }

  PixelBox getUserArea() const override;
  void resize(double w, double h) override;
  void draw() override;
  bool handleMouseEvent(const Event& e) override;
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  LightweightString<char> idstring() const override { return "StandardPanel"; }

private:
  Border border_ = getDefaultBorder();
  XY<int> min_{0, 0};
  bool resizable_ = false;
  bool movable_ = false;
  bool persistable_ = false;
  LightweightString<wchar_t> title_;
  LightweightString<char> titleFont_;
  Glob* titleText_ = nullptr;
  Glob* closeButton_ = nullptr;
  enum class Drag { none, move, size } drag_ = Drag::none;
  XY<int> dragFrom_;
  XY<int> dragStartPos_;
  XY<int> dragStartSize_;
};
