// Thumbnails of an HD clip at scattered times, from nothing kept: each
// costs a seek to a key frame, decoding on to the time and a conversion.
// The file is opened once an iteration. Needs the ffmpeg program to make
// the clip (H.264, or the older MPEG-4 video codec without it).
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <string>
#include <system_error>

#include <benchmark/benchmark.h>

#include "host/media/MediaFiles.h"

namespace {

constexpr double thumbnailTimes[] = {0.5, 7.3, 2.1, 9.6, 4.4, 1.2, 8.8, 5.5};
constexpr int64_t thumbnailCount = int64_t(std::size(thumbnailTimes));

// Ten seconds of 1280x720 at 25 fps, a key frame every two seconds; in a
// folder of its own, removed when the program ends.
struct Clip {
  std::string folder, path;
  Clip() {
    folder = (std::filesystem::temp_directory_path() / "fxgraph-bench-XXXXXX").string();
    if (!mkdtemp(folder.data())) {
      folder.clear();
      return;
    }
    const std::string file = folder + "/clip.mp4";
    for (const char* codec : {"libx264 -preset veryfast", "mpeg4 -q:v 4"}) {
      const std::string command = "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=1280x720:r=25:d=10 -c:v " +
                                  std::string(codec) + " -g 50 -keyint_min 50 -sc_threshold 0 -pix_fmt yuv420p '" +
                                  file + "' >/dev/null 2>&1";
      if (std::system(command.c_str()) == 0) {
        path = file;
        return;
      }
    }
  }
  ~Clip() {
    std::error_code ignored;
    if (!folder.empty()) std::filesystem::remove_all(folder, ignored);
  }
  Clip(const Clip&) = delete;
  Clip& operator=(const Clip&) = delete;
};

const std::string& clip() {
  static const Clip made;
  return made.path;
}

void BM_DecodeThumbnail(benchmark::State& state) {
  if (clip().empty()) {
    state.SkipWithError("the ffmpeg program could not make the clip");
    return;
  }
  const MediaFiles::Stats before = MediaFiles::stats();
  for (auto _ : state) {
    MediaFiles::clear();
    for (double t : thumbnailTimes) {
      const MediaFiles::Frame frame = MediaFiles::frameAt(clip(), t);
      if (!frame.image) {
        state.SkipWithError(frame.why.c_str());
        return;
      }
      benchmark::DoNotOptimize(frame.image->data());
    }
  }
  const MediaFiles::Stats after = MediaFiles::stats();
  const double thumbnails = double(state.iterations() * thumbnailCount);
  // Seconds per thumbnail; printed with an SI prefix, so "20m" is 20 ms.
  state.counters["per_thumbnail"] = benchmark::Counter(
      double(thumbnailCount), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
  state.counters["frames_decoded"] = double(after.framesDecoded - before.framesDecoded) / thumbnails;
  state.counters["seeks"] = double(after.seeks - before.seeks) / thumbnails;
  MediaFiles::clear();
}
BENCHMARK(BM_DecodeThumbnail)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
