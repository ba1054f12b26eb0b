#pragma once
#include <functional>

#include "GrphToolApi.h"
#include "host/ui/Glob.h"

class Vob;

// A line of state along the panel's bottom: the current time as a timecode
// at the edit's frame rate, and whether the edit has changes not saved.
class GRPHTOOL_API PanelStatus : public Glob {
public:
  // `vob` tells which vob the panel follows now.
  PanelStatus(std::function<Vob*()> vob, XY<int> size);
  // The text as it stands now; redraws when it changed.
  void refresh();
  LightweightString<wchar_t> text() const;
  bool unsaved() const;
  void draw() override;
  LightweightString<char> idstring() const override { return "PanelStatus"; }

  // HH:MM:SS:FF, frames counted at the rate rounded to a whole number.
  static LightweightString<wchar_t> timecode(double seconds, double frameRate);

private:
  std::function<Vob*()> vob_;
  LightweightString<wchar_t> shown_;
  bool unsavedShown_ = false;
};
