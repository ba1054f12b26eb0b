#include "host/stream/AtomicFiles.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

namespace {

bool writeSynced(const std::string& path, const void* data, std::size_t size, std::string& why) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (fd < 0) {
    why = path + ": cannot create: " + std::strerror(errno);
    return false;
  }
  const char* p = static_cast<const char*>(data);
  bool ok = true;
  while (size > 0) {
    const ssize_t n = ::write(fd, p, size);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      ok = false;
      break;
    }
    p += n;
    size -= static_cast<std::size_t>(n);
  }
  const int writeErrno = errno;
  if (ok && ::fsync(fd) != 0) ok = false;
  if (::close(fd) != 0) ok = false;
  if (!ok) why = path + ": cannot write: " + std::strerror(writeErrno ? writeErrno : errno);
  return ok;
}

} // namespace

bool writeFilesAtomically(const std::vector<FileToWrite>& files, std::string& why) {
  std::vector<std::string> temps;
  auto discard = [&temps]() {
    for (const std::string& t : temps) ::unlink(t.c_str());
  };
  for (const FileToWrite& f : files) {
    temps.push_back(f.path + ".tmp");
    if (!writeSynced(temps.back(), f.data, f.size, why)) {
      discard();
      return false;
    }
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (std::rename(temps[i].c_str(), files[i].path.c_str()) != 0) {
      why = files[i].path + ": cannot put the saved file in place: " + std::strerror(errno);
      discard();
      return false;
    }
  }
  return true;
}
