#pragma once
#include <atomic>

#include "host/FxHostApi.h"

// Base of every reference-counted host object. A new object starts with no
// references; the first Ux::Ptr takes one and the last one to go deletes it.
// Objects are released by dropping references, never deleted directly.
class FXHOST_API iObject {
public:
  iObject() noexcept = default;
  // A copy is a new object: it does not share the source's references.
  iObject(const iObject&) noexcept {}
  iObject& operator=(const iObject&) noexcept { return *this; }
  virtual ~iObject();

  void incRefCount() const noexcept { refs_.fetch_add(1, std::memory_order_relaxed); }
  // Returns the count left; deletes the object when it reaches zero.
  int decRefCount() const noexcept;
  int refCount() const noexcept { return refs_.load(std::memory_order_relaxed); }

private:
  mutable std::atomic<int> refs_{0};
};
