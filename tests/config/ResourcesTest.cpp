#include "host/config/Resources.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "host/draw/UxImage.h"

TEST(Resources, TheStringTableHoldsTheEditorsTexts) {
  const std::pair<int, const wchar_t*> texts[] = {
      {10007, L"missing"},       {10052, L"Video"},        {10869, L"Auto position"},
      {11111, L"Redo"},          {11129, L"Undo"},         {11285, L"This can only be done on the record machine"},
      {11402, L"Tidy"},          {11587, L"Effect graph"}, {11779, L"Left to right"},
      {11780, L"Bottom to top"},
  };
  for (const auto& [id, text] : texts) EXPECT_EQ(resourceStrW(id), text) << id;
  EXPECT_EQ(resourceStr(11587), "Effect graph");

  EXPECT_TRUE(resourceStrW(noResource).empty());
  EXPECT_TRUE(hasResource(noResource));
  EXPECT_FALSE(hasResource(12345));
  EXPECT_NE(resourceStrW(12345).view().find(L"12345"), std::wstring_view::npos) << "unknown ids show";

  EXPECT_EQ(paddedResourceStrW(10007, "<", ">"), L"<missing>");
  EXPECT_EQ(paddedResourceStrW(11587, L"", L" : "), L"Effect graph : ");
}

TEST(Resources, IconsComeFromTheBundleOrTheFolderNamedInTheEnvironment) {
  ::unsetenv("FXGRAPH_ICON_DIR");
  for (const char* name : {"GallNav.png", "undo.png", "redo.png"}) {
    const LightweightString<char> path = getIconPath(name);
    EXPECT_EQ(path, LightweightString<char>(FXGRAPH_SOURCE_DIR "/resources/icons/") + name);
    std::string why;
    const Ux::Ptr<UxImage> icon = UxImage::loadPNG(path.str(), &why);
    ASSERT_TRUE(icon) << name << ": " << why;
    EXPECT_EQ(icon->width(), 24);
    EXPECT_EQ(icon->height(), 24);
  }
  ::setenv("FXGRAPH_ICON_DIR", "/opt/theme/icons", 1);
  EXPECT_EQ(getIconPath("undo.png"), "/opt/theme/icons/undo.png");
  EXPECT_EQ(getIconPath("/abs/undo.png"), "/abs/undo.png");
  ::unsetenv("FXGRAPH_ICON_DIR");
}
