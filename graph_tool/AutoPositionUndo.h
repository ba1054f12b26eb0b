#pragma once
#include <memory>

#include "GrphToolApi.h"
#include "host/core/UndoExtra.h"

class Edit;

// Automatic positioning turned on lays the graph out again over the hand
// placings: that is one undo step, which turns it back off in the panels on
// the edit (the placings come back with the step's positions).
class GRPHTOOL_API AutoPositionUndo : public UndoExtra {
public:
  AutoPositionUndo(const Edit* edit, bool on) : edit_(edit), on_(on) {}
  // The mode of the first panel on the edit, kept for the step.
  static std::shared_ptr<const UndoExtra> of(const Edit* edit);

  std::shared_ptr<const UndoExtra> capture() const override { return of(edit_); }
  void restore() const override;

private:
  const Edit* edit_; // compared, never dereferenced: the edit owns the step
  bool on_;
};
