#pragma once
#include <initializer_list>

#include "host/edit/Edit.h"
#include "host/edit/FXGraphNodeBase.h"

namespace testsupport {

// A live edit holding plain graph nodes, closed when the test is done with it
// (closing breaks the edit <-> bound object references).
class ScopedEdit {
public:
  explicit ScopedEdit(std::initializer_list<IdStamp> nodes = {});
  ~ScopedEdit();
  ScopedEdit(const ScopedEdit&) = delete;
  ScopedEdit& operator=(const ScopedEdit&) = delete;

  EditPtr ptr() const { return EditPtr(edit_); }
  Edit* operator->() const { return edit_.get(); }
  const Cookie& cookie() const { return edit_->getCookie(); }
  Ux::Ptr<FXGraphNodeBase> addNode(const IdStamp& id);
  bool removeNode(const IdStamp& id) { return edit_->getTagBag().removeObject(id); }

private:
  Ux::Ptr<Edit> edit_;
};

} // namespace testsupport
