#include "graph_view/TemplateSearch.h"

#include <algorithm>
#include <cwctype>
#include <tuple>

namespace TemplateSearch {
namespace {

std::wstring folded(const std::wstring& text) {
  std::wstring out(text);
  std::transform(out.begin(), out.end(), out.begin(), [](wchar_t c) { return static_cast<wchar_t>(std::towlower(c)); });
  return out;
}

// The runs of text between blanks (as a wide stream reads words).
std::vector<std::wstring> wordsOf(const std::wstring& text) {
  std::vector<std::wstring> words;
  for (std::size_t at = 0; at < text.size();) {
    if (std::iswspace(static_cast<wint_t>(text[at]))) {
      ++at;
      continue;
    }
    std::size_t end = at;
    while (end < text.size() && !std::iswspace(static_cast<wint_t>(text[end]))) ++end;
    words.emplace_back(text, at, end - at);
    at = end;
  }
  return words;
}

bool startsWith(const std::wstring& text, const std::wstring& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

} // namespace

std::vector<std::size_t> rank(const std::wstring& query, const std::vector<std::wstring>& names) {
  return Catalogue(names).rank(query);
}

Catalogue::Catalogue(const std::vector<std::wstring>& names) {
  entries_.reserve(names.size());
  for (const std::wstring& n : names) {
    std::wstring f = folded(n);
    std::vector<std::wstring> words = wordsOf(f);
    entries_.push_back({std::move(f), std::move(words)});
  }
}

std::vector<std::size_t> Catalogue::rank(const std::wstring& query) const {
  const std::wstring q = folded(query);
  const std::vector<std::wstring> queryWords = wordsOf(q);
  std::wstring joined; // the query with single blanks
  for (const std::wstring& w : queryWords) joined += (joined.empty() ? L"" : L" ") + w;
  struct Match {
    int tier;
    std::size_t length;
    const std::wstring* name;
    std::size_t index;
  };
  std::vector<Match> matches;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    const std::wstring& name = entries_[i].folded;
    if (!std::all_of(queryWords.begin(), queryWords.end(),
                     [&](const std::wstring& w) { return name.find(w) != std::wstring::npos; }))
      continue;
    const std::vector<std::wstring>& nameWords = entries_[i].words;
    const bool wordStarts = std::all_of(queryWords.begin(), queryWords.end(), [&](const std::wstring& w) {
      return std::any_of(nameWords.begin(), nameWords.end(), [&](const std::wstring& n) { return startsWith(n, w); });
    });
    const int tier = name == joined ? 0 : startsWith(name, joined) ? 1 : wordStarts ? 2 : 3;
    matches.push_back({tier, name.size(), &name, i});
  }
  std::sort(matches.begin(), matches.end(), [](const Match& a, const Match& b) {
    return std::tie(a.tier, a.length, *a.name, a.index) < std::tie(b.tier, b.length, *b.name, b.index);
  });
  std::vector<std::size_t> order;
  order.reserve(matches.size());
  for (const Match& m : matches) order.push_back(m.index);
  return order;
}

} // namespace TemplateSearch
