#pragma once
#include <vector>

#include "host/core/IdStamp.h"
#include "host/core/LightweightString.h"
#include "host/edit/FXGraphNodeBase.h"

// A time range of a channel: black, a source material, or the head of an
// effect graph. Ranges are [start, end) in seconds.
struct Cel {
  enum class Kind { black, material, graph };
  double start = 0;
  double end = 0;
  Kind kind = Kind::black;
  IdStamp ref; // the material node or the graph's head node

  bool contains(double t) const noexcept { return t >= start && t < end; }
};

// One channel (track) of an edit.
struct EditChannel {
  IdStamp id;
  TrackType type = TrackType::video;
  LightweightString<wchar_t> name;
  LightweightString<wchar_t> group; // channels with the same group show as one
  int subtype = 0;
  std::vector<Cel> cels; // in time order, not overlapping

  // The cel at a time, or null.
  const Cel* celAt(double t) const {
    for (const Cel& c : cels)
      if (c.contains(t)) return &c;
    return nullptr;
  }
  Cel* celAt(double t) { return const_cast<Cel*>(static_cast<const EditChannel*>(this)->celAt(t)); }
};
