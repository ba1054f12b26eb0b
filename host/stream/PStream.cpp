#include "host/stream/PStream.h"

#include <algorithm>

#include "host/stream/StreamTraceSink.h"
#include "host/stream/Streamable.h"

StreamTraceSink::~StreamTraceSink() = default;

void PStream::writeBinary(const LightweightString<char>& text, unsigned length, bool terminator, bool bare) {
  const std::size_t count = length == 0 ? text.size() : std::min<std::size_t>(length, text.size());
  if (!bare) setUnsignedLong(static_cast<uint32_t>(count + (terminator ? 1 : 0)));
  writeBytes(text.c_str(), count);
  if (terminator) setCookedChar(0);
}

int PStream::writeObject(const Streamable& object) { return object.STRM_hierarchyPack(*this); }

int PStream::readObject(Streamable& object) {
  lastResult_ = object.STRM_hierarchyUnpack(*this);
  return lastResult_;
}

PStream& operator>>(PStream& s, LightweightString<char>& text) {
  text = s.getString();
  return s;
}
