#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/core/IdStamp.h"
#include "host/core/Vector.h"
#include "host/edit/Edit.h"
#include "host/edit/FXGraphNodeBase.h"

// The text-storable position of an iterator: the edit, the time, the root
// (its channel and node) and the input taken at each step down from it.
// Text form: "fxgs1:<edit cookie>:<time>:<root channel>:<root node>:<i,i,..>",
// the path "-" when empty. It round-trips exactly (time written with 17
// significant digits).
class FXHOST_API EditGraphIteratorState {
public:
  EditGraphIteratorState() = default;
  // Parses the text form; anything else gives an invalid state.
  explicit EditGraphIteratorState(const LightweightString<char>& text);

  bool valid() const noexcept { return valid_; }
  LightweightString<char> asString() const;

  Cookie edit;
  double time = 0;
  IdStamp rootChannel;
  IdStamp rootNode;
  std::vector<int> path;

private:
  friend class EditGraphIterator;
  bool valid_ = false;
};

// Walks an edit's effect graph at one time, from a root (the head of a
// channel's graph, or any node) down through inputs. Keeps its path: the node
// and input index at every depth, depth 0 being the root. An input slot names
// a node, or a channel whose cel at the iterator's time supplies the node
// (the head of its graph, or its material).
//
// Option bits: 1 places the iterator at a named node (on the first path that
// reaches it from a root, in channel order, or at the node itself when no
// root reaches it); 8, with 1, takes a node that heads a channel's graph at
// the time at that head, before any search; 2, with no node named, starts at
// the first root at the time. Other bits are accepted and change nothing here.
class FXHOST_API EditGraphIterator {
public:
  enum Options {
    positionAtNode = 1,
    startAtFirstRoot = 2,
    headsFirst = 8,
    // What the view asks for a node it shows: the node, at its head when it heads a channel.
    atNode = positionAtNode | headsFirst,
  };

  // An invalid iterator.
  EditGraphIterator() = default;
  EditGraphIterator(const EditPtr& edit, double time, int options);
  EditGraphIterator(const EditPtr& edit, double time, const IdStamp& node, int options);
  // Starts at the head of a channel's graph at the time.
  static EditGraphIterator atChannel(const EditPtr& edit, double time, const IdStamp& channel);
  // Rebuilds the position a state names; invalid when it no longer exists.
  explicit EditGraphIterator(const EditGraphIteratorState& state);

  bool isValid() const noexcept { return !path_.empty(); }
  // The node at a depth of the path; -1 is the current node.
  Ux::Ptr<FXGraphNodeBase> getNode(int depth = -1) const;
  // Depth of the current node; the root is at 0. -1 when invalid.
  int getDepth() const noexcept { return static_cast<int>(path_.size()) - 1; }
  // The input of the parent through which the current node was reached; -1 at the root.
  int getParentInputNum() const noexcept { return path_.empty() ? -1 : path_.back().input; }

  // Steps into input i of the current node; false (and no move) when the
  // slot is free, does not exist, or names nothing at the time.
  bool moveToInput(int i);
  // Steps back to the parent; false at the root.
  bool moveBack();
  // Steps back to the enclosing compound effect: here the edit, so the root.
  bool moveBackToCompoundEffect();
  // Positions at a node below the root, depth first; false leaves it unmoved.
  bool search(const IdStamp& node);
  // Every node reachable from the root through inputs, each once, root first.
  void findAllComponents(Vector<IdStamp>& out) const;

  // The channel through which the node at a depth was reached: the channel
  // whose cel supplied it, else its parent's. -1 is the current node, -2 the root.
  IdStamp getChanId(int depth) const;
  int getChanIndex(int depth) const;
  double getTime() const noexcept { return time_; }
  const EditPtr& getEdit() const noexcept { return edit_; }
  // The edit the current position belongs to (compound edits are not nested here).
  EditPtr getCurrentPosEdit() const { return edit_; }

  // How fast the current position's time runs against the edit's time: the
  // pictures of a time-warped compound run faster or slower. This host has no
  // time warps, so it is always 1.
  double getCompoundAlpha() const noexcept { return 1.0; }
  // The cel under the channel of the node at a depth (as getChanId: -1 the
  // current node's channel, which is the root's unless an input slot named
  // another channel; -2 the root's) at the iterator's time. `which` 0 gives
  // the cel's start, any other value its end. With no cel there (an invalid
  // iterator, a node no channel supplies) the iterator's time itself, an
  // empty range.
  double getRange(int depth, int which) const;

  // Whether renders through this iterator pass through bypassed effects.
  void setTraverseGhosts(bool on) noexcept { ghosts_ = on; }
  bool traversesGhosts() const noexcept { return ghosts_; }

  EditGraphIteratorState getState() const;

  // The node an input slot names at a time, and the channel it came through
  // (unchanged when the slot names a node directly).
  static Ux::Ptr<FXGraphNodeBase> resolveInput(const Edit& edit, const IdStamp& slot, double time, IdStamp& channel);

private:
  struct Step {
    Ux::Ptr<FXGraphNodeBase> node;
    int input = -1;
    IdStamp channel;
  };
  bool startAt(const Ux::Ptr<FXGraphNodeBase>& node, const IdStamp& channel);
  bool searchFrom(const IdStamp& node);

  EditPtr edit_;
  double time_ = 0;
  std::vector<Step> path_;
  bool ghosts_ = false;
};

// The heads of the channels' effect graphs at a time, in channel order (video
// channels only when `videoOnly`), appended to `roots`.
FXHOST_API void findAllRootNodeChans(const EditPtr& edit, std::vector<IdStamp>& roots, double time, bool videoOnly);
