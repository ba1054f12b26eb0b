#include "host/stream/ObjectsFile.h"

#include <cstring>

#include "host/stream/DynamicIntegralStorage.h"
#include "host/stream/StreamClassRegistrar.h"

namespace {
constexpr char magic[4] = {'F', 'X', 'O', 'B'};

// Finds the end of a layer chain from its root header without reading the
// object; false when the header cannot be read or points past the end.
bool chainEnd(PStream& s, uint64_t& end) {
  const LightweightString<char> name = s.getString();
  if (s.error() || (name != Streamable::shortLayerName() && name != Streamable::layerName())) return false;
  const unsigned major = s.getCookedChar();
  s.getCookedChar();
  uint32_t total = 0;
  if (major == 1) {
    DynamicIntegralStorage<uint16_t, uint32_t>::unpack(s);
    total = DynamicIntegralStorage<uint16_t, uint32_t>::unpack(s);
  } else if (major == 2) {
    s.getUnsignedLong();
    total = s.getUnsignedLong();
  } else {
    return false;
  }
  if (s.error()) return false;
  end = s.position() + total;
  return end <= s.size();
}
} // namespace

bool ObjectsFile::write(PStream& s, const std::vector<Binding>& bindings, LightweightString<char>& why) {
  s.writeBytes(magic, sizeof magic);
  s.setUnsignedLong(formatNumber);
  s.setUnsignedLong(static_cast<uint32_t>(bindings.size()));
  for (const Binding& b : bindings) {
    s.writeBinary(b.name, 0, false, false);
    s.writeBinary(b.object->hierarchyName(true, true), 0, false, false);
    const int result = s.writeObject(*b.object);
    if (result != StreamResult::packed) {
      why = formatText("object \"%s\" did not pack (result %d)", b.name.c_str(), result);
      if (!s.errorText().empty()) why += ":" + s.errorText();
      return false;
    }
  }
  return true;
}

bool ObjectsFile::save(const std::string& path, const std::vector<Binding>& bindings, LightweightString<char>& why) {
  PStream s;
  s.openWrite(path);
  if (!write(s, bindings, why)) return false;
  if (!s.close()) {
    why = s.errorText();
    return false;
  }
  return true;
}

ObjectsFile::ReadResult ObjectsFile::read(PStream& s,
                                          const std::map<LightweightString<char>, Ux::Ptr<Streamable>>* into) {
  ReadResult r;
  auto stop = [&](const LightweightString<char>& why) {
    r.problem = why;
    r.stoppedAt = s.position();
    return r;
  };
  char head[4] = {};
  if (s.size() < 12 || !s.readBytes(head, sizeof head) || std::memcmp(head, magic, sizeof magic) != 0)
    return stop("not an objects file (it does not start with FXOB and a header)");
  const uint32_t format = s.getUnsignedLong();
  if (format != formatNumber) return stop(formatText("unknown objects file format %u", format));
  r.declaredCount = s.getUnsignedLong();
  const uint64_t possible = s.remaining() / minimumObjectBytes;

  for (uint32_t i = 0; i < r.declaredCount; ++i) {
    if (i >= possible)
      return stop(formatText("the file says it holds %u objects, more than its %llu bytes could", r.declaredCount,
                             static_cast<unsigned long long>(s.size())));
    Entry e;
    e.offset = s.position();
    const std::size_t errorsBefore = s.errorText().size();
    s.clearError();
    e.name = s.getString();
    e.kind = s.getString();
    if (s.error()) return stop(formatText("object %u: its name runs past the end of the file", i + 1));

    auto target = into ? into->find(e.name) : decltype(into->end()){};
    if (into && target != into->end() && target->second) {
      e.object = target->second;
      e.result = s.readObject(*e.object);
    } else if (StreamClassRegistrar::Builder build = StreamClassRegistrar::findBuilder(e.kind)) {
      e.object = build(s);
      e.result = s.lastObjectResult();
    } else {
      uint64_t end = 0;
      if (!chainEnd(s, end))
        return stop(formatText("object %u (\"%s\"): unknown kind \"%s\" whose size cannot be read", i + 1,
                               e.name.c_str(), e.kind.c_str()));
      s.seek(end);
      r.warnings.push_back(
          formatText("object %u (\"%s\"): no reader for kind \"%s\"; skipped", i + 1, e.name.c_str(), e.kind.c_str()));
    }
    e.errorText = s.errorText().substr(errorsBefore);
    r.entries.push_back(e);
    // A read that leaves the stream failing is a failure whatever its code.
    if (e.result == StreamResult::error || e.result == StreamResult::unexpectedEof || s.error())
      return stop(formatText("object %u (\"%s\") could not be read (result %d):%s", i + 1, e.name.c_str(), e.result,
                             e.errorText.c_str()));
    if (e.result == StreamResult::wrongLayerName)
      r.warnings.push_back(formatText("object %u (\"%s\") was partly skipped (result 7):%s", i + 1, e.name.c_str(),
                                      e.errorText.c_str()));
  }
  if (!s.eof())
    r.warnings.push_back(
        formatText("%llu bytes after the last object were ignored", static_cast<unsigned long long>(s.remaining())));
  r.complete = true;
  r.stoppedAt = s.position();
  return r;
}

ObjectsFile::ReadResult ObjectsFile::load(const std::string& path,
                                          const std::map<LightweightString<char>, Ux::Ptr<Streamable>>* into) {
  PStream s;
  if (!s.openRead(path)) {
    ReadResult r;
    r.problem = s.errorText();
    return r;
  }
  return read(s, into);
}
