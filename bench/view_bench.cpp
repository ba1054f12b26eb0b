// The graph view on generated edits of 50, 500 and 5,000 nodes: a rebuild of
// the node list with automatic positioning, and one full frame drawn into a
// 1920x1080 screen; beside it the floor, the same frame's primitives
// (recorded once) replayed straight onto the cairo surface, so the view's own
// cost (walks, geometry, layout of the frame) can be read off as the ratio.
#include <memory>

#include <benchmark/benchmark.h>

#include "app/EditGenerator.h"
#include "graph_view/FXGraphView.h"
#include "host/config/EditorPreferences.h"
#include "host/ui/GlobManager.h"

namespace {

class Scene {
public:
  explicit Scene(unsigned nodes) {
    if (!GlobManager::initialised()) GlobManager::initialise(1920, 1080);
    edit_ = fxgraph::generateEdit(nodes, 7);
    vob_ = std::make_unique<Vob>(edit_);
    view_ = new FXGraphView(vob_.get(), {1920, 1080}, Palette());
    view_->manualPositioningValue() = false;
    GlobManager::realize(view_);
    view_->recalcNodeList(false);
    view_->resetView(1, 0);
    view_->draw(); // thumbnails rendered once, then served from the stills cache
  }
  ~Scene() {
    GlobManager::requestDeletion(view_);
    GlobManager::processDeletions();
    vob_.reset();
    edit_->close();
  }
  FXGraphView& view() { return *view_; }

private:
  EditPtr edit_;
  std::unique_ptr<Vob> vob_;
  FXGraphView* view_;
};

std::map<unsigned, std::unique_ptr<Scene>>& scenes() {
  static std::map<unsigned, std::unique_ptr<Scene>> all;
  return all;
}

Scene& scene(unsigned nodes) {
  auto& s = scenes()[nodes];
  if (!s) s = std::make_unique<Scene>(nodes);
  return *s;
}

void BM_RecalcNodeList(benchmark::State& state) {
  FXGraphView& view = scene(static_cast<unsigned>(state.range(0))).view();
  for (auto _ : state) view.recalcNodeList(false);
  state.counters["nodes"] = static_cast<double>(view.nodes().size());
}

void BM_Frame(benchmark::State& state) {
  FXGraphView& view = scene(static_cast<unsigned>(state.range(0))).view();
  for (auto _ : state) view.draw();
  state.counters["nodes"] = static_cast<double>(view.nodes().size());
}

void BM_FrameCairoFloor(benchmark::State& state) {
  FXGraphView& view = scene(static_cast<unsigned>(state.range(0))).view();
  ScreenSurface& surface = GlobManager::surface();
  std::vector<ScreenSurface::Recorded> frame;
  surface.setRecorder(&frame);
  view.draw();
  surface.setRecorder(nullptr);
  for (auto _ : state)
    for (const ScreenSurface::Recorded& r : frame)
      std::visit([&](const auto& primitive) { surface.draw(primitive, r.clip); }, r.primitive);
  state.counters["primitives"] = static_cast<double>(frame.size());
}

BENCHMARK(BM_RecalcNodeList)->Arg(50)->Arg(500)->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Frame)->Arg(50)->Arg(500)->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FrameCairoFloor)->Arg(50)->Arg(500)->Arg(5000)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char** argv) {
  // A scratch preferences file: the benchmark leaves the user's alone.
  setPreferencesFile("/tmp/fxgraph-view-bench.prefs");
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  scenes().clear();
  GlobManager::shutdown();
  return 0;
}
