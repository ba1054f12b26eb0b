#pragma once
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// A line-oriented output channel: the host log (user-facing warnings) and the
// debug print (developer warnings) are two of them. Messages go to every live
// capture, to a bounded list of recent messages, and to stderr when echo is on.
class FXHOST_API LogChannel {
public:
  LogChannel(const char* name, bool echo);
  LogChannel(const LogChannel&) = delete;
  LogChannel& operator=(const LogChannel&) = delete;

  void write(const LightweightString<char>& message);
  void printf(const char* format, ...) __attribute__((format(printf, 2, 3)));
  void setEcho(bool on);
  bool echo() const;
  // The last messages, oldest first (at most 256).
  std::vector<std::string> recent() const;

  // Collects every message written while it lives.
  class FXHOST_API Capture {
  public:
    explicit Capture(LogChannel& channel);
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;
    const std::vector<std::string>& messages() const noexcept { return messages_; }
    std::string joined() const;

  private:
    friend class LogChannel;
    LogChannel& channel_;
    std::vector<std::string> messages_;
  };

private:
  std::string name_;
  mutable std::mutex mutex_;
  bool echo_;
  std::deque<std::string> recent_;
  std::vector<Capture*> captures_;
};

// The host log.
namespace Log {
FXHOST_API LogChannel& channel();
FXHOST_API void printf(const char* format, ...) __attribute__((format(printf, 1, 2)));
} // namespace Log

// The platform debug print; echoes to stderr when FXGRAPH_DEBUG is set.
FXHOST_API LogChannel& debugChannel();
FXHOST_API void debugPrintf(const char* format, ...) __attribute__((format(printf, 1, 2)));
