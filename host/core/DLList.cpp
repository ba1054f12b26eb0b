#include "host/core/DLList.h"

DLListRec::~DLListRec() {
  // A record destroyed while linked (a non-owning list, or a stray delete)
  // must not leave the list pointing at freed memory.
  if (list_) list_->remove(this);
}

DLList::~DLList() { flush(); }

bool DLList::append(DLListRec* rec) {
  if (!rec || rec->list_) return false;
  rec->prev_ = tail_;
  rec->next_ = nullptr;
  rec->list_ = this;
  if (tail_)
    tail_->next_ = rec;
  else
    head_ = rec;
  tail_ = rec;
  ++size_;
  if (owning_) rec->adoptedByList();
  return true;
}

bool DLList::remove(DLListRec* rec) {
  if (!contains(rec)) return false;
  if (rec->prev_)
    rec->prev_->next_ = rec->next_;
  else
    head_ = rec->next_;
  if (rec->next_)
    rec->next_->prev_ = rec->prev_;
  else
    tail_ = rec->prev_;
  rec->prev_ = rec->next_ = nullptr;
  rec->list_ = nullptr;
  --size_;
  return true;
}

bool DLList::destroy(DLListRec* rec) {
  if (!remove(rec)) return false;
  if (owning_) rec->disposeFromList();
  return true;
}

void DLList::flush() {
  while (head_) destroy(head_);
}
