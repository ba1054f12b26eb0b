#pragma once
#include <algorithm>
#include <vector>

#include "host/core/IdStamp.h"
#include "host/edit/EffectModification.h"

// One change to an edit, told to everyone showing it. The kinds the tool
// reacts to: 3 the edit's name, 4 an effect's parameters, 5 the graph's
// structure or connections, 11 an effect's active flag.
struct EditModification {
  enum Kind { name = 3, effectParams = 4, structure = 5, effectActive = 11 };

  int kind = structure;
  IdStamp nodeId; // the node concerned, when there is one
  bool audio = false;

  EditModification() = default;
  explicit EditModification(int kind_, const IdStamp& node = {}, bool audio_ = false)
      : kind(kind_), nodeId(node), audio(audio_) {}
  // Whether it concerns that node (or any node, for an unnamed change).
  bool matches(const IdStamp& node) const { return !nodeId.valid() || nodeId == node; }
  bool isAudioPlugin() const { return audio; }
};

struct EditModifications {
  std::vector<EditModification> items;

  EditModifications() = default;
  EditModifications(std::initializer_list<EditModification> list) : items(list) {}
  void add(const EditModification& m) { items.push_back(m); }
  bool includes(int kind) const {
    return std::any_of(items.begin(), items.end(), [kind](const EditModification& m) { return m.kind == kind; });
  }
  bool empty() const { return items.empty(); }
};

// What changed about a vob itself, beside its edit's modifications.
struct VobModification {
  enum Flag { timeChanged = 1, editReplaced = 2, closing = 4 };
  int flags = 0;
};
