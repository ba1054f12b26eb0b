#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/EffectInstance.h"

// Changes the connections and nodes of an edit's effect graph. It judges
// which connections are allowed: never a cycle, never a node feeding itself,
// only into a free-standing effect's existing input, video to video and audio
// to audio, and not into an effect whose connections are locked.
class FXHOST_API FXEditor {
public:
  // `editModule` and `channel` name the part of the edit being worked on; the
  // reference editor works on the whole edit.
  explicit FXEditor(const EditPtr& edit, int editModule = 0, int channel = -1);

  bool canConnectNodes(const EditGraphIterator& destination, int input, const EditGraphIterator& source) const;
  // Feeds input `input` of the destination from the source node; false when
  // not allowed. With `notify` the destination's clients hear of it.
  bool connectNodes(const EditGraphIterator& destination, int input, const EditGraphIterator& source, bool notify);
  // Frees the input slot; false when there is no such slot.
  bool disconnectNodes(const EditGraphIterator& destination, int input, bool notify);
  // Removes the node; whatever named it (inputs, a channel's graph head) is
  // given what fed its input 0 instead.
  bool destroyNode(const EditGraphIterator& at, bool notify);
  // Rotates the inputs: each slot takes the next slot's source, the last the first's.
  bool cycleInputs(EffectInstance& effect);
  // Adds an effect between the node at the position and whatever it feeds
  // there (its parent's input, or the channel whose graph it heads): the
  // node feeds the effect's input 0.
  bool insertAbove(const EditGraphIterator& at, const Ux::Ptr<EffectInstance>& effect);
  // An id no object of the edit has.
  static IdStamp newNodeId(const Edit& edit);

  // The heads of the video graph pieces that no cel of the edit uses at any
  // time, appended to `roots` (those already there are skipped), by id.
  static void findOrphanedComponents(const EditPtr& edit, std::vector<IdStamp>& roots, double time);
  static EditGraphIterator getIteratorFor(const EditGraphIteratorState& state) { return EditGraphIterator(state); }

private:
  // Whether `target` is reachable from `from` through inputs at the time.
  bool isUpstream(const Ux::Ptr<FXGraphNodeBase>& from, const IdStamp& target, double time) const;

  EditPtr edit_;
};
