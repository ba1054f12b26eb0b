#pragma once

class FXGraphView;

// One hold on the view's timer, given back when the hold ends (reset,
// replaced or destroyed), as EasyBackup closes its undo step: the timer
// ticks while any hold is kept, so a part that forgets to let go cannot
// leave it running, and one that lets go twice cannot stop another's.
class TimerHold {
public:
  TimerHold() = default;
  explicit TimerHold(FXGraphView& view);
  TimerHold(TimerHold&& other) noexcept : view_(other.view_) { other.view_ = nullptr; }
  TimerHold& operator=(TimerHold&& other) noexcept;
  TimerHold(const TimerHold&) = delete;
  TimerHold& operator=(const TimerHold&) = delete;
  ~TimerHold() { release(); }

  void release() noexcept;
  explicit operator bool() const noexcept { return view_ != nullptr; }

private:
  FXGraphView* view_ = nullptr;
};
