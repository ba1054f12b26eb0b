#pragma once
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "host/FxHostApi.h"
#include "host/core/Ptr.h"
#include "host/draw/UxImage.h"

// One open media file, a video or a still picture (PNG, JPEG, ...), read
// through FFmpeg. Times are seconds from the start of the media. Not locked:
// one thread uses it at a time (MediaFiles shares them between threads).
class FXHOST_API MediaDecoder {
  struct State;

public:
  // Frames larger than this a side are refused before any is made.
  static constexpr int maxSide = 8192;

  // What decoding has shown of which frame each time falls in; frames are
  // named by their timestamps. Outlives the decoder, so that a cache can
  // find the frames it keeps without opening the file again.
  class FXHOST_API FrameIndex {
  public:
    std::optional<int64_t> keyAt(double seconds) const;
    // Forgets the frames for which keep(key) is false.
    void keepOnly(const std::function<bool(int64_t)>& keep);

  private:
    friend class MediaDecoder;
    friend struct State;
    int64_t ticks(double seconds) const;
    int64_t timestampAt(double seconds) const;
    std::optional<int64_t> keyAtTimestamp(int64_t ts) const;

    int64_t unitNum_ = 1, unitDen_ = 1000000; // a timestamp's unit in seconds
    std::optional<int64_t> start_;            // the timestamp of time 0
    std::optional<int64_t> first_;            // the first frame's
    // Each frame's start to the next frame's (the largest value for the last).
    std::map<int64_t, int64_t> spans_;
  };

  // The file opened and its first frame decoded; null and a short reason
  // ("no such file", "no video stream", ...) when it cannot be.
  static std::unique_ptr<MediaDecoder> open(const std::string& path, std::string& why);
  ~MediaDecoder();
  MediaDecoder(const MediaDecoder&) = delete;
  MediaDecoder& operator=(const MediaDecoder&) = delete;

  // The frame shown at a time: the last one that starts at or before it;
  // the first before the media starts and the last after it ends. In
  // premultiplied ARGB at the shape it is shown (square pixels); null and
  // the reason when it cannot be had.
  Ux::Ptr<UxImage> frameAt(double seconds, std::string& why);

  // frameAt in steps, for callers that keep pictures by frame: goTo decodes
  // up to the frame shown at a time, frameKey then names that frame (its
  // timestamp) and picture converts it.
  bool goTo(double seconds, std::string& why);
  int64_t frameKey() const noexcept;
  Ux::Ptr<UxImage> picture(std::string& why);
  // The key of the frame shown at a time when the frames decoded so far
  // already tell which frame it is; nothing when only decoding would.
  std::optional<int64_t> knownFrameKey(double seconds) const;
  const FrameIndex& index() const noexcept;
  // Takes up what an earlier decoder of the same file had learnt.
  void adopt(const FrameIndex& earlier);

  // The shape frames are shown at (the first frame's), in pixels.
  int width() const noexcept;
  int height() const noexcept;
  // 0 when the file does not say.
  double duration() const noexcept;
  double frameRate() const noexcept;
  const std::string& path() const noexcept;

  // The work done so far, for the caches above to count.
  int64_t seeks() const noexcept;
  int64_t framesDecoded() const noexcept;

private:
  explicit MediaDecoder(std::unique_ptr<State> state) noexcept;
  std::unique_ptr<State> s_;
};
