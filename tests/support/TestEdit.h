#pragma once
// Edits built in code for tests.
#include <vector>

#include "host/edit/Edit.h"
#include "host/edit/GraphNodeKinds.h"

namespace testsupport {

// Builds an edit in code: graph nodes, and video channels whose one cel
// (from 0 to 10 seconds) shows the graph under a head node.
class EditBuilder {
public:
  EditBuilder();
  EditPtr edit() const { return edit_; }
  Edit* operator->() const { return edit_.get(); }

  Ux::Ptr<EffectInstance> effect(const IdStamp& id, const char* tag, std::vector<IdStamp> inputs = {},
                                 const wchar_t* name = L"fx");
  Ux::Ptr<MaterialUsageNode> material(const IdStamp& id, const wchar_t* name = L"clip");
  Ux::Ptr<ImageImportEffect> image(const IdStamp& id, const char* file);
  Ux::Ptr<AliasedInputEffect> alias(const IdStamp& id, const IdStamp& input);
  Ux::Ptr<ComplexBackgroundEffect> matte(const IdStamp& id, ComplexBackgroundEffect::Mode mode);
  void channel(const IdStamp& id, const wchar_t* name, const IdStamp& head);

private:
  EditPtr edit_;
};

// A built edit that is closed when the test is done with it (closing breaks
// the edit <-> bound object references).
class ScopedEdit : public EditBuilder {
public:
  ScopedEdit() = default;
  ~ScopedEdit() { edit()->close(); }
  ScopedEdit(const ScopedEdit&) = delete;
  ScopedEdit& operator=(const ScopedEdit&) = delete;
};

} // namespace testsupport
