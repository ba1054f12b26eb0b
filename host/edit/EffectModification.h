#pragma once
#include "host/core/IdStamp.h"

// A change to one graph node, delivered to the node's clients.
struct EffectModification {
  // The kinds of change, shared with edit modifications.
  enum eType { eParams = 4, eConnections = 5, eActive = 11 };

  IdStamp id; // identifies the change itself
  int kind = 0;
  IdStamp nodeId;      // the node changed
  IdStamp otherNodeId; // a node the change involves, or (0, 0, 0)
  int flags = 0;

  EffectModification() = default;
  EffectModification(const IdStamp& id_, int kind_, const IdStamp& node, const IdStamp& other, int flags_)
      : id(id_), kind(kind_), nodeId(node), otherNodeId(other), flags(flags_) {}
  explicit EffectModification(int kind_, const IdStamp& node = {}) : kind(kind_), nodeId(node) {}
};
