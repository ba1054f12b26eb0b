// Fuzzes the readers of streamed objects with arbitrary bytes: the objects
// file of an edit, and a bare position manager chain (built, and read in
// place so that partly read records stay). Whatever loads must survive a
// write and a read unchanged, and writing it again must give the same bytes;
// any difference traps.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <typeinfo>
#include <vector>

#include "host/notify/Log.h"
#include "host/stream/ObjectsFile.h"
#include "node_ui/NodeUIPosManager.h"

namespace {

using Bytes = std::vector<uint8_t>;

void check(bool ok) {
  if (!ok) __builtin_trap();
}

// Bit patterns, so that NaNs and signed zeros must come back exactly.
bool sameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

void checkSameRecord(const NodeUIRecBase& a, const NodeUIRecBase& b) {
  check(typeid(a) == typeid(b));
  check(a.getNodeId() == b.getNodeId());
  check(a.getCookie() == b.getCookie());
  const auto* pa = dynamic_cast<const NodeUIPosRec*>(&a);
  if (!pa) return;
  const auto& pb = dynamic_cast<const NodeUIPosRec&>(b);
  check(sameBits(pa->getDrawPosition().x, pb.getDrawPosition().x));
  check(sameBits(pa->getDrawPosition().y, pb.getDrawPosition().y));
  check(sameBits(pa->getManualPos().x, pb.getManualPos().x));
  check(sameBits(pa->getManualPos().y, pb.getManualPos().y));
  check(pa->isManualPosSet() == pb.isManualPosSet());
}

void checkSameObject(const Streamable& a, const Streamable& b) {
  check(typeid(a) == typeid(b));
  if (const auto* ma = dynamic_cast<const NodeUIManagerBase*>(&a)) {
    const auto& mb = dynamic_cast<const NodeUIManagerBase&>(b);
    check(ma->recordCount() == mb.recordCount());
    auto ib = mb.records().as<NodeUIRecBase>().begin();
    for (const NodeUIRecBase* ra : ma->records().as<NodeUIRecBase>()) {
      checkSameRecord(*ra, **ib);
      ++ib;
    }
  } else if (const auto* ra = dynamic_cast<const NodeUIRecBase*>(&a)) {
    checkSameRecord(*ra, dynamic_cast<const NodeUIRecBase&>(b));
  }
}

Bytes packed(const Streamable& object) {
  PStream s;
  check(s.writeObject(object) == StreamResult::packed);
  return s.bytes();
}

// What the writer produced must read back cleanly, with nothing logged.
void checkCleanRead(const PStream& s, const LogChannel::Capture& log) {
  check(!s.error() && s.errorText().empty() && s.eof() && log.messages().empty());
}

void checkManagerRoundTrip(const NodeUIPosManager& loaded) {
  const Bytes first = packed(loaded);
  PStream s(first);
  Ux::Ptr<NodeUIPosManager> again(new NodeUIPosManager());
  {
    LogChannel::Capture log(Log::channel());
    check(again->STRM_hierarchyUnpack(s) == StreamResult::layerRead);
    checkCleanRead(s, log);
  }
  checkSameObject(loaded, *again);
  check(packed(*again) == first);
}

Bytes written(const std::vector<ObjectsFile::Binding>& bindings) {
  PStream s;
  LightweightString<char> why;
  check(ObjectsFile::write(s, bindings, why));
  return s.bytes();
}

void checkFileRoundTrip(const ObjectsFile::ReadResult& loaded) {
  std::vector<ObjectsFile::Binding> bindings;
  for (const ObjectsFile::Entry& e : loaded.entries)
    if (e.object) bindings.push_back({e.name, e.object});
  const Bytes first = written(bindings);
  PStream s(first);
  LogChannel::Capture log(Log::channel());
  const ObjectsFile::ReadResult again = ObjectsFile::read(s);
  checkCleanRead(s, log);
  check(again.complete && again.warnings.empty() && again.entries.size() == bindings.size());
  std::vector<ObjectsFile::Binding> rebound;
  for (std::size_t i = 0; i < bindings.size(); ++i) {
    const ObjectsFile::Entry& e = again.entries[i];
    check(e.name == bindings[i].name && e.result == StreamResult::layerRead && e.object);
    checkSameObject(*bindings[i].object, *e.object);
    rebound.push_back({e.name, e.object});
  }
  check(written(rebound) == first);
}

// The first object's chain when the input is an objects file, so that the
// file seeds drive the bare manager reader too; otherwise the whole input.
Bytes managerChain(const uint8_t* data, std::size_t size) {
  Bytes all(data, data + size);
  if (size < 12 || std::memcmp(data, "FXOB", 4) != 0) return all;
  PStream s(all);
  s.seek(12);
  s.getString(); // binding name
  s.getString(); // kind
  if (s.error()) return all;
  return Bytes(all.begin() + static_cast<std::ptrdiff_t>(s.position()), all.end());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  {
    PStream s(Bytes(data, data + size));
    checkFileRoundTrip(ObjectsFile::read(s));
  }

  const Bytes chain = managerChain(data, size);
  PStream direct(chain);
  Ux::Ptr<NodeUIPosManager> inPlace(new NodeUIPosManager());
  const int result = inPlace->STRM_hierarchyUnpack(direct);

  // The builder is the same read, keeping the object unless it failed with 6.
  PStream viaBuilder(chain);
  Ux::Ptr<NodeUIPosManager> built = NodeUIPosManager::build(viaBuilder);
  check(viaBuilder.lastObjectResult() == result && !built == (result == StreamResult::error));
  if (built) checkSameObject(*inPlace, *built);

  checkManagerRoundTrip(*inPlace);
  return 0;
}
