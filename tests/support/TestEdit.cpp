#include "tests/support/TestEdit.h"

#include "host/edit/GraphNodeKinds.h"

namespace testsupport {

ScopedEdit::ScopedEdit(std::initializer_list<IdStamp> nodes) : edit_(new Edit(Cookie::generate(), L"Test edit")) {
  for (const IdStamp& id : nodes) addNode(id);
}

ScopedEdit::~ScopedEdit() {
  edit_->close();
}

Ux::Ptr<FXGraphNodeBase> ScopedEdit::addNode(const IdStamp& id) {
  Ux::Ptr<FXGraphNodeBase> node(new MaterialUsageNode(id, L"node", MaterialUsageNode::Media::testCard, "bars"));
  edit_->getTagBag().addObject(id, node);
  return node;
}

} // namespace testsupport
