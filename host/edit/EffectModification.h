#pragma once
#include "host/core/IdStamp.h"

// A description of a change to a graph node, delivered to the node's clients.
// `kind` is the host's change number (4: a parameter or flag of the effect,
// 5: its connections, 11: its active flag).
struct EffectModification {
  IdStamp id;          // identifies the change itself
  int kind = 0;
  IdStamp nodeId;      // the node changed
  IdStamp otherNodeId; // a node the change involves, or (0, 0, 0)
  int flags = 0;

  EffectModification() = default;
  EffectModification(const IdStamp& id_, int kind_, const IdStamp& node, const IdStamp& other, int flags_)
      : id(id_), kind(kind_), nodeId(node), otherNodeId(other), flags(flags_) {}
  explicit EffectModification(int kind_) : kind(kind_) {}
};
