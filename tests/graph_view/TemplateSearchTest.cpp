// Search to add ranks template names by what is typed.
#include "graph_view/TemplateSearch.h"

#include <gtest/gtest.h>

namespace {

std::vector<std::wstring> ranked(const std::wstring& query, const std::vector<std::wstring>& names) {
  std::vector<std::wstring> out;
  for (std::size_t i : TemplateSearch::rank(query, names)) out.push_back(names[i]);
  return out;
}

const std::vector<std::wstring> names = {L"Picture in picture", L"Blur",    L"Gaussian blur", L"Colour correction",
                                         L"Dissolve",           L"Wipe",    L"Flat colour",   L"Blur edges",
                                         L"Motion blur",        L"Gradient"};

TEST(TemplateSearch, BestMatchesComeFirstIgnoringCaseAndWordOrder) {
  // The name itself, then names that start with it, then word starts, then the rest.
  EXPECT_EQ(ranked(L"blur", names),
            (std::vector<std::wstring>{L"Blur", L"Blur edges", L"Motion blur", L"Gaussian blur"}));
  EXPECT_EQ(ranked(L"COL", names), (std::vector<std::wstring>{L"Colour correction", L"Flat colour"}));
  EXPECT_EQ(ranked(L"picture in", names), (std::vector<std::wstring>{L"Picture in picture"}));
  EXPECT_EQ(ranked(L"colour flat", names), (std::vector<std::wstring>{L"Flat colour"})) << "words in any order";
  EXPECT_EQ(ranked(L"  blur   motion ", names), (std::vector<std::wstring>{L"Motion blur"})) << "blanks do not count";
  EXPECT_EQ(ranked(L"lur", names),
            (std::vector<std::wstring>{L"Blur", L"Blur edges", L"Motion blur", L"Gaussian blur"}))
      << "inside words too, after word starts";
  EXPECT_TRUE(ranked(L"blurry", names).empty());
  EXPECT_TRUE(ranked(L"blur x", names).empty()) << "every word must be there";
  EXPECT_EQ(ranked(L"", names).size(), names.size()) << "nothing typed lists everything";
}

} // namespace
