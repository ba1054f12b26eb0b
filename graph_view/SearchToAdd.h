#pragma once
#include <memory>
#include <string>
#include <vector>

#include "graph_view/FXGraphView.h"
#include "graph_view/ViewPart.h"
#include "host/render/EffectTemplateSummary.h"

// Search to add: Tab (or a letter that is no command) opens a field at the
// mouse listing the effect templates whose names match what is typed,
// best first (TemplateSearch). Up and Down choose, Return lays the chosen
// effect over the node that was under the mouse when the field opened (as a
// template dropped on it), or into the wire there, or over the node in
// focus; what it will go into is lit while the field is open. Escape or
// Tab closes. The field is open while the view's
// interaction is `searching`.
class GRPHTOOL_API SearchToAdd : public ViewPart {
public:
  struct Templates; // the templates on offer, with their names prepared
  struct Search {
    std::shared_ptr<const Templates> templates; // as the field opened
    std::wstring query;
    std::vector<EffectTemplateSummary> results;
    int chosen = -1;   // -1: nothing matches
    bool full = false; // a key was refused: the query is as long as it may be
    IdStamp target;
    FXGraphView::WireRef wire; // else the wire under the mouse, to put the effect into
    XY<int> at;                // where the mouse was: the field opens there
  };

  explicit SearchToAdd(FXGraphView& view);
  ~SearchToAdd() override;

  // The field's state while it is open, else null.
  const Search* search() const noexcept;
  // Opens the field with some text typed; false when another gesture holds
  // the view.
  bool open(const std::wstring& text);
  void close();

  bool key(const Event& e) override;
  void draw() override;
  // Where the field is drawn (view pixels).
  FXGraphView::PixelBox box() const;

private:
  void updateResults();

  Search search_;
};
