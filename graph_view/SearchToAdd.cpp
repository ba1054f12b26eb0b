// Search to add: a field over the view that lists the effect templates
// whose names match what is typed, and lays the chosen one over a node.
#include "graph_view/SearchToAdd.h"

#include <algorithm>

#include "graph_view/TemplateDrops.h"
#include "graph_view/TemplateSearch.h"
#include "graph_view/ViewHost.h"
#include "graph_view/ViewNotice.h"
#include "host/render/EffectTemplateManager.h"

namespace {
constexpr int rowHeight = 18;
constexpr int shownRows = 8;
// Longer than any template's name; a key past it is refused, at no cost,
// with a note in the field.
constexpr std::size_t longestQuery = 256;
} // namespace

SearchToAdd::SearchToAdd(FXGraphView& view) : ViewPart(view) {}

SearchToAdd::~SearchToAdd() = default;

const SearchToAdd::Search* SearchToAdd::search() const noexcept {
  return view_.interaction().kind == Interaction::searching ? &search_ : nullptr;
}

bool SearchToAdd::open(const std::wstring& text) {
  if (!view_.beginInteraction(Interaction::searching)) return false;
  search_ = Search();
  search_.query = text;
  // The node it will add to: under the mouse, else the one in focus.
  const XY<int> mouse = view_.mousePosition();
  search_.at = mouse;
  for (const auto& n : view_.nodes()) {
    int index = 0;
    if (n->isVisibleFlag() && n->translateMouseEvent(mouse.x, mouse.y, index) != FXGraphViewNode::eNothing) {
      search_.target = n->getNodeID();
      break;
    }
  }
  // Else a wire under the mouse, else the node in focus.
  const IdStamp focus = view_.keyboardFocus();
  if (!search_.target.valid() && !view_.drops().wireAt(mouse, search_.wire) && focus.valid() &&
      view_.findViewRecForNode(focus))
    search_.target = focus;
  updateResults();
  view_.redraw();
  return true;
}

void SearchToAdd::close() {
  if (!search()) return;
  view_.endInteraction();
  search_ = Search();
  view_.redraw();
}

// The templates are gathered, and their names folded, once as the field
// opens: each key typed only ranks them again.
struct SearchToAdd::Templates {
  std::vector<EffectTemplateSummary> all;
  TemplateSearch::Catalogue catalogue;

  static std::shared_ptr<const Templates> gather(const TemplateMatcher& matcher) {
    std::vector<EffectCategory> categories;
    TheEffectTemplateManager::Instance().getCategories(categories, matcher, 1);
    std::vector<EffectTemplateSummary> all;
    std::vector<std::wstring> names;
    for (const EffectCategory& c : categories)
      for (const EffectTemplateSummary& t : c.templates) {
        all.push_back(t);
        names.emplace_back(t.name.str());
      }
    return std::make_shared<const Templates>(Templates{std::move(all), TemplateSearch::Catalogue(names)});
  }
};

void SearchToAdd::updateResults() {
  // The panel says which templates are on offer; a view on its own offers all.
  static const TemplateMatcher everything;
  if (!search_.templates)
    search_.templates = Templates::gather(view_.host_ ? view_.host_->searchMatcher() : everything);
  search_.results.clear();
  for (std::size_t i : search_.templates->catalogue.rank(search_.query))
    search_.results.push_back(search_.templates->all[i]);
  search_.chosen = search_.results.empty() ? -1 : 0;
}

bool SearchToAdd::key(const Event& e) {
  if (!search()) return false;
  switch (e.key) {
  case Event::keyEscape:
  case Event::keyTab:
    close();
    return true;
  case Event::arrowUp:
    if (search_.chosen > 0) --search_.chosen;
    view_.redraw();
    return true;
  case Event::arrowDown:
    if (search_.chosen + 1 < static_cast<int>(search_.results.size())) ++search_.chosen;
    view_.redraw();
    return true;
  case Event::keyBackspace:
    if (!search_.query.empty()) search_.query.pop_back();
    search_.full = false;
    updateResults();
    view_.redraw();
    return true;
  case Event::keyReturn: {
    const Search done = search_;
    close();
    if (done.chosen < 0) {
      view_.notice().say(L"No effect matches \"" + LightweightString<wchar_t>(done.query) + L"\"");
      return true;
    }
    const EffectTemplateSummary& chosen = done.results[static_cast<std::size_t>(done.chosen)];
    if (done.target.valid())
      view_.insertTemplateAbove(chosen, done.target);
    else if (done.wire.to)
      view_.drops().insertOnWire(chosen, done.wire);
    else
      view_.notice().say(L"Nothing to add the effect to: open the search over a node or a wire, or give a node "
                         L"the focus");
    return true;
  }
  default:
    // Text: any character that is not a control one.
    if (e.key >= 32 && e.key != 127 && e.key < 0x110000 && !(e.key >= 0xD800 && e.key < 0xE000)) {
      if (search_.query.size() < longestQuery) {
        search_.query += static_cast<wchar_t>(e.key);
        updateResults();
        view_.redraw();
      } else if (!search_.full) {
        search_.full = true;
        view_.redraw();
      }
    }
    // The field has the keyboard: nothing typed reaches anyone else.
    return true;
  }
}

FXGraphView::PixelBox SearchToAdd::box() const {
  const auto w = view_.getWindowPos();
  const int width = std::min(300, w.x1 - w.x0 - 20);
  const int rows =
      1 + (search_.full ? 1 : 0) + std::min(shownRows, std::max(1, static_cast<int>(search_.results.size())));
  const int height = rows * rowHeight + 4;
  // Just below and right of where the mouse was, kept inside the view.
  const int x0 = std::clamp(search_.at.x + 12, w.x0 + 4, std::max(w.x0 + 4, w.x1 - 4 - width));
  const int y1 = std::clamp(search_.at.y - 12, std::min(w.y1 - 4, w.y0 + 4 + height), w.y1 - 4);
  return {x0, y1 - height, x0 + width, y1};
}

void SearchToAdd::draw() {
  if (!search()) return;
  // What the choice will go into.
  TemplateDrops::Target target;
  target.node = search_.target;
  target.wire = search_.wire;
  view_.drops().light(target);
  using PixelBox = FXGraphView::PixelBox;
  const PixelBox box = this->box();
  if (!view_.drawArea(box)) return;
  {
    CanvasRenderer r = view_.canvas().renderer();
    r.renderPrimitive(Glib::RectDescription{box, fromColour(view_.getPalette().window(1))});
    r.renderPrimitive(Glib::FrameDescription{box, fromColour(view_.getPalette().text()), 1});
    r.addModifiedArea(box);
  }
  // The query, then the results: the chosen one on a highlight. The list
  // scrolls so that the chosen one shows.
  int y = box.y1 - 2 - rowHeight;
  const std::wstring prompt = L"Add: " + search_.query + L"_";
  view_.drawText({box.x0 + 6, y, box.x1 - 6, y + rowHeight}, LightweightString<wchar_t>(prompt),
                 view_.getPalette().text(), {});
  if (search_.full) {
    y -= rowHeight;
    view_.drawText(
        {box.x0 + 12, y, box.x1 - 6, y + rowHeight},
        LightweightString<wchar_t>(L"The search takes " + std::to_wstring(longestQuery) + L" characters at most"),
        view_.getPalette().text(), {});
  }
  if (search_.results.empty()) {
    y -= rowHeight;
    view_.drawText({box.x0 + 12, y, box.x1 - 6, y + rowHeight}, LightweightString<wchar_t>(L"No effect matches"),
                   view_.getPalette().text(), {});
    return;
  }
  const int first = std::max(0, search_.chosen - shownRows + 1);
  for (int i = first; i < static_cast<int>(search_.results.size()) && i < first + shownRows; ++i) {
    y -= rowHeight;
    const PixelBox row{box.x0 + 2, y, box.x1 - 2, y + rowHeight};
    if (i == search_.chosen) {
      CanvasRenderer r = view_.canvas().renderer();
      r.renderPrimitive(Glib::RectDescription{row, fromColour(Colour(0.25, 0.45, 0.8))});
      r.addModifiedArea(row);
    }
    view_.drawText({row.x0 + 10, row.y0, row.x1 - 4, row.y1}, search_.results[static_cast<std::size_t>(i)].name,
                   i == search_.chosen ? Colour(1, 1, 1) : view_.getPalette().text(), {});
  }
}
