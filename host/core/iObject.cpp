#include "host/core/iObject.h"

iObject::~iObject() = default;

int iObject::decRefCount() const noexcept {
  const int left = refs_.fetch_sub(1, std::memory_order_acq_rel) - 1;
  if (left == 0) delete this;
  return left;
}
