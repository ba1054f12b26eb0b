// Iterators placed at nodes through the index of first paths stand where
// the search for each node puts them.
#include "host/edit/FirstPathIndex.h"

#include <random>

#include <gtest/gtest.h>

#include "host/edit/EditGraphIterator.h"
#include "tests/support/TestEdit.h"

namespace firstpaths {

// Everything an iterator's place is made of, from the root down.
std::vector<std::string> placeOf(const EditGraphIterator& at) {
  std::vector<std::string> out;
  for (int d = 0; d <= at.getDepth(); ++d) {
    EditGraphIterator up = at;
    while (up.getDepth() > d) up.moveBack();
    out.push_back(at.getNode(d)->getId().asString().str() + " in " + std::to_string(up.getParentInputNum()) + " on " +
                  at.getChanId(d).asString().str());
  }
  return out;
}

TEST(FirstPathIndex, PlacesEveryNodeWhereTheSearchDoes) {
  for (unsigned seed = 1; seed <= 40; ++seed) {
    std::mt19937 random(seed);
    auto pick = [&](std::size_t n) { return std::uniform_int_distribution<std::size_t>(0, n - 1)(random); };
    testsupport::ScopedEdit built;
    std::vector<IdStamp> ids;
    for (unsigned i = 1; i <= 4; ++i) ids.push_back(built.material(IdStamp(3, 0, i))->getId());
    const unsigned effects = 30 + static_cast<unsigned>(pick(40));
    // Inputs name earlier nodes (shared inputs), some later ones (cycles),
    // some channels (resolved at the time), some nothing.
    for (unsigned i = 1; i <= effects; ++i) {
      std::vector<IdStamp> inputs;
      for (std::size_t k = 0, n = 1 + pick(3); k < n; ++k) {
        const std::size_t kind = pick(10);
        if (kind == 0)
          inputs.push_back(IdStamp(2, 0, static_cast<uint32_t>(1 + pick(effects))));
        else if (kind == 1)
          inputs.push_back(IdStamp(1, 0, static_cast<uint32_t>(1 + pick(3))));
        else if (kind == 2)
          inputs.push_back(IdStamp());
        else
          inputs.push_back(ids[pick(ids.size())]);
      }
      ids.push_back(built.effect(IdStamp(2, 0, i), "mix", inputs)->getId());
    }
    for (unsigned c = 1; c <= 3; ++c) built.channel(IdStamp(1, 0, c), L"V", ids[ids.size() - 1 - pick(ids.size() / 2)]);
    // A material cel is no root.
    built->getChan(1).cels.push_back({10, 20, Cel::Kind::material, ids[0]});
    for (const double time : {5.0, 15.0}) {
      std::vector<std::vector<std::string>> searched;
      for (const IdStamp& id : ids)
        searched.push_back(placeOf(EditGraphIterator(built.edit(), time, id, EditGraphIterator::positionAtNode)));
      FirstPathIndex index;
      for (std::size_t k = 0; k < ids.size(); ++k)
        ASSERT_EQ(placeOf(EditGraphIterator(built.edit(), time, ids[k], EditGraphIterator::positionAtNode)),
                  searched[k])
            << "seed " << seed << ", node " << ids[k].asString().str() << " at " << time;
    }
  }
}

} // namespace firstpaths
