#include "graph_view/TimerHold.h"

#include "graph_view/FXGraphView.h"

TimerHold::TimerHold(FXGraphView& view) : view_(&view) { view.enableETime(); }

TimerHold& TimerHold::operator=(TimerHold&& other) noexcept {
  if (this != &other) {
    release();
    view_ = other.view_;
    other.view_ = nullptr;
  }
  return *this;
}

void TimerHold::release() noexcept {
  if (!view_) return;
  FXGraphView* view = view_;
  view_ = nullptr;
  view->disableETime();
}
