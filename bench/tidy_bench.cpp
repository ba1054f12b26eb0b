// Time of one automatic tidy of a single generated tree, by tree size, so
// that its growth with the node count can be read off (counters: µs per tidy,
// µs per node, tree levels; the complexity fit over the sizes). With
// --edit FILE, also the view's automatic tidy of that edit's whole graph at
// time 0 (BM_TidyEdit, counter us_per_node). Arrange beside them: the
// arranger alone on the same generated graphs (BM_ArrangeGraph) and the
// view's Arrange of the edit (BM_ArrangeEdit), both in µs per node.
#include <chrono>
#include <memory>
#include <unordered_map>
#include <vector>

#include <benchmark/benchmark.h>

#include "app/EditGenerator.h"
#include "graph_view/FXGraphView.h"
#include "host/config/EditorPreferences.h"
#include "host/edit/EditFile.h"
#include "host/edit/EditGraphIterator.h"
#include "host/ui/GlobManager.h"
#include "layout/FXGraphArranger.h"
#include "layout/FXGraphTidier.h"
#include "node_ui/NodeUIPosSource.h"

namespace {

// Position records by node id with constant-time look-up, so that the figures
// are the tidier's own (the view's look-up is not part of what is measured).
class BenchPosSource : public NodeUIPosSource {
public:
  NodeUIPosRec* getPosRecForNode(const IdStamp& node) override {
    Ux::Ptr<NodeUIPosRec>& rec = records_[node];
    if (!rec) rec = new NodeUIPosRec(nullptr, node, Cookie());
    return rec.get();
  }
  VidRouting::Orientations::Orientation getOrientation() const override {
    return VidRouting::Orientations::LeftToRight;
  }

private:
  std::unordered_map<IdStamp, Ux::Ptr<NodeUIPosRec>> records_;
};

constexpr double gap = 0.1875; // the view's spacing, graph units

void BM_TidyTree(benchmark::State& state) {
  const auto nodes = static_cast<unsigned>(state.range(0));
  EditPtr edit = fxgraph::generateEdit(nodes, 7, nodes);
  std::vector<IdStamp> roots;
  findAllRootNodeChans(edit, roots, 0, true);
  BenchPosSource source;
  // The tidier holds its fixed local tree inline; keep it off the stack.
  auto tidier = std::make_unique<FXGraphTidier>(source, gap, gap);
  EditGraphIterator warm(edit, 0, roots.at(0), 0);
  tidier->tidyTreeStruct(warm, 0, 0); // makes every record once

  double seconds = 0; // wall time of the tidies alone
  for (auto _ : state) {
    EditGraphIterator it(edit, 0, roots.at(0), 0);
    const auto start = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(tidier->tidyTreeStruct(it, 0, 0));
    seconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  }
  const double microsPerTidy = seconds * 1e6 / static_cast<double>(state.iterations());
  state.counters["us_per_tidy"] = microsPerTidy;
  state.counters["us_per_node"] = microsPerTidy / nodes;
  // Each level whose first clash spreads the level above re-places every node
  // below it, so the work goes with nodes times levels.
  GraphExaminer examiner(source);
  EditGraphIterator it(edit, 0, roots.at(0), 0);
  examiner.examine(it);
  state.counters["levels"] = static_cast<double>(examiner.levels().size());
  state.SetComplexityN(state.range(0));
  edit->close();
}

void BM_ArrangeGraph(benchmark::State& state) {
  const auto nodes = static_cast<unsigned>(state.range(0));
  EditPtr edit = fxgraph::generateEdit(nodes, 7, nodes);
  // The edit's graph as the arranger takes it, boxes of the view's size.
  std::unordered_map<IdStamp, int> index;
  const auto all = edit->allNodes();
  for (const auto& node : all) index.emplace(node->getId(), static_cast<int>(index.size()));
  std::vector<FXGraphArranger::Node> graph(all.size());
  for (std::size_t i = 0; i < all.size(); ++i) {
    graph[i].left = -0.0625, graph[i].right = 0.0625, graph[i].bottom = -0.05, graph[i].top = 0.05;
    for (unsigned k = 0; k < all[i]->getNumInputs(); ++k) {
      const auto it = index.find(all[i]->getInputTrackId(k));
      graph[i].inputs.push_back(it != index.end() ? it->second : -1);
    }
  }
  for (auto _ : state)
    benchmark::DoNotOptimize(FXGraphArranger::arrange(graph, {}, FXGraphArranger::leftToRight, gap, {0, 0}));
  state.counters["us_per_node"] = benchmark::Counter(
      static_cast<double>(graph.size()), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.SetComplexityN(state.range(0));
  edit->close();
}

std::string& editFile() {
  static std::string path;
  return path;
}

// The edit named by --edit in a view; `layout` runs once per iteration.
template <class Layout>
void layOutEdit(benchmark::State& state, Layout layout) {
  EditFile::LoadResult loaded = EditFile::load(editFile());
  if (!loaded.edit) {
    state.SkipWithError(loaded.error.c_str());
    return;
  }
  if (!GlobManager::initialised()) GlobManager::initialise(1920, 1080);
  Vob vob(loaded.edit);
  auto* view = new FXGraphView(&vob, {1920, 1080}, Palette());
  GlobManager::realize(view);
  GlobManager::beginDeferral(); // the layout, not the drawing
  for (auto _ : state) layout(*view);
  GlobManager::endDeferral();
  const double nodes = static_cast<double>(std::max<std::size_t>(1, view->nodes().size()));
  state.counters["nodes"] = nodes;
  state.counters["us_per_node"] =
      benchmark::Counter(nodes, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  GlobManager::requestDeletion(view);
  GlobManager::processDeletions();
  loaded.edit->close();
}

void BM_TidyEdit(benchmark::State& state) {
  layOutEdit(state, [](FXGraphView& view) { view.autoTidy(); });
}

void BM_ArrangeEdit(benchmark::State& state) {
  layOutEdit(state, [](FXGraphView& view) {
    // Automatic placing: no undo step per arrangement.
    view.manualPositioningValue() = false;
    view.arrange();
  });
}

} // namespace

BENCHMARK(BM_TidyTree)->Arg(50)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMicrosecond)->Complexity();
BENCHMARK(BM_ArrangeGraph)->Arg(50)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMicrosecond)->Complexity();

int main(int argc, char** argv) {
  // --edit FILE is this program's own; the rest goes to the benchmark library.
  std::vector<char*> args;
  for (int i = 0; i < argc; ++i) {
    if (std::string(argv[i]) == "--edit" && i + 1 < argc) {
      editFile() = argv[++i];
      continue;
    }
    args.push_back(argv[i]);
  }
  if (!editFile().empty()) {
    benchmark::RegisterBenchmark("BM_TidyEdit", BM_TidyEdit)->Unit(benchmark::kMicrosecond);
    benchmark::RegisterBenchmark("BM_ArrangeEdit", BM_ArrangeEdit)->Unit(benchmark::kMicrosecond);
  }
  setPreferencesFile("/tmp/fxgraph-tidy-bench.prefs");
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  if (GlobManager::initialised()) GlobManager::shutdown();
  return 0;
}
