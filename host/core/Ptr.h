#pragma once
#include <cstddef>
#include <functional>
#include <utility>

namespace Ux {

// Intrusive counted pointer over any type with incRefCount() / decRefCount()
// (every iObject). Holding one keeps the object alive.
template <class T>
class Ptr {
public:
  Ptr() noexcept = default;
  Ptr(std::nullptr_t) noexcept {}
  Ptr(T* p) noexcept : p_(p) { acquire(); }
  Ptr(const Ptr& o) noexcept : p_(o.p_) { acquire(); }
  Ptr(Ptr&& o) noexcept : p_(std::exchange(o.p_, nullptr)) {}
  template <class U>
  Ptr(const Ptr<U>& o) noexcept : p_(o.get()) {
    acquire();
  }
  ~Ptr() { releaseRef(); }

  Ptr& operator=(const Ptr& o) noexcept {
    Ptr(o).swap(*this);
    return *this;
  }
  Ptr& operator=(Ptr&& o) noexcept {
    Ptr(std::move(o)).swap(*this);
    return *this;
  }
  Ptr& operator=(T* p) noexcept {
    Ptr(p).swap(*this);
    return *this;
  }

  void reset() noexcept { Ptr().swap(*this); }
  void swap(Ptr& o) noexcept { std::swap(p_, o.p_); }

  T* get() const noexcept { return p_; }
  T* operator->() const noexcept { return p_; }
  T& operator*() const noexcept { return *p_; }
  explicit operator bool() const noexcept { return p_ != nullptr; }

  friend bool operator==(const Ptr& a, const Ptr& b) noexcept { return a.p_ == b.p_; }
  friend bool operator==(const Ptr& a, std::nullptr_t) noexcept { return a.p_ == nullptr; }
  friend bool operator==(const Ptr& a, const T* b) noexcept { return a.p_ == b; }
  friend bool operator<(const Ptr& a, const Ptr& b) noexcept { return std::less<T*>()(a.p_, b.p_); }

private:
  void acquire() const noexcept {
    if (p_) p_->incRefCount();
  }
  void releaseRef() noexcept {
    if (p_) p_->decRefCount();
    p_ = nullptr;
  }
  T* p_ = nullptr;
};

// The object as a U, or an empty pointer when it is not one.
template <class U, class T>
Ptr<U> dynamicCast(const Ptr<T>& p) noexcept {
  return Ptr<U>(dynamic_cast<U*>(p.get()));
}

} // namespace Ux
