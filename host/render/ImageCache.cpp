#include "host/render/ImageCache.h"

#include <map>
#include <mutex>

#include "host/notify/Log.h"

namespace {
struct Store {
  std::mutex mutex;
  // Key: path, then size; (0, 0) is the picture as stored.
  std::map<std::tuple<std::string, int, int>, Ux::Ptr<UxImage>> pictures;
  std::map<std::string, bool> unreadable; // warned once
  unsigned reads = 0;
};
Store& store() {
  static Store s;
  return s;
}
// Pictures kept before the cache starts again.
constexpr std::size_t limit = 512;
} // namespace

Ux::Ptr<UxImage> ImageCache::loadImage(const std::string& file, const VideoFormat*, int width, int height) {
  Store& s = store();
  std::lock_guard lock(s.mutex);
  if (auto it = s.pictures.find({file, width, height}); it != s.pictures.end()) return it->second;
  Ux::Ptr<UxImage> original;
  if (auto it = s.pictures.find({file, 0, 0}); it != s.pictures.end()) {
    original = it->second;
  } else {
    if (s.unreadable.count(file)) return nullptr;
    std::string why;
    ++s.reads;
    original = UxImage::loadPNG(file, &why);
    if (!original) {
      s.unreadable[file] = true;
      Log::printf("Warning: cannot read the picture %s\n", why.c_str());
      return nullptr;
    }
    if (s.pictures.size() >= limit) s.pictures.clear();
    s.pictures[{file, 0, 0}] = original;
  }
  if (width <= 0 || height <= 0) return original;
  Ux::Ptr<UxImage> sized = ImageConverter::resize(original, width, height);
  if (sized) s.pictures[{file, width, height}] = sized;
  return sized;
}

void ImageCache::clear() {
  Store& s = store();
  std::lock_guard lock(s.mutex);
  s.pictures.clear();
  s.unreadable.clear();
}

unsigned ImageCache::filesRead() {
  Store& s = store();
  std::lock_guard lock(s.mutex);
  return s.reads;
}
