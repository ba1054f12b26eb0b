// The navigator on a graph much larger than the view, driven as a script
// does: it draws a box for every node, not only those the view shows, and
// the window's frame stays inside it wherever the view goes.
#include <nlohmann/json.hpp>

#include "app/EditGenerator.h"
#include "app/StateDump.h"
#include "host/edit/EditFile.h"
#include "tests/support/ScriptSession.h"

namespace navigatortest {

using json = nlohmann::ordered_json;

class BigGraphNavigator : public testsupport::ScriptSession {
protected:
  void SetUp() override {
    const std::string path = folder.path("big.json");
    EditPtr edit = fxgraph::generateEdit(300, 3);
    std::string why;
    ASSERT_TRUE(EditFile::save(edit, path, why)) << why;
    edit->close();
    openSession(path, 0);
  }
  json dump() const { return fxgraph::dumpState(session); }
  static bool inside(const json& inner, const json& outer) {
    return inner[0] >= outer[0] && inner[1] >= outer[1] && inner[2] <= outer[2] && inner[3] <= outer[3];
  }
};

TEST_F(BigGraphNavigator, EveryNodeHasABoxAndTheFrameNeverLeavesIt) {
  for (const std::string orientation : {"LeftToRight", "BottomToTop"}) {
    SCOPED_TRACE(orientation);
    run("orientation " + orientation);
    run("key f");
    run("wheel 6");
    const json d = dump();
    const json& nav = d["navigator"];
    ASSERT_FALSE(nav.is_null());
    EXPECT_EQ(nav["nodes"], d["nodes"].size());
    EXPECT_GE(d["nodes"].size(), 290u);
    // Into each corner of the miniature and past it.
    const json box = nav["pixels"];
    const int x0 = box[0], y0 = box[1], x1 = box[2], y1 = box[3];
    for (const auto& [x, y] : {std::pair(x0 + 1, y0 + 1), std::pair(x1 - 1, y1 - 1), std::pair(x0 + 1, y1 - 1),
                               std::pair(x1 - 1, y0 + 1), std::pair((x0 + x1) / 2, (y0 + y1) / 2)}) {
      run("click " + std::to_string(x) + " " + std::to_string(y));
      const json now = dump()["navigator"];
      ASSERT_FALSE(now.is_null());
      EXPECT_TRUE(inside(now["window"], now["pixels"])) << now.dump();
      EXPECT_EQ(now["nodes"], d["nodes"].size());
    }
  }
}

} // namespace navigatortest
