#include "host/render/ImageCache.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <tuple>

#include <loki/Singleton.h>

#include "host/core/LruCache.h"
#include "host/core/ThreadSafe.h"
#include "host/notify/Log.h"
#include "host/render/RenderCounters.h"

namespace {

// What a file was when it was read: a changed file is read again.
struct Stamp {
  std::filesystem::file_time_type modified{};
  std::uintmax_t length = 0;
  bool exists = false;
  bool operator==(const Stamp&) const = default;
};

Stamp stampOf(const std::string& file) {
  std::error_code ec;
  Stamp s;
  s.modified = std::filesystem::last_write_time(file, ec);
  if (ec) return {};
  s.length = std::filesystem::file_size(file, ec);
  if (ec) return {};
  s.exists = true;
  return s;
}

// Checks the PNG header before decoding, so that a huge picture is refused
// before its pixels are allocated. Empty when the file may be read.
std::string refusal(const std::string& file, const Stamp& stamp) {
  if (!stamp.exists) return "no such file";
  unsigned char head[24] = {};
  std::FILE* f = std::fopen(file.c_str(), "rb");
  if (!f) return "cannot be opened";
  const std::size_t got = std::fread(head, 1, sizeof head, f);
  std::fclose(f);
  static const unsigned char signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  if (got < sizeof head || !std::equal(signature, signature + 8, head) || !std::equal(head + 12, head + 16, "IHDR"))
    return "not a PNG picture";
  auto bigEndian = [&](int at) {
    return uint32_t(head[at]) << 24 | uint32_t(head[at + 1]) << 16 | uint32_t(head[at + 2]) << 8 | head[at + 3];
  };
  const uint32_t w = bigEndian(16), h = bigEndian(20);
  if (w == 0 || h == 0 || w > DigitalVideoFormats::maxSide || h > DigitalVideoFormats::maxSide)
    return std::to_string(w) + " x " + std::to_string(h) + " pixels is beyond what is read";
  return {};
}

class Store {
public:
  // Path, then size; (0, 0) is the picture as stored.
  using Key = std::tuple<std::string, int, int>;

  Ux::Ptr<UxImage> load(const std::string& file, int width, int height) {
    const Stamp stamp = stampOf(file);
    std::lock_guard lock(mutex_);
    if (Ux::Ptr<UxImage> hit = find({file, width, height}, stamp)) return hit;
    Ux::Ptr<UxImage> original = find({file, 0, 0}, stamp);
    if (!original) {
      original = read(file, stamp);
      if (!original) return nullptr;
      keep({file, 0, 0}, original, stamp);
    }
    if (width == 0 && height == 0) return original;
    Ux::Ptr<UxImage> sized = ImageConverter::resize(original, width, height);
    if (sized) keep({file, width, height}, sized, stamp);
    return sized;
  }

  void clear() {
    std::lock_guard lock(mutex_);
    pictures_.clear();
    unreadable_.clear();
  }

private:
  struct Picture {
    Ux::Ptr<UxImage> image;
    Stamp stamp;
  };

  Ux::Ptr<UxImage> find(const Key& key, const Stamp& stamp) {
    const Picture* p = pictures_.find(key);
    if (!p) return nullptr;
    if (!(p->stamp == stamp)) {
      pictures_.erase(key);
      return nullptr;
    }
    return p->image;
  }

  Ux::Ptr<UxImage> read(const std::string& file, const Stamp& stamp) {
    // A file that could not be read is tried again only once it has changed.
    if (auto it = unreadable_.find(file); it != unreadable_.end() && it->second == stamp) return nullptr;
    std::string why = refusal(file, stamp);
    Ux::Ptr<UxImage> picture;
    if (why.empty()) {
      ++Render::counters().filesRead;
      picture = UxImage::loadPNG(file, &why);
    }
    if (picture) {
      unreadable_.erase(file);
      return picture;
    }
    if (unreadable_.size() >= 1024) unreadable_.clear();
    unreadable_[file] = stamp;
    Log::printf("Warning: cannot read the picture %s: %s\n", file.c_str(), why.c_str());
    return nullptr;
  }

  void keep(const Key& key, const Ux::Ptr<UxImage>& image, const Stamp& stamp) {
    pictures_.put(key, Picture{image, stamp}, image->pixelBytes());
  }

  std::mutex mutex_;
  LruCache<Key, Picture> pictures_{ImageCache::byteBudget};
  std::map<std::string, Stamp> unreadable_;
};

using TheStore = Loki::SingletonHolder<Store, Loki::CreateUsingNew, Loki::DeletableSingleton, Ux::ThreadSafe>;

} // namespace

Ux::Ptr<UxImage> ImageCache::loadImage(const std::string& file, const VideoFormat*, int width, int height) {
  if (width < 0 || height < 0 || width > DigitalVideoFormats::maxSide || height > DigitalVideoFormats::maxSide ||
      (width == 0) != (height == 0))
    return nullptr;
  ++Render::counters().picturesAsked;
  return TheStore::Instance().load(file, width, height);
}

void ImageCache::clear() { TheStore::Instance().clear(); }

void ImageCache::makeNow() { (void)TheStore::Instance(); }
