#pragma once
#include <memory>
#include <vector>

#include "host/core/IdStamp.h"
#include "host/core/Ptr.h"
#include "host/core/UndoExtra.h"
#include "host/core/XY.h"

class NodeUIPosManager;

// The draw and hand-placed positions of every record of an edit's position
// manager, as one undo step of the edit brings them back (after the edit's
// own state, so that they win over a layout made of it). Records made since
// are left as they are; records gone since are not made again (their nodes
// are gone with them).
class PositionsUndo : public UndoExtra {
public:
  // The manager's general notification once the positions are back.
  static constexpr const char* restoredMsg = "PositionsRestored";

  explicit PositionsUndo(Ux::Ptr<NodeUIPosManager> manager);
  std::shared_ptr<const UndoExtra> capture() const override;
  void restore() const override;
  std::size_t size() const noexcept { return saved_.size(); }

private:
  struct Saved {
    IdStamp id;
    XY<double> draw, manual;
    bool manualSet;
  };
  Ux::Ptr<NodeUIPosManager> manager_;
  std::vector<Saved> saved_;
};
