// The graph view on generated edits of 50 to 50,000 nodes: a rebuild of the
// node list with automatic positioning, and one full frame drawn into a
// 1920x1080 screen; beside it the floor, the same frame's primitives
// (recorded once) replayed straight onto the cairo surface, so the view's own
// cost (walks, geometry, layout of the frame) can be read off as the ratio.
// Also: a frame of the 5,000-node graph zoomed in to show about 200 nodes
// (what drawing costs when most of the graph is out of sight), one mouse move
// of a node drag with what it redraws, and a move of the time to one where
// the channels' graphs differ (rebuild and redraw); undo and redo of Arrange.
#include <memory>

#include <benchmark/benchmark.h>

#include "app/EditGenerator.h"
#include "graph_view/FXGraphView.h"
#include "graph_view/ViewStills.h"
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
    view_->draw();
    view_->stills().finish(); // thumbnails made once, then served from the stills cache
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

// The scene asked for, on top of the screen: every scene's view covers the
// whole screen, and a view redrawn under others has them redrawn too.
Scene& scene(unsigned nodes) {
  auto& s = scenes()[nodes];
  if (!s) s = std::make_unique<Scene>(nodes);
  GlobManager::raise(&s->view());
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

// Zoomed in on the middle of the graph until about 200 nodes show.
void BM_FrameVisible(benchmark::State& state) {
  FXGraphView& view = scene(static_cast<unsigned>(state.range(0))).view();
  double lo = 0, hi = 1;
  std::size_t shown = 0;
  for (int i = 0; i < 30; ++i) {
    const double zoom = (lo + hi) / 2;
    view.setViewZoom(zoom);
    view.draw();
    Vector<IdStamp> visible;
    view.calcVisibleNodeList(visible);
    shown = visible.size();
    (shown > 200 ? lo : hi) = zoom;
  }
  for (auto _ : state) view.draw();
  state.counters["visible"] = static_cast<double>(shown);
  view.resetView(1, 0);
  view.setViewZoom(0);
}

// One step of a node drag: the move, the node's new place and the redraw.
void BM_DragStep(benchmark::State& state) {
  FXGraphView& view = scene(static_cast<unsigned>(state.range(0))).view();
  view.setViewZoom(0);
  view.redraw();
  const Ux::Ptr<FXGraphViewNode> node = view.nodes().front();
  const auto box = node->calcPixelExtents();
  const XY<int> grab = view.screenPos() + XY<int>{(box.x0 + box.x1) / 2, (box.y0 + box.y1) / 2};
  Event e;
  e.button = Event::left;
  e.type = Event::mouseDown;
  e.screen = grab;
  GlobManager::dispatch(e);
  e.type = Event::mouseMove;
  int step = 0;
  for (auto _ : state) {
    e.screen = grab + XY<int>{(step % 2) ? 4 : 8, 3};
    ++step;
    GlobManager::dispatch(e); // moves, redraws, puts it on the screen
  }
  e.type = Event::mouseUp;
  GlobManager::dispatch(e);
}

// The time moves between two times whose channels have different heads.
void BM_TimeStep(benchmark::State& state) {
  if (!GlobManager::initialised()) GlobManager::initialise(1920, 1080);
  EditPtr edit = fxgraph::generateEdit(static_cast<unsigned>(state.range(0)), 11);
  // From 60 s each channel shows its neighbour's tree.
  for (int c = 0; c < edit->getNumChans(); ++c) {
    const IdStamp next = edit->getChan((c + 1) % edit->getNumChans()).cels.front().ref;
    edit->getChan(c).cels.push_back({60, 120, Cel::Kind::graph, next});
  }
  Vob vob(edit);
  auto* view = new FXGraphView(&vob, {1920, 1080}, Palette());
  view->manualPositioningValue() = false;
  GlobManager::realize(view);
  bool later = false;
  for (auto _ : state) {
    later = !later;
    vob.setCurrentTime(later ? 90 : 30);
    GlobManager::update();
  }
  state.counters["nodes"] = static_cast<double>(view->nodes().size());
  GlobManager::requestDeletion(view);
  GlobManager::processDeletions();
  edit->close();
}

// Undo and redo of Arrange with hand placing on, each with the redraw that
// puts the result on the screen: what a person waits for after ctrl+Z.
class ArrangedScene {
public:
  explicit ArrangedScene(unsigned nodes) {
    if (!GlobManager::initialised()) GlobManager::initialise(1920, 1080);
    edit_ = fxgraph::generateEdit(nodes, 7);
    vob_ = std::make_unique<Vob>(edit_);
    view_ = new FXGraphView(vob_.get(), {1920, 1080}, Palette());
    view_->manualPositioningValue() = true;
    GlobManager::realize(view_);
    view_->recalcNodeList(false);
    view_->resetView(1, 0);
    view_->arrange();
    GlobManager::update();
    view_->stills().finish();
  }
  ~ArrangedScene() {
    GlobManager::requestDeletion(view_);
    GlobManager::processDeletions();
    vob_.reset();
    edit_->close();
  }
  void undo() {
    vob_->undoRequest();
    GlobManager::update();
  }
  void redo() {
    vob_->redoRequest();
    GlobManager::update();
  }
  std::size_t nodes() const { return view_->nodes().size(); }

private:
  EditPtr edit_;
  std::unique_ptr<Vob> vob_;
  FXGraphView* view_;
};

void BM_UndoArrange(benchmark::State& state) {
  ArrangedScene scene(static_cast<unsigned>(state.range(0)));
  for (auto _ : state) {
    scene.undo();
    state.PauseTiming();
    scene.redo();
    state.ResumeTiming();
  }
  state.counters["nodes"] = static_cast<double>(scene.nodes());
}

void BM_RedoArrange(benchmark::State& state) {
  ArrangedScene scene(static_cast<unsigned>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    scene.undo();
    state.ResumeTiming();
    scene.redo();
  }
  state.counters["nodes"] = static_cast<double>(scene.nodes());
}

BENCHMARK(BM_RecalcNodeList)->Arg(50)->Arg(500)->Arg(5000)->Arg(50000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Frame)->Arg(200)->Arg(500)->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FrameCairoFloor)->Arg(200)->Arg(500)->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_FrameVisible)->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DragStep)->Arg(500)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TimeStep)->Arg(500)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_UndoArrange)->Arg(300)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RedoArrange)->Arg(300)->Unit(benchmark::kMillisecond);

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
