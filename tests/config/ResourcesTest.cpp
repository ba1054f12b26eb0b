#include "host/config/Resources.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "host/draw/UxImage.h"

TEST(Resources, TheStringTableHoldsTheEditorsTexts) {
  EXPECT_EQ(resourceStrW(11779), L"Left to right");
  EXPECT_EQ(resourceStr(11587), "Effect graph");
  EXPECT_TRUE(resourceStrW(noResource).empty());
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
