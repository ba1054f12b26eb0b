#pragma once
#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/edit/Edit.h"

// An entry of a bin (the editor's lists of shots and edits): what it refers
// to, by cookie.
class FXHOST_API BinItem {
public:
  BinItem() = default;
  explicit BinItem(const Cookie& c) : cookie(c) {}
  BinItem(const BinItem&) = default;
  BinItem& operator=(const BinItem&) = default;
  virtual ~BinItem();

  Cookie cookie;
};

// The shot under a position of an edit, as a viewer or a log panel would pop
// it out. `kind` 'M' is a material that can be popped out, with its cookie
// and the time within it. 'I' is a position that cannot be, with an invalid
// cookie and, in `message`, why (black, an imported image, a generated
// background, nothing connected, no such channel).
class FXHOST_API PopOutInfo : public BinItem {
public:
  char kind = 'I';
  LightweightString<char> message; // UTF-8; empty for a material
  double time = 0;                 // seconds from the start of the shot
};

// The shot under a channel (by index) at a time: the material of a material
// cel, or for a graph cel the material reached from the graph's head through
// input 0 of every effect on the way. A shot starts where its cel starts
// (this host's cels have no source offset), so the time within it is counted
// from the start of the cel that supplies it.
FXHOST_API PopOutInfo getPopOutShotInfo(const EditPtr& edit, int channel, double time);
