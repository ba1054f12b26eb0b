#include "host/stream/AtomicFiles.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace {

SaveStepHook stepHook = nullptr;
void* stepContext = nullptr;
int stepNumber = 0;

// Whether the save goes on to the step: always, unless a test stops it.
bool step(const char* name) { return !stepHook || stepHook(name, stepNumber++, stepContext); }

// Thrown when a test stops a save: it unwinds without cleaning up.
struct Stopped {};

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

std::string nameOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  return slash == std::string::npos ? path : path.substr(slash + 1);
}

std::string systemReason(int error) { return std::strerror(error); }

// A path as messages name it: the user's own, and where a link led.
std::string shownName(const std::string& path, const std::string& target) {
  return path == target ? path : path + " (a link to " + target + ")";
}

// A new, empty temporary beside the target, made with O_EXCL (so never
// through a link or over a file that is there): its descriptor, or -1 with
// the reason.
int createBeside(const std::string& target, const std::string& shown, std::string& temp, std::string& why) {
  const std::string pattern = folderOf(target) + "/." + nameOf(target) + ".XXXXXX";
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  const int fd = ::mkostemp(name.data(), O_CLOEXEC);
  if (fd < 0)
    why = shown + ": cannot create a file beside it: " + systemReason(errno);
  else
    temp = name.data();
  return fd;
}

// A temporary beside the target holding the bytes, synced, with the mode
// the target should have.
bool writeTemporary(const std::string& target, const std::string& shown, const void* data, std::size_t size,
                    mode_t mode, std::string& temp, std::string& why) {
  const int fd = createBeside(target, shown, temp, why);
  if (fd < 0) return false;
  const char* p = static_cast<const char*>(data);
  int error = 0;
  if (!step("write")) {
    ::close(fd);
    throw Stopped{};
  }
  while (size > 0) {
    const ssize_t n = ::write(fd, p, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      error = n < 0 ? errno : ENOSPC;
      break;
    }
    p += n;
    size -= static_cast<std::size_t>(n);
  }
  if (!error && ::fchmod(fd, mode) != 0) error = errno;
  if (!error && !step("sync")) {
    ::close(fd);
    throw Stopped{};
  }
  if (!error && ::fsync(fd) != 0) error = errno;
  if (::close(fd) != 0 && !error) error = errno;
  if (error) {
    why = shown + ": cannot write: " + systemReason(error);
    ::unlink(temp.c_str());
    temp.clear();
    return false;
  }
  return true;
}

bool syncFolder(const std::string& folder, std::string& why) {
  if (!step("sync folder")) throw Stopped{};
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) {
    why = folder + ": cannot sync the folder: " + systemReason(errno);
    return false;
  }
  const bool ok = ::fsync(fd) == 0 || errno == EINVAL; // some file systems cannot sync folders
  const int error = errno;
  ::close(fd);
  if (!ok) why = folder + ": cannot sync the folder: " + systemReason(error);
  return ok;
}

} // namespace

std::string finalTargetOf(const std::string& path) {
  std::string at = path;
  for (int hops = 0; hops < 40; ++hops) {
    struct stat st;
    if (::lstat(at.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return at;
    std::vector<char> buffer(PATH_MAX + 1);
    const ssize_t n = ::readlink(at.c_str(), buffer.data(), PATH_MAX);
    if (n <= 0) return at;
    const std::string link(buffer.data(), static_cast<std::size_t>(n));
    at = link.front() == '/' ? link : folderOf(at) + "/" + link;
  }
  return at;
}

namespace {

bool writeAll(const std::vector<FileToWrite>& files, std::string& why) {
  std::vector<std::string> targets, temps, previous(files.size());
  std::vector<bool> existed(files.size(), false);
  auto discard = [&temps]() {
    for (const std::string& t : temps)
      if (!t.empty()) ::unlink(t.c_str());
  };
  for (std::size_t i = 0; i < files.size(); ++i) {
    const FileToWrite& f = files[i];
    const std::string target = finalTargetOf(f.path);
    // New files get what the user's mask allows; a file replaced keeps its own.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode_t mode = 0666 & ~mask;
    struct stat st;
    if (::stat(target.c_str(), &st) == 0) {
      if (!S_ISREG(st.st_mode)) {
        why = f.path + ": cannot write: not a regular file";
        discard();
        return false;
      }
      mode = st.st_mode & 07777;
      existed[i] = true;
    }
    std::string temp;
    if (!writeTemporary(target, shownName(f.path, target), f.data, f.size, mode, temp, why)) {
      discard();
      return false;
    }
    targets.push_back(target);
    temps.push_back(temp);
  }
  // The files to go back to, should the renames be cut short. A file already
  // at the backup's name is never removed here: the caller clears its own.
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!files[i].keepPrevious || !existed[i]) continue;
    const std::string prev = targets[i] + ".prev";
    if (!step("link")) throw Stopped{};
    if (::link(targets[i].c_str(), prev.c_str()) != 0) {
      why = files[i].path + ": cannot keep the previous file as " + prev + ": " + systemReason(errno);
      for (const std::string& made : previous)
        if (!made.empty()) ::unlink(made.c_str());
      discard();
      return false;
    }
    previous[i] = prev;
  }
  std::set<std::string> folders;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!step("rename")) throw Stopped{};
    if (std::rename(temps[i].c_str(), targets[i].c_str()) != 0) {
      why = shownName(files[i].path, targets[i]) + ": cannot put the saved file in place: " + systemReason(errno);
      discard();
      // The files already in place go back to what they were, so that a
      // failed save leaves the whole of the previous one, as it found it.
      for (std::size_t j = 0; j < i; ++j) {
        if (!previous[j].empty()) {
          if (std::rename(previous[j].c_str(), targets[j].c_str()) == 0) previous[j].clear();
        } else if (!existed[j]) {
          ::unlink(targets[j].c_str());
        }
        folders.insert(folderOf(targets[j]));
      }
      for (std::size_t j = i; j < files.size(); ++j)
        if (!previous[j].empty() && ::unlink(previous[j].c_str()) == 0) previous[j].clear();
      std::string ignored;
      for (const std::string& folder : folders) syncFolder(folder, ignored);
      return false;
    }
    temps[i].clear();
    folders.insert(folderOf(targets[i]));
  }
  // The renames last only once their folders are on disk.
  for (const std::string& folder : folders)
    if (!syncFolder(folder, why)) return false;
  for (const std::string& prev : previous) {
    if (prev.empty()) continue;
    if (!step("unlink")) throw Stopped{};
    ::unlink(prev.c_str());
  }
  return true;
}

} // namespace

bool writeFilesAtomically(const std::vector<FileToWrite>& files, std::string& why) {
  stepNumber = 0;
  try {
    return writeAll(files, why);
  } catch (const Stopped&) {
    why = "the save was stopped";
    return false;
  }
}

void setSaveStepHook(SaveStepHook hook, void* context) {
  stepHook = hook;
  stepContext = context;
}

bool writeFileAtomically(const std::string& path, const std::string& bytes, std::string& why) {
  return writeFilesAtomically({{path, bytes.data(), bytes.size()}}, why);
}

bool probeReplace(const std::string& path, std::string& why) {
  const std::string target = finalTargetOf(path), shown = shownName(path, target);
  struct statx file, folder;
  if (::statx(AT_FDCWD, target.c_str(), 0, STATX_TYPE | STATX_MNT_ID, &file) == 0) {
    if (!S_ISREG(file.stx_mode)) {
      why = shown + ": cannot write: not a regular file";
      return false;
    }
    // A rename cannot replace a file the system holds fixed, nor one that
    // another mount puts there (a bind mount of the file itself).
    if (file.stx_attributes & (STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND)) {
      why = shown + ": cannot write: " + systemReason(EPERM) +
            ((file.stx_attributes & STATX_ATTR_IMMUTABLE) ? " (the file is immutable)" : " (the file is append-only)");
      return false;
    }
    if (::statx(AT_FDCWD, folderOf(target).c_str(), 0, STATX_MNT_ID, &folder) == 0 &&
        (file.stx_mask & folder.stx_mask & STATX_MNT_ID) && file.stx_mnt_id != folder.stx_mnt_id) {
      why = shown + ": cannot write: " + systemReason(EBUSY) + " (a file system is mounted on it)";
      return false;
    }
  }
  std::string temp;
  const int fd = createBeside(target, shown, temp, why);
  if (fd < 0) return false;
  ::close(fd);
  ::unlink(temp.c_str());
  return true;
}
