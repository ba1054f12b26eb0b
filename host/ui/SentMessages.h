#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// Records the messages that globs send up the tree (Glob::sendMessage)
// while it lives, each with whether a receiver handled it: for a host's
// automation, which must tell what a click asked for and what the panel
// answered, not merely that the click landed. Recorders nest; the innermost
// one hears. UI thread only.
class FXHOST_API SentMessages {
public:
  struct Sent {
    LightweightString<char> text;
    bool handled = false;
  };

  SentMessages();
  ~SentMessages();
  SentMessages(const SentMessages&) = delete;
  SentMessages& operator=(const SentMessages&) = delete;

  const std::vector<Sent>& sent() const noexcept { return sent_; }

  // Called by Glob::sendMessage with its answer.
  static void record(const LightweightString<char>& text, bool handled);

private:
  SentMessages* outer_;
  std::vector<Sent> sent_;
};
