#pragma once
#include <cstddef>
#include <iterator>

#include "host/FxHostApi.h"

class DLList;

// A link of an intrusive doubly linked list. A record belongs to at most one
// list at a time.
class FXHOST_API DLListRec {
public:
  DLListRec() noexcept = default;
  // Copies are unlinked: links belong to the list, not to the value.
  DLListRec(const DLListRec&) noexcept {}
  DLListRec& operator=(const DLListRec&) noexcept { return *this; }
  virtual ~DLListRec();

  virtual bool operator==(const DLListRec& other) const { return this == &other; }

  DLListRec* next() const noexcept { return next_; }
  DLListRec* prev() const noexcept { return prev_; }
  DLList* list() const noexcept { return list_; }
  bool isLinked() const noexcept { return list_ != nullptr; }

protected:
  friend class DLList;
  // An owning list calls these when it takes a record and when it destroys
  // one. Reference-counted records override them to hold a reference
  // instead of being deleted outright.
  virtual void adoptedByList() {}
  virtual void disposeFromList() { delete this; }

private:
  DLListRec* prev_ = nullptr;
  DLListRec* next_ = nullptr;
  DLList* list_ = nullptr;
};

// Intrusive doubly linked list. An owning list destroys its records when they
// are destroyed through it and when the list is flushed or destroyed; a
// non-owning list only links them.
class FXHOST_API DLList {
public:
  explicit DLList(bool owning = true) noexcept : owning_(owning) {}
  DLList(const DLList&) = delete;
  DLList& operator=(const DLList&) = delete;
  ~DLList();

  bool owning() const noexcept { return owning_; }
  std::size_t size() const noexcept { return size_; }
  bool empty() const noexcept { return size_ == 0; }
  DLListRec* head() const noexcept { return head_; }
  DLListRec* tail() const noexcept { return tail_; }
  bool contains(const DLListRec* rec) const noexcept { return rec && rec->list_ == this; }

  // Appends a record that is in no list; returns false otherwise.
  bool append(DLListRec* rec);
  // Unlinks a member without destroying it; false for a non-member.
  bool remove(DLListRec* rec);
  // Unlinks a member and, in an owning list, destroys it.
  bool destroy(DLListRec* rec);
  // Unlinks every record, destroying them in an owning list.
  void flush();

  template <class T>
  class Range;
  template <class T>
  Range<T> as() const noexcept {
    return Range<T>(head_);
  }

private:
  DLListRec* head_ = nullptr;
  DLListRec* tail_ = nullptr;
  std::size_t size_ = 0;
  bool owning_;
};

// Iteration over a list whose records are all of type T.
template <class T>
class DLList::Range {
public:
  class iterator {
  public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T*;
    using difference_type = std::ptrdiff_t;
    using pointer = T**;
    using reference = T*;
    explicit iterator(DLListRec* r) noexcept : r_(r) {}
    T* operator*() const noexcept { return static_cast<T*>(r_); }
    iterator& operator++() noexcept {
      r_ = r_->next();
      return *this;
    }
    bool operator==(const iterator& o) const noexcept { return r_ == o.r_; }

  private:
    DLListRec* r_;
  };
  explicit Range(DLListRec* head) noexcept : head_(head) {}
  iterator begin() const noexcept { return iterator(head_); }
  iterator end() const noexcept { return iterator(nullptr); }

private:
  DLListRec* head_;
};
