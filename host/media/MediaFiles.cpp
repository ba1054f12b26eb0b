#include "host/media/MediaFiles.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <limits>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <sys/stat.h>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/core/LruCache.h"
#include "host/media/MediaDecoder.h"

namespace {

// Files known (open, closed or failed) before the closed and failed ones are
// forgotten: a long session browsing many folders must not grow without end.
constexpr std::size_t maxKnownFiles = 1024;

// What a file was when it was opened: a change to any of these makes it a
// new file.
struct Stamp {
  int64_t device = 0;
  int64_t inode = 0;
  int64_t size = 0;
  int64_t modifiedNs = 0;
  int64_t changedNs = 0; // its permissions too: a file that could not be read may now be
  bool operator==(const Stamp&) const = default;
};

bool stampOf(const std::string& path, Stamp& stamp, std::string& why) {
  struct stat info {};
  if (path.empty() || ::stat(path.c_str(), &info) != 0) {
    why = path.empty() || errno == ENOENT || errno == ENOTDIR ? "no such file"
                                                              : "cannot be read: " + std::string(std::strerror(errno));
    return false;
  }
  stamp.device = int64_t(info.st_dev);
  stamp.inode = int64_t(info.st_ino);
  stamp.size = int64_t(info.st_size);
  stamp.modifiedNs = int64_t(info.st_mtim.tv_sec) * 1000000000 + int64_t(info.st_mtim.tv_nsec);
  stamp.changedNs = int64_t(info.st_ctim.tv_sec) * 1000000000 + int64_t(info.st_ctim.tv_nsec);
  return true;
}

// Frames by file (its generation) and frame; the least recently used go
// first once their bytes pass the budget. Locked by the registry.
class KeptFrames {
public:
  using Key = std::pair<uint64_t, int64_t>;
  explicit KeptFrames(std::size_t budget) : cache_(budget) {}

  Ux::Ptr<UxImage> find(const Key& key) {
    const Ux::Ptr<UxImage>* image = cache_.find(key);
    return image ? *image : nullptr;
  }
  void put(const Key& key, const Ux::Ptr<UxImage>& image) { cache_.put(key, image, image->pixelBytes()); }
  void forget(uint64_t generation) {
    cache_.retain([generation](const Key& key, const Ux::Ptr<UxImage>&) { return key.first != generation; });
  }
  // The frames kept of a file, in order.
  std::vector<int64_t> framesOf(uint64_t generation) const {
    std::vector<int64_t> keys;
    for (const Key* k = cache_.firstKeyFrom({generation, std::numeric_limits<int64_t>::min()});
         k && k->first == generation;
         k = k->second == std::numeric_limits<int64_t>::max() ? nullptr
                                                              : cache_.firstKeyFrom({generation, k->second + 1}))
      keys.push_back(k->second);
    return keys;
  }
  void clear() { cache_.clear(); }
  std::size_t size() const noexcept { return cache_.size(); }
  std::size_t bytes() const noexcept { return cache_.bytes(); }

private:
  LruCache<Key, Ux::Ptr<UxImage>> cache_;
};

struct MediaFile {
  MediaFile(std::string p, Stamp s, uint64_t g) : path(std::move(p)), stamp(s), generation(g) {}

  const std::string path;
  const Stamp stamp;
  const uint64_t generation; // names its frames: a changed file's are never found

  std::mutex use; // one thread decodes at a time
  // Under `use`.
  std::unique_ptr<MediaDecoder> decoder; // null while closed
  MediaDecoder::FrameIndex index;        // while closed: where its kept frames lie
  bool failed = false;
  std::string failure;
  int64_t seeksCounted = 0;
  int64_t decodedCounted = 0;
  // Under the registry's lock.
  bool listed = false;  // among the open files
  bool retired = false; // changed on disk or cleared: closed when its last user is done
};

using FilePtr = std::shared_ptr<MediaFile>;

struct Registry {
  // Never held while a file decodes: only round the tables below.
  std::mutex lock;
  std::unordered_map<std::string, FilePtr> files;
  std::list<FilePtr> open; // most recently used first
  KeptFrames frames{MediaFiles::frameBytes};
  uint64_t generations = 0;
  std::atomic<int64_t> opens{0}, seeks{0}, decoded{0}, converted{0}, hits{0};

  // The file under the path as it is now on disk; `gone` takes the one it
  // replaces, to be let go of outside the lock.
  FilePtr entry(const std::string& path, const Stamp& stamp, std::vector<FilePtr>& gone) {
    std::lock_guard held(lock);
    FilePtr& slot = files[path];
    if (slot && slot->stamp == stamp) return slot;
    if (slot) {
      retire(slot);
      gone.push_back(std::move(slot));
    }
    slot = std::make_shared<MediaFile>(path, stamp, ++generations);
    FilePtr file = slot;
    if (files.size() > maxKnownFiles) {
      for (auto it = files.begin(); it != files.end();) {
        if (!it->second->listed && it->second.use_count() == 1) {
          gone.push_back(std::move(it->second));
          it = files.erase(it);
        } else {
          ++it;
        }
      }
    }
    return file;
  }

  void retire(const FilePtr& file) {
    file->retired = true;
    if (file->listed) open.remove(file);
    file->listed = false;
    frames.forget(file->generation);
  }

  Ux::Ptr<UxImage> kept(const KeptFrames::Key& key) {
    std::lock_guard held(lock);
    Ux::Ptr<UxImage> image = frames.find(key);
    if (image) ++hits;
    return image;
  }

  // The frame, from those kept or decoded; the caller holds the file.
  MediaFiles::Frame frameOf(MediaFile& file, double seconds) {
    MediaDecoder& decoder = *file.decoder;
    MediaFiles::Frame out;
    if (const auto key = decoder.knownFrameKey(seconds))
      if ((out.image = kept({file.generation, *key}))) return out;
    if (!decoder.goTo(seconds, out.why)) {
      // The decoder is no use now; the next request opens the file afresh.
      count(file);
      close(file);
      return out;
    }
    const KeptFrames::Key key{file.generation, decoder.frameKey()};
    if ((out.image = kept(key))) return out;
    out.image = decoder.picture(out.why);
    if (out.image) {
      ++converted;
      std::lock_guard held(lock);
      if (!file.retired) frames.put(key, out.image);
    }
    return out;
  }

  // A closed file's kept frames are found by time through what its decoder
  // had learnt, so that they come without opening it again.
  MediaFiles::Frame keptWhileClosed(MediaFile& file, double seconds) {
    MediaFiles::Frame out;
    if (const auto key = file.index.keyAt(seconds)) out.image = kept({file.generation, *key});
    return out;
  }

  // Closes the file's decoder, keeping what it learnt of the frames kept;
  // the caller holds the file.
  void close(MediaFile& file) {
    if (!file.decoder) return;
    file.index = file.decoder->index();
    file.decoder.reset();
    std::vector<int64_t> keys;
    {
      std::lock_guard held(lock);
      keys = frames.framesOf(file.generation);
    }
    file.index.keepOnly([&](int64_t key) { return std::binary_search(keys.begin(), keys.end(), key); });
  }

  // Adds the work the file's decoder did since last counted.
  void count(MediaFile& file) {
    if (!file.decoder) return;
    seeks += file.decoder->seeks() - file.seeksCounted;
    decoded += file.decoder->framesDecoded() - file.decodedCounted;
    file.seeksCounted = file.decoder->seeks();
    file.decodedCounted = file.decoder->framesDecoded();
  }

  // The file just used goes to the front of the open ones; those past the
  // limit are returned, to be closed once their users (if any) are done.
  std::vector<FilePtr> used(const FilePtr& file) {
    std::vector<FilePtr> closing;
    std::lock_guard held(lock);
    if (file->listed) open.remove(file);
    file->listed = false;
    if (file->retired) {
      closing.push_back(file);
      return closing;
    }
    if (!file->decoder) return closing;
    open.push_front(file);
    file->listed = true;
    while (open.size() > MediaFiles::maxOpenFiles) {
      open.back()->listed = false;
      closing.push_back(std::move(open.back()));
      open.pop_back();
    }
    return closing;
  }

  // Closes a file unless someone is using it (they list it again when
  // done) or has listed it again since.
  void closeIfIdle(const FilePtr& file) {
    std::unique_lock busy(file->use, std::try_to_lock);
    if (!busy.owns_lock()) return;
    {
      std::lock_guard held(lock);
      if (file->listed) return;
    }
    if (file->retired)
      file->decoder.reset();
    else
      close(*file);
  }
};

Registry& registry() {
  // Never destroyed: worker threads may still ask for frames while the
  // process exits.
  static Registry& r = *new Registry;
  return r;
}

} // namespace

MediaFiles::Frame MediaFiles::frameAt(const std::string& path, double seconds) {
  Registry& r = registry();
  Frame out;
  Stamp stamp;
  if (!stampOf(path, stamp, out.why)) return out;
  std::vector<FilePtr> gone;
  const FilePtr file = r.entry(path, stamp, gone);
  std::vector<FilePtr> closing;
  {
    std::lock_guard busy(file->use);
    if (file->failed) {
      out.why = file->failure;
      return out;
    }
    if (!file->decoder) {
      if ((out = r.keptWhileClosed(*file, seconds)).image) return out;
      ++r.opens;
      file->decoder = MediaDecoder::open(path, file->failure);
      file->failed = !file->decoder;
      file->seeksCounted = file->decodedCounted = 0;
      if (file->failed) {
        out.why = file->failure;
        return out;
      }
      file->decoder->adopt(file->index);
      file->index = {};
    }
    out = r.frameOf(*file, seconds);
    r.count(*file);
    closing = r.used(file);
  }
  for (const FilePtr& f : closing) r.closeIfIdle(f);
  return out;
}

void MediaFiles::clear() {
  Registry& r = registry();
  std::unordered_map<std::string, FilePtr> files;
  std::list<FilePtr> open;
  {
    std::lock_guard held(r.lock);
    for (auto& [path, file] : r.files) file->retired = true;
    for (auto& file : r.open) file->listed = false;
    files.swap(r.files);
    open.swap(r.open);
    r.frames.clear();
  }
  // Files not in use close here, outside the lock; those in use when their
  // users are done.
}

MediaFiles::Stats MediaFiles::stats() {
  Registry& r = registry();
  Stats s;
  s.opens = r.opens;
  s.seeks = r.seeks;
  s.framesDecoded = r.decoded;
  s.framesConverted = r.converted;
  s.cacheHits = r.hits;
  std::lock_guard held(r.lock);
  s.openFiles = r.open.size();
  s.keptFrames = r.frames.size();
  s.keptBytes = r.frames.bytes();
  return s;
}
