#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/render/EffectCategory.h"
#include "host/ui/DragDrop.h"
#include "host/ui/StandardPanel.h"

class ScrollBar;
class Vob;

// What the effects browser gives away when a template is dragged out of it.
class FXHOST_API EffectTemplateDragItem : public DragDropItem {
public:
  static constexpr const char* kindName = "EffectTemplate";
  explicit EffectTemplateDragItem(const EffectTemplateSummary& summary);
  ~EffectTemplateDragItem() override;
  const EffectTemplateSummary& summary() const noexcept { return summary_; }

private:
  EffectTemplateSummary summary_;
};

// A list of effect templates to drag onto an edit. View type 1 shows each
// category as a heading with its templates under it, and a click on a
// heading folds the category away or opens it again; view type 0 lists the
// templates alone. The list scrolls with its scroll bar and the wheel. A left
// press selects a template; pressing and moving drags it out
// (EffectTemplateDragItem) to any DragDropDestination.
//
// What it lists comes from getCategories(), first asked when the browser is
// first drawn or used (not in the constructor, so that a subclass's override
// is the one asked) and again at refresh().
class FXHOST_API EffectsBrowser : public Glob {
public:
  struct FXHOST_API InitArgs : StandardPanel::InitArgs {
    InitArgs(Vob* vob, int viewType, int flags, uint16_t width, uint16_t height);
    Vob* vob;     // the player whose edit the templates are for; not owned
    int viewType; // 1 headings and templates, 0 templates only
    int flags;    // kept for the owner; this host's browser has no options
  };
  enum ViewType { templatesOnly = 0, byCategory = 1 };

  explicit EffectsBrowser(const InitArgs& args);
  ~EffectsBrowser() override;

  // The categories to list, with their templates. By default those of the
  // effect template manager that hold any template.
  virtual void getCategories(std::vector<EffectCategory>& out);
  // Asks getCategories() again and redraws.
  void refresh(bool redrawNow = true);

  Vob* getVob() const noexcept { return vob_; }
  int getViewType() const noexcept { return viewType_; }
  int getFlags() const noexcept { return flags_; }

  // The listed categories, as getCategories() gave them.
  const std::vector<EffectCategory>& categories();
  // Rows, from 0 at the top of the list: a heading or a template.
  int rowCount();
  // The row at a point of the browser, or -1.
  int rowAt(XY<int> position);
  // The template at a point of the browser; null for a heading or nothing.
  const EffectTemplateSummary* templateAt(XY<int> position);
  // A row's box in the browser's pixels; empty when it is scrolled out of view.
  PixelBox rowBox(int row);
  bool isCollapsed(int category) const;
  void setCollapsed(int category, bool collapsed, bool redrawNow);
  int getFirstVisibleRow() const noexcept { return firstRow_; }
  void scrollToRow(int row, bool redrawNow);
  // The selected template, or null.
  const EffectTemplateSummary* getSelectedTemplate();
  const ScrollBar& scrollBar() const noexcept { return *scrollBar_; }

  void resize(double w, double h) override;
  bool handleMouseEvent(const Event& e) override;
  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  void draw() override;
  LightweightString<char> idstring() const override { return "EffectsBrowser"; }

private:
  struct Row {
    int category;
    int item; // -1 for the category's heading
  };
  void ensureContent();
  void buildRows();
  int visibleRowCount() const;
  int listWidth() const;
  void updateScrollBar();
  const EffectTemplateSummary* summaryOf(const Row& row) const;

  Vob* vob_;
  int viewType_;
  int flags_;
  bool gathered_ = false;
  std::vector<EffectCategory> categories_;
  std::vector<LightweightString<wchar_t>> collapsed_; // by category name, kept over refreshes
  std::vector<Row> rows_;
  ScrollBar* scrollBar_ = nullptr; // a child
  int firstRow_ = 0;
  Row selected_{-1, -1};
  int pressedRow_ = -1; // the template row a left press went down on
  bool dragging_ = false;
};
