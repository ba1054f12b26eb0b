#pragma once
// A graph view on a headless screen, over an edit loaded from the examples
// or built in code, for tests of the view and its nodes.
#include <memory>
#include <string>
#include <vector>

#include "graph_view/FXGraphView.h"
#include "tests/support/TestEdit.h"

namespace testsupport {

// The screen, a vob on the edit and a view (realized, drawn) for the length
// of a test. Preferences go to a scratch file, and every view starts left to
// right. Stills are made as the view draws unless `stillsInBackground`.
class ViewFixture {
public:
  explicit ViewFixture(EditPtr edit, XY<int> size = {400, 300}, bool stillsInBackground = false);
  ~ViewFixture();
  ViewFixture(const ViewFixture&) = delete;
  ViewFixture& operator=(const ViewFixture&) = delete;

  FXGraphView& view() const { return *view_; }
  Vob& vob() const { return *vob_; }
  Ux::Ptr<FXGraphViewNode> node(const IdStamp& id) const { return view_->findViewRecForNode(id); }
  // Puts the node's centre at the middle of the view area at a scale of
  // 8 x maxNodeSize pixels per graph unit, and draws the view (which caches
  // every node's pixel box).
  void frame(const FXGraphViewNode& node, int maxNodeSize);

private:
  EditPtr edit_;
  std::unique_ptr<Vob> vob_;
  FXGraphView* view_ = nullptr; // the screen's root glob: deleted at shutdown
};

} // namespace testsupport
