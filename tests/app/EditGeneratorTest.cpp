// Generated edits for benchmarks: the deep shape's promises.
#include "app/EditGenerator.h"

#include <map>

#include <gtest/gtest.h>

#include "host/edit/EditFile.h"

namespace {

TEST(EditGenerator, DeepTreesHaveOneOutputSharedInputsAndNoCycles) {
  EditPtr edit = fxgraph::generateDeepEdit(3000, 7);
  ASSERT_EQ(edit->getNumChans(), 1);
  const auto nodes = edit->allNodes();
  EXPECT_GT(nodes.size(), 100u);
  EXPECT_LE(nodes.size(), 3000u);
  std::map<IdStamp, int> fedTo;
  for (const auto& n : nodes)
    for (unsigned i = 0; i < n->getNumInputs(); ++i) {
      const IdStamp input = n->getInputTrackId(i);
      ASSERT_TRUE(input.valid());
      // Inputs only ever point to nodes made later: no cycle can close.
      EXPECT_GT(input.third(), n->getId().third());
      ++fedTo[input];
    }
  int shared = 0;
  for (const auto& [id, count] : fedTo) shared += count > 1;
  EXPECT_GT(shared, 0);
  EXPECT_EQ(fedTo.size() + 1, nodes.size()) << "every node but the output feeds another";
  const std::string text = EditFile::toJson(*edit);
  edit->close();
  EditPtr again = fxgraph::generateDeepEdit(3000, 7);
  EXPECT_EQ(EditFile::toJson(*again), text) << "the same for a seed";
  again->close();
}

} // namespace
