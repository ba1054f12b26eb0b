#include "host/notify/Log.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {
constexpr std::size_t recentLimit = 256;

} // namespace

LogChannel::LogChannel(const char* name, bool echo) : name_(name), echo_(echo) {}

void LogChannel::write(const LightweightString<char>& message) {
  std::lock_guard lock(mutex_);
  const std::string& text = message.str();
  for (Capture* c : captures_) c->messages_.push_back(text);
  recent_.push_back(text);
  if (recent_.size() > recentLimit) recent_.pop_front();
  if (echo_) {
    std::fprintf(stderr, "%s: %s", name_.c_str(), text.c_str());
    if (text.empty() || text.back() != '\n') std::fputc('\n', stderr);
  }
}

void LogChannel::printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const LightweightString<char> text = formatTextV(format, args);
  va_end(args);
  write(text);
}

void LogChannel::setEcho(bool on) {
  std::lock_guard lock(mutex_);
  echo_ = on;
}

bool LogChannel::echo() const {
  std::lock_guard lock(mutex_);
  return echo_;
}

std::vector<std::string> LogChannel::recent() const {
  std::lock_guard lock(mutex_);
  return {recent_.begin(), recent_.end()};
}

LogChannel::Capture::Capture(LogChannel& channel) : channel_(channel) {
  std::lock_guard lock(channel_.mutex_);
  channel_.captures_.push_back(this);
}

LogChannel::Capture::~Capture() {
  std::lock_guard lock(channel_.mutex_);
  std::erase(channel_.captures_, this);
}

std::string LogChannel::Capture::joined() const {
  std::string all;
  for (const auto& m : messages_) all += m;
  return all;
}

LogChannel& Log::channel() {
  static LogChannel log("log", false);
  return log;
}

void Log::printf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const LightweightString<char> text = formatTextV(format, args);
  va_end(args);
  channel().write(text);
}

LogChannel& debugChannel() {
  static LogChannel debug("debug", std::getenv("FXGRAPH_DEBUG") != nullptr);
  return debug;
}

void debugPrintf(const char* format, ...) {
  va_list args;
  va_start(args, format);
  const LightweightString<char> text = formatTextV(format, args);
  va_end(args);
  debugChannel().write(text);
}
