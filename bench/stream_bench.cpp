// Packing and unpacking a large position manager through a memory stream,
// beside the floor: a plain loop that moves the same bytes, record by record,
// with memcpy. Compare the per-record times and byte rates with the floor's.
#include <cstdint>
#include <cstring>
#include <vector>

#include <benchmark/benchmark.h>

#include "node_ui/NodeUIPosManager.h"

namespace {

constexpr int64_t recordCount = 100000;

Ux::Ptr<NodeUIPosManager> makeManager() {
  Ux::Ptr<NodeUIPosManager> manager(new NodeUIPosManager());
  const Cookie cookie = Cookie::generate(1, 0);
  for (int64_t i = 0; i < recordCount; ++i) {
    const auto n = static_cast<uint32_t>(i);
    // Records are appended directly: createPosRec searches the list, which
    // would make building the fixture quadratic.
    auto* rec = new NodeUIPosRec(manager.get(), IdStamp(2, n / 1000, n + 1), cookie);
    rec->setDrawPosition(0.1875 * static_cast<double>(i), -0.09375 * static_cast<double>(i % 977), false);
    if (i % 3 != 0) rec->setManualPos(0.125 * static_cast<double>(i % 511), 0.25 * static_cast<double>(i));
    manager->addNewRec(rec);
  }
  return manager;
}

const NodeUIPosManager& manager() {
  static const Ux::Ptr<NodeUIPosManager> m = makeManager();
  return *m;
}

const std::vector<uint8_t>& packedBytes() {
  static const std::vector<uint8_t> bytes = [] {
    PStream s;
    s.writeObject(manager());
    return s.bytes();
  }();
  return bytes;
}

void report(benchmark::State& state, std::size_t bytes) {
  state.SetItemsProcessed(state.iterations() * recordCount);
  state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(bytes));
  // Seconds per record; printed with an SI prefix, so "25n" is 25 ns.
  state.counters["per_record"] = benchmark::Counter(
      static_cast<double>(recordCount), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_Pack(benchmark::State& state) {
  const NodeUIPosManager& m = manager();
  // One stream, rewound each time: the cost measured is the writer's, not
  // the growth of a fresh buffer.
  PStream s;
  for (auto _ : state) {
    s.seek(0);
    benchmark::DoNotOptimize(s.writeObject(m));
  }
  report(state, s.size());
}

void BM_Unpack(benchmark::State& state) {
  const std::vector<uint8_t>& bytes = packedBytes();
  PStream s(bytes);
  for (auto _ : state) {
    state.PauseTiming();
    Ux::Ptr<NodeUIPosManager> m(new NodeUIPosManager());
    s.seek(0);
    state.ResumeTiming();
    const int result = m->STRM_hierarchyUnpack(s);
    benchmark::DoNotOptimize(result);
    if (result != StreamResult::layerRead || m->recordCount() != static_cast<std::size_t>(recordCount)) {
      state.SkipWithError("the packed records did not read back");
      break;
    }
    state.PauseTiming();
    m.reset(); // freeing the records is not part of reading them
    state.ResumeTiming();
  }
  report(state, bytes.size());
}

// The floor: every record's bytes copied with memcpy, no framing, no objects.
// Records pack to the same size here (same cookie, fixed-width ids).
void floorCopy(benchmark::State& state, bool writing) {
  const std::vector<uint8_t>& image = packedBytes();
  const std::size_t stride = image.size() / recordCount;
  std::vector<uint8_t> records(image.begin(), image.end());
  std::vector<uint8_t> stream(image.size());
  uint8_t* to = writing ? stream.data() : records.data();
  const uint8_t* from = writing ? records.data() : stream.data();
  for (auto _ : state) {
    for (int64_t i = 0; i < recordCount; ++i) std::memcpy(to + i * stride, from + i * stride, stride);
    benchmark::ClobberMemory();
  }
  report(state, stride * recordCount);
}

void BM_FloorWrite(benchmark::State& state) { floorCopy(state, true); }
void BM_FloorRead(benchmark::State& state) { floorCopy(state, false); }

} // namespace

BENCHMARK(BM_Pack)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FloorWrite)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Unpack)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FloorRead)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
