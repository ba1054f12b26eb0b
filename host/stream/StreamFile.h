#pragma once
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"

// A byte stream over memory or over a file, with a position, an error flag
// and an accumulating error text. Numbers are little-endian; a double is its
// IEEE-754 bit pattern; a string is a 32-bit byte count followed by the UTF-8
// bytes, with no terminator.
//
// A file opened for reading is read whole, so its size bounds everything a
// reader can allocate. A file opened for writing is written on close(), to a
// temporary name that is flushed and then renamed into place, so a failed
// save never leaves a half-written file.
//
// Reading past the end fails the read: the error flag is set, a message is
// appended, the position moves to the end and the value read is zero.
class FXHOST_API StreamFile {
public:
  StreamFile();
  explicit StreamFile(std::vector<uint8_t> bytes);
  StreamFile(const StreamFile&) = delete;
  StreamFile& operator=(const StreamFile&) = delete;
  virtual ~StreamFile();

  // Files. Both return false and set the error with a message on failure.
  bool openRead(const std::string& path);
  bool openWrite(const std::string& path);
  // For a file opened for writing: writes it atomically. True on success.
  bool close();
  const std::string& path() const noexcept { return path_; }
  bool writable() const noexcept { return mode_ != Mode::fileRead; }

  // Position and extent, in bytes from the start.
  uint64_t position() const noexcept { return pos_; }
  uint64_t size() const noexcept { return bytes_.size(); }
  bool eof() const noexcept { return pos_ >= bytes_.size(); }
  uint64_t remaining() const noexcept { return eof() ? 0 : bytes_.size() - pos_; }
  // A target beyond the end moves to the end; returns whether it was reachable.
  bool seek(uint64_t position) noexcept;
  const std::vector<uint8_t>& bytes() const noexcept { return bytes_; }

  // Error state.
  bool error() const noexcept { return error_; }
  void setError() noexcept { error_ = true; }
  void clearError() noexcept { error_ = false; }
  const LightweightString<char>& errorText() const noexcept { return errorText_; }
  void appendErrorText(const LightweightString<char>& text) { errorText_ += text; }
  // Appends the text and sets the error flag.
  void failRead(const LightweightString<char>& text);
  // How many reads have run past the end so far: a reader compares counts to
  // tell whether a value it read was really there.
  uint64_t failedReads() const noexcept { return failedReads_; }

  // Writing at the position; overwrites, then extends. Numbers are little
  // endian. The small writes and reads are the stream's inner loop (a
  // position manager is a few of them for each of thousands of records), so
  // their common case is here, inline; the rest is out of line.
  void setCookedChar(uint8_t v) { putLE(v); }
  void setUnsignedShort(uint16_t v) { putLE(v); }
  void setUnsignedLong(uint32_t v) { putLE(v); }
  void setDouble(double v) {
    uint64_t bits;
    std::memcpy(&bits, &v, sizeof bits);
    putLE(bits);
  }
  void setString(std::string_view utf8);
  void writeBytes(const void* data, std::size_t count) {
    if (mode_ != Mode::fileRead && count <= bytes_.size() - pos_) {
      if (count) std::memcpy(bytes_.data() + pos_, data, count);
      pos_ += count;
      return;
    }
    writeBytesAtEnd(data, count);
  }

  // Reading at the position.
  uint8_t getCookedChar() { return takeLE<uint8_t>(); }
  uint16_t getUnsignedShort() { return takeLE<uint16_t>(); }
  uint32_t getUnsignedLong() { return takeLE<uint32_t>(); }
  double getDouble() {
    const uint64_t bits = takeLE<uint64_t>();
    double v;
    std::memcpy(&v, &bits, sizeof v);
    return v;
  }
  // A count that runs past the end fails the read and gives empty text.
  LightweightString<char> getString();
  // The same, as a view into the stream's bytes: valid until the stream is
  // written to; no copy is made.
  std::string_view getStringView();
  bool readBytes(void* out, std::size_t count);

private:
  enum class Mode { memory, fileRead, fileWrite };
  void shortRead(const LightweightString<char>& text);
  // Whole values over bytes there (a stream written again, or read) are
  // moved in place; a write at the end makes room first, in the vector's
  // own growing steps; a short read or a write to a stream opened for
  // reading goes the long way, which reports it.
  template <class T>
  void putLE(T v) {
    if (mode_ != Mode::fileRead) {
      if (bytes_.size() - pos_ < sizeof(T)) grow(sizeof(T));
      uint8_t* at = bytes_.data() + pos_;
      for (std::size_t i = 0; i < sizeof(T); ++i) at[i] = static_cast<uint8_t>(v >> (8 * i));
      pos_ += sizeof(T);
      return;
    }
    writeLE(v);
  }
  template <class T>
  T takeLE() {
    if (bytes_.size() - pos_ >= sizeof(T)) {
      const uint8_t* at = bytes_.data() + pos_;
      T v = 0;
      for (std::size_t i = 0; i < sizeof(T); ++i) v = static_cast<T>(v | (static_cast<T>(at[i]) << (8 * i)));
      pos_ += sizeof(T);
      return v;
    }
    return readLE<T>();
  }
  // Room for `count` more bytes from the position on.
  void grow(std::size_t count);
  // writeBytes past the end, or refused on a stream opened for reading.
  void writeBytesAtEnd(const void* data, std::size_t count);
  template <class T>
  T readLE();
  template <class T>
  void writeLE(T v);

  std::vector<uint8_t> bytes_;
  uint64_t pos_ = 0;
  bool error_ = false;
  uint64_t failedReads_ = 0;
  LightweightString<char> errorText_;
  Mode mode_ = Mode::memory;
  std::string path_;
};
