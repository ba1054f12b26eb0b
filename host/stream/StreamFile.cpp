#include "host/stream/StreamFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"

StreamFile::StreamFile() = default;

StreamFile::StreamFile(std::vector<uint8_t> bytes) : bytes_(std::move(bytes)) {}

StreamFile::~StreamFile() = default;

bool StreamFile::openRead(const std::string& path) {
  bytes_.clear();
  pos_ = 0;
  path_ = path;
  mode_ = Mode::fileRead;
  // Objects files hold small records: a bound keeps a device or a runaway
  // file from being read whole.
  constexpr std::size_t largest = std::size_t(256) << 20;
  std::string text, why;
  if (!readBoundedFile(path, largest, text, why)) {
    failRead(formatText(" Cannot read %s: %s.", path.c_str(), why.c_str()));
    return false;
  }
  bytes_.assign(text.begin(), text.end());
  return true;
}

bool StreamFile::openWrite(const std::string& path) {
  bytes_.clear();
  pos_ = 0;
  path_ = path;
  mode_ = Mode::fileWrite;
  return true;
}

bool StreamFile::close() {
  if (mode_ != Mode::fileWrite) return !error_;
  std::string why;
  if (!writeFilesAtomically({{path_, bytes_.data(), bytes_.size()}}, why)) {
    failRead(" " + LightweightString<char>(why) + ".");
    return false;
  }
  mode_ = Mode::memory;
  return true;
}

bool StreamFile::seek(uint64_t position) noexcept {
  if (position > bytes_.size()) {
    pos_ = bytes_.size();
    return false;
  }
  pos_ = position;
  return true;
}

void StreamFile::failRead(const LightweightString<char>& text) {
  appendErrorText(text);
  error_ = true;
}

void StreamFile::shortRead(const LightweightString<char>& text) {
  // One message for a run of failed reads: the first says where it ended.
  if (!error_) appendErrorText(text);
  error_ = true;
  ++failedReads_;
}

void StreamFile::writeBytesAtEnd(const void* data, std::size_t count) {
  if (mode_ == Mode::fileRead) {
    failRead(" Cannot write to a stream opened for reading.");
    return;
  }
  if (count == 0) return;
  const auto* src = static_cast<const uint8_t*>(data);
  const std::size_t overlap = std::min<std::size_t>(count, bytes_.size() - pos_);
  if (overlap) std::memcpy(bytes_.data() + pos_, src, overlap);
  bytes_.insert(bytes_.end(), src + overlap, src + count);
  pos_ += count;
}

bool StreamFile::readBytes(void* out, std::size_t count) {
  if (count > remaining()) {
    // Once failing, a run of reads is already reported: no message to make.
    if (!error_)
      shortRead(formatText(" Read past the end of the stream at offset %llu (%zu bytes wanted, %llu left).",
                           static_cast<unsigned long long>(pos_), count, static_cast<unsigned long long>(remaining())));
    else
      ++failedReads_;
    pos_ = bytes_.size();
    std::memset(out, 0, count);
    return false;
  }
  if (count) std::memcpy(out, bytes_.data() + pos_, count);
  pos_ += count;
  return true;
}

template <class T>
T StreamFile::readLE() {
  uint8_t raw[sizeof(T)];
  if (!readBytes(raw, sizeof raw)) return T(0);
  T v = 0;
  for (std::size_t i = 0; i < sizeof(T); ++i) v = static_cast<T>(v | (static_cast<T>(raw[i]) << (8 * i)));
  return v;
}

template <class T>
void StreamFile::writeLE(T v) {
  uint8_t raw[sizeof(T)];
  for (std::size_t i = 0; i < sizeof(T); ++i) raw[i] = static_cast<uint8_t>(v >> (8 * i));
  writeBytes(raw, sizeof raw);
}

void StreamFile::grow(std::size_t count) { bytes_.resize(pos_ + count); }

void StreamFile::setString(std::string_view utf8) {
  setUnsignedLong(static_cast<uint32_t>(utf8.size()));
  writeBytes(utf8.data(), utf8.size());
}

std::string_view StreamFile::getStringView() {
  const uint64_t at = pos_;
  if (remaining() < 4) {
    shortRead(formatText(" String length at offset %llu runs past the end of the stream.",
                         static_cast<unsigned long long>(at)));
    pos_ = bytes_.size();
    return {};
  }
  const uint32_t count = getUnsignedLong();
  if (count > remaining()) {
    shortRead(formatText(" String of %u bytes at offset %llu runs past the end of the stream.", count,
                         static_cast<unsigned long long>(at)));
    pos_ = bytes_.size();
    return {};
  }
  const std::string_view text(reinterpret_cast<const char*>(bytes_.data() + pos_), count);
  pos_ += count;
  return text;
}

LightweightString<char> StreamFile::getString() { return LightweightString<char>(std::string(getStringView())); }

// The long ways of the inline reads and writes.
template uint8_t StreamFile::readLE<uint8_t>();
template uint16_t StreamFile::readLE<uint16_t>();
template uint32_t StreamFile::readLE<uint32_t>();
template uint64_t StreamFile::readLE<uint64_t>();
template void StreamFile::writeLE<uint8_t>(uint8_t);
template void StreamFile::writeLE<uint16_t>(uint16_t);
template void StreamFile::writeLE<uint32_t>(uint32_t);
template void StreamFile::writeLE<uint64_t>(uint64_t);
