#include "host/stream/StreamableTraits.h"

#include <cstdlib>
#include <cxxabi.h>
#include <memory>
#include <string_view>

#include "host/notify/Log.h"
#include "host/stream/DynamicIntegralStorage.h"
#include "host/stream/StreamTraceSink.h"

LightweightString<char> printableTypeName(const std::type_info& type) {
  int status = 0;
  std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  if (status != 0 || !name) return LightweightString<char>(std::string());
  return LightweightString<char>(name.get());
}

void StreamableTraitsBase::writeHeader(PStream& s, const char* shortName, StreamLayerVersion version, uint32_t ownSize,
                                       uint32_t totalSize) {
  // The name straight from its characters: no text object per header.
  const std::string_view name(shortName);
  s.setUnsignedLong(static_cast<uint32_t>(name.size()));
  s.writeBytes(name.data(), name.size());
  s.setCookedChar(version.major);
  s.setCookedChar(version.minor);
  s.setUnsignedLong(ownSize);
  s.setUnsignedLong(totalSize);
}

void StreamableTraitsBase::prependLayerName(LightweightString<char>& text, const LightweightString<char>& name) {
  text = text.empty() ? name : name + "." + text;
}

int StreamableTraitsBase::packLayer(PStream& s, const LayerInfo& layer, StreamLayerVersion& version, const void* object,
                                    PackOwn packOwn, PackFunctionStack& stack) {
  stack.popFront(); // this layer's own entry
  version = layer.writtenVersion;
  // Placeholder sizes: a failed nested layer leaves them as an unmistakable mark.
  writeHeader(s, layer.shortName, version, 0xFFFFFFFFu, 0xFFFFFFFFu);
  const uint64_t dataAt = s.position();
  packOwn(object, s);
  const uint64_t ownEnd = s.position();
  if (!stack.empty()) {
    const PackFunctionStackEntry next = stack.front();
    const int nested = next.function(next.object, s, stack);
    if (!StreamResult::canContinue(nested)) return nested;
  }
  const uint64_t chainEnd = s.position();
  // The layer's pack may have changed its version (a layer written in its
  // current minor); the header takes it as it is now, with the sizes. The
  // name before them stands.
  s.seek(dataAt - 10);
  s.setCookedChar(version.major);
  s.setCookedChar(version.minor);
  s.setUnsignedLong(static_cast<uint32_t>(ownEnd - dataAt));
  s.setUnsignedLong(static_cast<uint32_t>(chainEnd - dataAt));
  s.seek(chainEnd);
  return s.error() ? StreamResult::error : StreamResult::packed;
}

namespace {

// Reports the chunk's end to the trace sink, if any, and passes the code on.
int chunkEnded(PStream& s, int code) {
  if (StreamTraceSink* sink = s.traceSink()) sink->chunkEnd(code, s.position());
  return code;
}

bool isRootName(std::string_view name) {
  return name == Streamable::shortLayerName() || name == Streamable::layerName();
}

} // namespace

int StreamableTraitsBase::unpackLayer(PStream& s, const LayerInfo& layer, const Streamable& whole,
                                      StreamLayerVersion& version, void* object, UnpackOwn unpackOwn) {
  StreamTraceSink::Header trace;
  trace.offset = s.position();
  if (s.traceSink()) trace.expectedLayer = layer.printableName;

  // The name is looked at where it lies in the stream; text is made of it
  // only for a trace or a message.
  std::string_view name;
  if (!s.eof()) name = s.getStringView();
  if (s.traceSink()) trace.name = LightweightString<char>(std::string(name));

  unsigned major = 0;
  unsigned minor = 0;
  int format = s.formatNumber();
  auto failHeader = [&](const LightweightString<char>& text) {
    s.failRead(text);
    trace.format = s.formatNumber();
    if (StreamTraceSink* sink = s.traceSink()) sink->chunkHeader(trace);
    return chunkEnded(s, StreamResult::error);
  };

  if (format == 1) {
    major = DynamicIntegralStorage<uint8_t, uint16_t>::unpack(s);
    minor = DynamicIntegralStorage<uint8_t, uint16_t>::unpack(s);
    trace.major = major;
    trace.minor = minor;
    if (major > 255)
      return failHeader(" Strm1.0 Object has oversized major rev (" + LightweightString<char>(std::string(name)) +
                        "). ");
    if (minor >= 256)
      return failHeader(" Strm1.0 Object has oversized minor rev (" + LightweightString<char>(std::string(name)) +
                        "). ");
  } else if (format == 2) {
    major = s.eof() ? 0 : s.getCookedChar();
    minor = s.eof() ? 0 : s.getCookedChar();
  } else {
    return failHeader("Unrecognized version for Streamable base");
  }
  trace.major = major;
  trace.minor = minor;

  // The root chunk's major announces the encoding of every header that
  // follows, its own sizes included.
  if (isRootName(name)) {
    s.setFormatNumber(static_cast<int>(major & 0xFF));
    format = s.formatNumber();
  }

  // A size that is not all there reads as 0xFFFFFFFF, as one past the end
  // does: the short read must not pass for a legitimately empty layer.
  auto readSize = [&s, &format]() -> uint32_t {
    if (s.eof()) return 0xFFFFFFFFu;
    const uint64_t failedBefore = s.failedReads();
    const uint32_t size = format == 1 ? DynamicIntegralStorage<uint16_t, uint32_t>::unpack(s) : s.getUnsignedLong();
    return s.failedReads() == failedBefore ? size : 0xFFFFFFFFu;
  };
  uint32_t ownSize = 0;
  uint32_t totalSize = 0;
  if (format == 1 || format == 2) {
    ownSize = readSize();
    totalSize = readSize();
  } else {
    return failHeader("Unrecognized version for Streamable base");
  }

  const uint64_t dataAt = s.position();
  trace.ownSize = ownSize;
  trace.totalSize = totalSize;
  trace.dataStart = dataAt;
  trace.format = format;
  if (StreamTraceSink* sink = s.traceSink()) sink->chunkHeader(trace);

  if (s.eof()) {
    if (ownSize != 0 || totalSize != 0) {
      s.failRead("Unexpected end-of-file while unpacking " + whole.hierarchyName(false, false) + ", layer " +
                 layer.printableName + ".");
      return chunkEnded(s, StreamResult::unexpectedEof);
    }
    return chunkEnded(s, StreamResult::layerRead);
  }
  if (ownSize == 0) return chunkEnded(s, StreamResult::layerRead);

  if (!s.error() && !name.empty()) {
    // 64-bit arithmetic: a lying size can point past the end, never wrap.
    const uint64_t chainEnd = dataAt + totalSize;
    if (name != layer.shortName && name != layer.printableName.view()) {
      // Not an error of the stream: the next object can still be read.
      s.appendErrorText("Expected short name '" + LightweightString<char>(layer.shortName) + "' for layer " +
                        layer.printableName + ", got " + LightweightString<char>(std::string(name)) + ".");
      s.seek(chainEnd);
      return chunkEnded(s, StreamResult::wrongLayerName);
    }
    version = StreamLayerVersion{static_cast<uint8_t>(major), static_cast<uint8_t>(minor)};
    unpackOwn(object, s);
    if (s.error()) {
      s.seek(chainEnd);
      return chunkEnded(s, StreamResult::error);
    }
  }

  const uint64_t ownEnd = dataAt + ownSize;
  const uint64_t at = s.position();
  if (at < ownEnd) {
    Log::printf("Warning: Not all object data was read while unpacking object %s, layer %s v%d.%d, %d/%d bytes "
                "unread.\n",
                whole.hierarchyName(false, false).c_str(), layer.printableName.c_str(), static_cast<int>(major),
                static_cast<int>(minor), static_cast<int>(ownEnd - at), static_cast<int>(ownSize));
    s.seek(ownEnd);
    return chunkEnded(s, StreamResult::layerRead);
  }
  if (at > ownEnd) {
    s.failRead(formatText("Error: Unpacker read beyond end of chunk while unpacking object %s, layer %s v%d.%d, %d "
                          "bytes overread.\n",
                          whole.hierarchyName(false, false).c_str(), layer.printableName.c_str(),
                          static_cast<int>(major), static_cast<int>(minor), static_cast<int>(at - ownEnd)));
    return chunkEnded(s, StreamResult::error);
  }
  s.seek(ownEnd);
  return chunkEnded(s, StreamResult::layerRead);
}

const StreamableTraitsBase::LayerInfo& StreamableTraits<Streamable, void>::layer() {
  static const LayerInfo info{Streamable::shortLayerName(), LightweightString<char>(Streamable::layerName()),
                              writtenVersion};
  return info;
}

int StreamableTraits<Streamable, void>::packHeaderAndObject(const Streamable* object, PStream& s,
                                                            PackFunctionStack& stack) {
  return packLayer(
      s, layer(), Streamable::STRM_layerVersion(object), object,
      [](const void* o, PStream& ps) { static_cast<const Streamable*>(o)->Streamable::pack(ps); }, stack);
}

int StreamableTraits<Streamable, void>::unpackHeaderAndObject(Streamable* object, PStream& s) {
  return unpackLayer(s, layer(), *object, Streamable::STRM_layerVersion(object), object,
                     [](void* o, PStream& ps) { static_cast<Streamable*>(o)->Streamable::unpack(ps); });
}
