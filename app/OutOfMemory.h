#pragma once
#include <cstddef>

namespace fxgraph {

// Running out of memory ends the program with one line instead of a crash.
// A reserve is held from the start; the first allocation that fails gives
// it back and throws std::bad_alloc, so that the objects the throw unwinds
// through have room to go (a large document needs memory to be taken
// apart), and main reports it. Meant for address-space limits (ulimit -v),
// where an allocation fails rather than the system ending the process.
class OutOfMemory {
public:
  static void install(std::size_t reserveBytes = std::size_t(192) << 20);
  // What main prints before it leaves.
  static const char* message() noexcept;
};

} // namespace fxgraph
