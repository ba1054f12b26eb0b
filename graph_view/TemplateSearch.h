#pragma once
// Finding effect templates by name as the user types: what matches, and in
// what order.
#include <cstddef>
#include <string>
#include <vector>

#include "GrphToolApi.h"

namespace TemplateSearch {

// The names that hold every word of the query, in any order and ignoring
// case, as indices into `names`, best first: the name that is the query,
// then names that start with it, then names whose words start with the
// query's words, then the rest; shorter and then alphabetically earlier
// names first within each. An empty query matches every name.
GRPHTOOL_API std::vector<std::size_t> rank(const std::wstring& query, const std::vector<std::wstring>& names);

// Names folded and split into words once, for a field that ranks the same
// names again on every key typed.
class GRPHTOOL_API Catalogue {
public:
  explicit Catalogue(const std::vector<std::wstring>& names);
  // As rank(query, names) for the names given.
  std::vector<std::size_t> rank(const std::wstring& query) const;

private:
  struct Entry {
    std::wstring folded;
    std::vector<std::wstring> words;
  };
  std::vector<Entry> entries_;
};

} // namespace TemplateSearch
