#pragma once
#include <memory>

#include "host/FxHostApi.h"

// State kept beside an edit (outside its snapshots) that one undo step
// carries: hand-placed positions, say. Captured when the step is made;
// undoing it captures the state again for the redo.
class FXHOST_API UndoExtra {
public:
  virtual ~UndoExtra() = default;
  virtual std::shared_ptr<const UndoExtra> capture() const = 0;
  virtual void restore() const = 0;
};
