#include "app/OutOfMemory.h"

#include <cstdlib>
#include <new>

namespace fxgraph {
namespace {

void* reserve = nullptr;

void onFailure() {
  if (reserve) {
    std::free(reserve);
    reserve = nullptr;
  }
  // Failing now, rather than retrying into the reserve, stops the work at
  // the first sign and leaves the reserve to the unwinding.
  std::set_new_handler(nullptr);
  throw std::bad_alloc();
}

} // namespace

void OutOfMemory::install(std::size_t reserveBytes) {
  reserve = std::malloc(reserveBytes);
  std::set_new_handler(onFailure);
}

const char* OutOfMemory::message() noexcept { return "fxgraph: the edit is too large for the memory there is\n"; }

} // namespace fxgraph
