#pragma once
#include <cstddef>
#include <cstdint>
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

  // Writing at the position; overwrites, then extends.
  void setCookedChar(uint8_t v);
  void setUnsignedShort(uint16_t v);
  void setUnsignedLong(uint32_t v);
  void setDouble(double v);
  void setString(std::string_view utf8);
  void writeBytes(const void* data, std::size_t count);

  // Reading at the position.
  uint8_t getCookedChar();
  uint16_t getUnsignedShort();
  uint32_t getUnsignedLong();
  double getDouble();
  // A count that runs past the end fails the read and gives empty text.
  LightweightString<char> getString();
  // The same, as a view into the stream's bytes: valid until the stream is
  // written to; no copy is made.
  std::string_view getStringView();
  bool readBytes(void* out, std::size_t count);

private:
  enum class Mode { memory, fileRead, fileWrite };
  void shortRead(const LightweightString<char>& text);
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
