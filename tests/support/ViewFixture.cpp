#include "tests/support/ViewFixture.h"

#include <filesystem>
#include <unistd.h>

#include <gtest/gtest.h>

#include "graph_view/ViewStills.h"
#include "host/config/EditorPreferences.h"
#include "host/ui/GlobManager.h"

namespace testsupport {

namespace {
// One file a process, so that tests run side by side keep their own orientation.
const std::string& scratchPreferences() {
  static const std::string path =
      (std::filesystem::temp_directory_path() / ("fxgraph-view-tests-" + std::to_string(::getpid()) + ".prefs"))
          .string();
  return path;
}
} // namespace

ViewFixture::ViewFixture(EditPtr edit, XY<int> size, bool stillsInBackground) : edit_(std::move(edit)) {
  setPreferencesFile(scratchPreferences());
  prefs().setPreference("Video Routing : Orientation", LightweightString<char>("LeftToRight"));
  GlobManager::initialise(size.x + 100, size.y + 100);
  vob_ = std::make_unique<Vob>(edit_);
  view_ = new FXGraphView(vob_.get(), size, Palette(), FXGraphView::wholeEdit);
  view_->stills().setInBackground(stillsInBackground);
  GlobManager::realize(view_);
}

ViewFixture::~ViewFixture() {
  GlobManager::shutdown();
  vob_.reset();
  if (edit_) edit_->close();
  std::error_code ignored;
  std::filesystem::remove(scratchPreferences(), ignored);
}

void ViewFixture::frame(const FXGraphViewNode& node, int maxNodeSize) {
  view_->setMaxNodeSize(maxNodeSize);
  view_->setViewZoom(1);
  const XY<double> p = node.getPosition();
  view_->setViewCentre(p.x, p.y);
  EXPECT_EQ(view_->getViewCentre(), p) << "the node lies inside the canvas";
  view_->redraw();
}

} // namespace testsupport
