#include "host/stream/BoundedRead.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

bool readBoundedFile(const std::string& path, std::size_t maxBytes, std::string& text, std::string& why) {
  // Opened without waiting, so that a pipe with no writer cannot hold the open.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    why = "cannot open: " + std::string(std::strerror(errno));
    return false;
  }
  struct stat st;
  if (::fstat(fd, &st) != 0 || !S_ISREG(st.st_mode)) {
    why = "not a regular file";
    ::close(fd);
    return false;
  }
  if (static_cast<unsigned long long>(st.st_size) > maxBytes) {
    why = "larger than " + std::to_string(maxBytes >> 20) + " MB";
    ::close(fd);
    return false;
  }
  text.assign(static_cast<std::size_t>(st.st_size), '\0');
  std::size_t got = 0;
  while (got < text.size()) {
    const ssize_t n = ::read(fd, text.data() + got, text.size() - got);
    if (n < 0 && errno == EINTR) continue;
    if (n < 0) {
      why = "cannot read: " + std::string(std::strerror(errno));
      ::close(fd);
      return false;
    }
    if (n == 0) break; // the file shrank while it was read
    got += static_cast<std::size_t>(n);
  }
  text.resize(got);
  ::close(fd);
  return true;
}
