#pragma once
// A graph view on a headless screen, over an edit loaded from the examples
// or built in code, for tests of the view and its nodes.
#include <memory>
#include <string>
#include <vector>

#include "graph_view/FXGraphView.h"
#include "host/edit/GraphNodeKinds.h"

namespace testsupport {

// Builds an edit in code: graph nodes, and video channels whose one cel
// (from 0 to 10 seconds) shows the graph under a head node.
class EditBuilder {
public:
  EditBuilder();
  EditPtr edit() const { return edit_; }

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

// The screen, a vob on the edit and a view (realized, drawn) for the length
// of a test. Preferences go to a scratch file, and every view starts left to
// right.
class ViewFixture {
public:
  explicit ViewFixture(EditPtr edit, XY<int> size = {400, 300});
  ~ViewFixture();
  ViewFixture(const ViewFixture&) = delete;
  ViewFixture& operator=(const ViewFixture&) = delete;

  // An example edit (examples/<name>); fails the test when it does not load.
  static EditPtr loadExample(const std::string& name);

  FXGraphView& view() const { return *view_; }
  Vob& vob() const { return *vob_; }
  Ux::Ptr<FXGraphViewNode> node(const IdStamp& id) const { return view_->findViewRecForNode(id); }
  // Puts the node's centre at the middle of the view area at a scale of
  // 8 x maxNodeSize pixels per graph unit, and draws the view (which caches
  // every node's pixel box).
  void frame(const FXGraphViewNode& node, int maxNodeSize);
  // The middle of the view area, view pixels (where frame puts a node).
  XY<double> middle() const;

private:
  EditPtr edit_;
  std::unique_ptr<Vob> vob_;
  FXGraphView* view_ = nullptr; // the screen's root glob: deleted at shutdown
};

} // namespace testsupport
