#pragma once
#include "host/FxHostApi.h"
#include "host/core/Cookie.h"
#include "host/edit/Edit.h"

// A handle on the effect graph of one cel: lets the graph's head be read and changed.
class FXHOST_API ce_handle {
public:
  ce_handle() = default;
  ce_handle(const EditPtr& edit, int channel, std::size_t cel) : edit_(edit), channel_(channel), cel_(cel) {}
  bool valid() const;
  // The head node of the graph; (0, 0, 0) when none.
  IdStamp id() const;
  // Makes the node the head of the cel's graph (the cel becomes a graph cel).
  bool setEffectGraph(const IdStamp& head);
  const EditPtr& edit() const noexcept { return edit_; }

private:
  EditPtr edit_;
  int channel_ = -1;
  std::size_t cel_ = 0;
};

// The cel of a channel at a time, with its neighbour times.
class FXHOST_API CelEventPair {
public:
  CelEventPair(const EditPtr& edit, int channel, double time);

  bool valid() const noexcept { return celIndex_ >= 0; }
  double editTime() const;
  double endEditTime() const;
  bool isBlack() const;
  bool isEffect() const;
  // The cookie of what the cel shows: an effect-graph cookie for a graph, the
  // material's cookie for a material; without its suffix.
  Cookie stripCookie() const;
  ce_handle getEffectHandle() const;
  // The material node a material cel shows; (0, 0, 0) otherwise.
  IdStamp getMaterialId() const;

private:
  const Cel* cel() const;
  EditPtr edit_;
  int channel_;
  int celIndex_ = -1;
};
