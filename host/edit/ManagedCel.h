#pragma once
#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"

class Edit;

// The video content of an edit, as one cel: the editor identifies it by the
// id of the edit's first video channel.
class FXHOST_API ManagedCel {
public:
  explicit ManagedCel(const Edit& edit);

  // Whether the edit has a video channel at all.
  bool hasVideo() const noexcept { return id_.valid(); }
  // The first video channel's id; (0, 0, 0) when there is none.
  const IdStamp& id() const noexcept { return id_; }

private:
  IdStamp id_;
};
