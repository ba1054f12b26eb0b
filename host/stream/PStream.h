#pragma once
#include "host/FxHostApi.h"
#include "host/stream/StreamFile.h"

class Streamable;
class StreamTraceSink;

// The object stream: a StreamFile that also keeps the header format number in
// force (2 when opened; each object's root chunk sets it as it is read), an
// optional trace sink, and the result code of the last object built from it.
class FXHOST_API PStream : public StreamFile {
public:
  static constexpr int openingFormat = 2;

  using StreamFile::StreamFile;

  int formatNumber() const noexcept { return format_; }
  void setFormatNumber(int format) noexcept { format_ = format; }

  // Writes text: `length` 0 means the whole text. With `terminator` a zero
  // byte follows the text; with `bare` the 32-bit count is left out.
  void writeBinary(const LightweightString<char>& text, unsigned length, bool terminator, bool bare);

  // The object writer and reader: the whole layer chain of an object.
  int writeObject(const Streamable& object);
  int readObject(Streamable& object);

  StreamTraceSink* traceSink() const noexcept { return trace_; }
  void setTraceSink(StreamTraceSink* sink) noexcept { trace_ = sink; }

  int lastObjectResult() const noexcept { return lastResult_; }
  void setLastObjectResult(int code) noexcept { lastResult_ = code; }

private:
  int format_ = openingFormat;
  StreamTraceSink* trace_ = nullptr;
  int lastResult_ = 0;
};

// Reads one string (a layer's short name).
FXHOST_API PStream& operator>>(PStream& s, LightweightString<char>& text);
