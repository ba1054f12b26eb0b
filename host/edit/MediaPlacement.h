#pragma once
#include <algorithm>

// Where a file material's media lies in the edit: the media's time `in`
// (seconds from the file's first frame) is shown at edit time `at`, and the
// media runs at `speed` from there (0 holds that frame; 2 runs twice as
// fast). Before its first frame a file shows its first.
struct MediaPlacement {
  double in = 0;
  double at = 0;
  double speed = 1;
  // Whether `at` was given; when not, the material's first cel places it.
  bool placed = false;

  double mediaTime(double editTime) const noexcept { return std::max(0.0, in + (editTime - at) * speed); }
};
