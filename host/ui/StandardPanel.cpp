#include "host/ui/StandardPanel.h"

#include <algorithm>

#include "host/ui/UifStd.h"

// The title text of a panel's header.
class TitleLabel : public Glob {
public:
  TitleLabel(const StandardPanel& panel, XY<int> size) : Glob(size), panel_(panel) {}
  void draw() override {
    drawRect({0, 0, width(), height()}, getPalette().window(4));
    drawText({4, 0, width() - 4, height()}, panel_.getTitle(), getPalette().text(), UifStd::getTitleFont(), 0);
  }
  LightweightString<char> idstring() const override { return "TitleLabel"; }

private:
  const StandardPanel& panel_;
};

// The close button of a panel's header: sends "close" to the panel.
class CloseButton : public Glob {
public:
  explicit CloseButton(XY<int> size) : Glob(size) {}
  void draw() override {
    drawRect({0, 0, width(), height()}, getPalette().window(4));
    const Colour ink = getPalette().text();
    CanvasRenderer r = canvas().renderer();
    const int m = std::max(3, height() / 4);
    r.renderPrimitive(Glib::LineDescription{{m, m}, {width() - m - 1, height() - m - 1}, fromColour(ink), 2});
    r.renderPrimitive(Glib::LineDescription{{m, height() - m - 1}, {width() - m - 1, m}, fromColour(ink), 2});
  }
  bool handleMouseEvent(const Event& e) override {
    if (mouse_left_event(e) && mouse_up_event(e) && !isMouseMoveSignificant(e)) sendMessage("close");
    return mouse_left_event(e);
  }
  LightweightString<char> idstring() const override { return "CloseButton"; }
};

StandardPanel::InitArgs::~InitArgs() = default;

StandardPanel::StandardPanel(const InitArgs& args) : border_(args.creationInfo.border) {
  setPalette(args.palette);
  Glob::resize(args.creationInfo.size.x, args.creationInfo.size.y);
}

StandardPanel::StandardPanel(XY<int> size) { Glob::resize(size.x, size.y); }

StandardPanel::~StandardPanel() = default;

void StandardPanel::setBorder(const Border& b) {
  border_ = b;
  layoutChildren();
}

int StandardPanel::calcSize(int spacing, int, const Border& border) { return border.width + spacing; }

int StandardPanel::headerHeight() const { return UifStd::getRowHeight(); }

void StandardPanel::setTitle(const LightweightString<wchar_t>& title, const LightweightString<char>& font) {
  title_ = title;
  titleFont_ = font;
}

LightweightString<wchar_t> StandardPanel::getTitle() const { return title_; }

void StandardPanel::addStandardWidgets(int flags) {
  const int inset = calcSize(0, 0, border_);
  const int row = headerHeight();
  if ((flags & closeWidget) && !closeButton_)
    closeButton_ = addChild(new CloseButton({row, row}), TopRight(inset, inset));
  if ((flags & titleWidget) && !titleText_) {
    const int width = std::max(40, static_cast<int>(this->width()) - 2 * inset - row - UifStd::getWidgetGap());
    titleText_ = addChild(new TitleLabel(*this, {width, row}), TopLeft(inset, inset));
  }
}

Glob* StandardPanel::getTitleWidget(int index) const {
  return index == 0 ? titleText_ : index == 1 ? closeButton_ : nullptr;
}

void StandardPanel::setMinSize(int w, int h) {
  min_ = {std::max(0, w), std::max(0, h)};
  // A panel with no size yet (0 by 0, as a layout restores one) is given
  // its size later: the minimum only bounds what it is given.
  if (width() == 0 && height() == 0) return;
  if (width() < min_.x || height() < min_.y) resize(width(), height());
}

Glob::PixelBox StandardPanel::getUserArea() const {
  const int b = border_.width;
  return {b, b, std::max(b, width() - b), std::max(b, height() - b - headerHeight() - UifStd::getWidgetGap())};
}

void StandardPanel::resize(double w, double h) {
  Glob::resize(std::max<double>(w, min_.x), std::max<double>(h, min_.y));
  // The title text takes whatever the header leaves.
  if (titleText_) {
    const int inset = calcSize(0, 0, border_);
    int right = width() - inset;
    if (closeButton_) right -= closeButton_->width() + UifStd::getWidgetGap();
    const int grow = std::max(40, right - titleText_->getX());
    titleText_->resize(grow, titleText_->height());
  }
}

void StandardPanel::draw() {
  const int w = width(), h = height();
  drawRect({0, 0, w, h}, getPalette().window(3));
  drawRect({0, h - headerHeight() - border_.width, w, h}, getPalette().window(4));
  drawFrame({0, 0, w, h}, getPalette().window(6), 1);
}

bool StandardPanel::handleMouseEvent(const Event& e) {
  const int corner = std::max(8, border_.width * 2);
  if (mouse_left_event(e) && mouse_down_event(e)) {
    const bool inHeader = e.position.y >= height() - headerHeight() - border_.width;
    const bool inCorner = e.position.x >= width() - corner && e.position.y < corner;
    if (resizable_ && inCorner)
      drag_ = Drag::size;
    else if (movable_ && inHeader && !isChildGlob())
      drag_ = Drag::move;
    else
      return false;
    dragFrom_ = e.screen;
    dragStartPos_ = {getX(), getY()};
    dragStartSize_ = {width(), height()};
    return true;
  }
  if (drag_ == Drag::none) return false;
  const XY<int> d = e.screen - dragFrom_;
  if (drag_ == Drag::move) {
    setPos(dragStartPos_.x + d.x, dragStartPos_.y + d.y);
  } else {
    // The top edge stays put: the bottom follows the mouse down.
    const int h = std::max(min_.y, dragStartSize_.y - d.y);
    setPos(getX(), dragStartPos_.y + dragStartSize_.y - h);
    resize(dragStartSize_.x + d.x, h);
  }
  GlobManager::invalidate();
  if (mouse_up_event(e)) drag_ = Drag::none;
  return true;
}

bool StandardPanel::handleMessageEvent(const LightweightString<char>& msg, Glob* sender) {
  if (msg == "close" && sender == closeButton_) {
    GlobManager::requestDeletion(getRootParent());
    return true;
  }
  return false;
}
