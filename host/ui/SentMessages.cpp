#include "host/ui/SentMessages.h"

namespace {
SentMessages* listening = nullptr;
// A click sends a message or two; a recorder left open keeps no more.
constexpr std::size_t mostKept = 64;
} // namespace

SentMessages::SentMessages() : outer_(listening) { listening = this; }

SentMessages::~SentMessages() { listening = outer_; }

void SentMessages::record(const LightweightString<char>& text, bool handled) {
  if (listening && listening->sent_.size() < mostKept) listening->sent_.push_back({text, handled});
}
