#include "host/ui/EffectsBrowser.h"

#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "host/render/EffectTemplateManager.h"
#include "tests/support/UiScreen.h"

using namespace testsupport;

namespace {

class TrackTypeMatcher : public TemplateMatcher {
public:
  explicit TrackTypeMatcher(int trackType) : trackType_(trackType) {}
  bool match(const EffectTemplateSummary& s) const override {
    return s.trackType == trackType_ && TemplateMatcher::match(s);
  }

private:
  int trackType_;
};

// Takes effect templates dropped on it.
class DropTarget : public Glob, public DragDropDestination {
public:
  explicit DropTarget(XY<int> size) : Glob(size) {}
  bool canAcceptDrop(const DragDropItem& item, XY<int>) override {
    return item.kind() == EffectTemplateDragItem::kindName;
  }
  bool acceptDrop(const DragDropItem& item, XY<int> position) override {
    dropped.push_back(static_cast<const EffectTemplateDragItem&>(item).summary().tagTypeId.str());
    at = position;
    return true;
  }
  void dragHover(const DragDropItem* item, XY<int>) override { hovering = item != nullptr; }

  std::vector<std::string> dropped;
  XY<int> at;
  bool hovering = false;
};

using Browser = UiTest;

// The middle of the row listing a template, on the screen.
XY<int> templateOnScreen(EffectsBrowser& browser, const char* tag) {
  for (int row = 0; row < browser.rowCount(); ++row) {
    const Glob::PixelBox b = browser.rowBox(row);
    const XY<int> middle{(b.x0 + b.x1) / 2, (b.y0 + b.y1) / 2};
    const EffectTemplateSummary* s = browser.templateAt(middle);
    if (s && s->tagTypeId == tag) return onScreen(browser, middle);
  }
  ADD_FAILURE() << tag << " is not in view";
  return {};
}

} // namespace

TEST(EffectTemplates, TheMatcherAndTheFlagChooseCategoriesAndTheManagerIsOneForAllThreads) {
  std::vector<EffectCategory> video, every;
  EffectTemplateManager::instance().getCategories(video, TrackTypeMatcher(1), EffectTemplateManager::withTemplatesOnly);
  EffectTemplateManager::instance().getCategories(every, TrackTypeMatcher(1), 0);
  std::vector<std::wstring> names;
  for (const auto& c : video) names.push_back(c.name.str());
  EXPECT_EQ(names, (std::vector<std::wstring>{L"Mixes", L"Compositing", L"Colour", L"Mattes", L"Blurs"}));
  ASSERT_EQ(video[0].templates.size(), 2u);
  EXPECT_EQ(video[0].templates[1].name, L"Wipe");
  EXPECT_TRUE(every.back().templates.empty()) << "an audio category, kept without the flag";
  EffectTemplateManager::instance().addTemplate({L"Meter", "meter", L"Mixes", 2, 1, {L"Input"}});

  // A manager made again, by whichever thread comes first, is one for all
  // and starts from the host's own catalogue.
  EffectTemplateManager::release();
  std::vector<EffectTemplateManager*> seen(8, nullptr);
  std::vector<std::thread> threads;
  for (auto& s : seen) threads.emplace_back([&s] { s = &EffectTemplateManager::instance(); });
  for (auto& t : threads) t.join();
  EXPECT_EQ(std::set<EffectTemplateManager*>(seen.begin(), seen.end()).size(), 1u);
  EXPECT_EQ(seen[0]->templateCount(), 13u);
  EffectTemplateSummary found;
  EXPECT_FALSE(EffectTemplateManager::instance().findTemplate("meter", found));
  ASSERT_TRUE(EffectTemplateManager::instance().findTemplate("\\ZMV\\AUD\\FX\\XF", found));
  EXPECT_EQ(found.trackType, 2);
}

TEST_F(Browser, ATemplateDraggedOntoADestinationIsDroppedThere) {
  auto* browser = new EffectsBrowser(EffectsBrowser::InitArgs(nullptr, 1, 0, 13 * 22, 330));
  root->addChild(browser, Glob::TopLeft(0, 0));
  auto* target = new DropTarget({120, 120});
  root->addChild(target, Glob::BottomRight(10, 10));

  const XY<int> wipe = templateOnScreen(*browser, "wipe");
  press(wipe);
  ASSERT_NE(browser->getSelectedTemplate(), nullptr);
  EXPECT_EQ(browser->getSelectedTemplate()->tagTypeId, "wipe");
  EXPECT_EQ(GlobManager::draggedItem(), nullptr) << "a press alone drags nothing";
  moveTo(wipe + XY<int>{8, 0});
  ASSERT_NE(GlobManager::draggedItem(), nullptr);
  EXPECT_EQ(GlobManager::draggedItem()->label(), L"Wipe");
  moveTo(centreOf(*target));
  EXPECT_TRUE(target->hovering);
  release(centreOf(*target));
  EXPECT_EQ(target->dropped, std::vector<std::string>{"wipe"});
  EXPECT_EQ(target->at, (XY<int>{60, 60}));
  EXPECT_FALSE(target->hovering);
  EXPECT_EQ(GlobManager::draggedItem(), nullptr);

  // Let go over something that takes no drops, or after escape: nothing happens.
  press(wipe);
  moveTo(wipe + XY<int>{8, 0});
  release(root->screenPos() + XY<int>{400, 300});
  EXPECT_EQ(GlobManager::draggedItem(), nullptr);
  press(templateOnScreen(*browser, "pip"));
  moveTo(centreOf(*target));
  EXPECT_TRUE(target->hovering);
  key(27);
  EXPECT_FALSE(target->hovering);
  release(centreOf(*target));
  EXPECT_EQ(target->dropped.size(), 1u);
}
