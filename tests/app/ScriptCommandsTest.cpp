// The script commands are one table: the program's help and every usage
// line come from it, and the README and DESIGN list the same commands.
#include <set>

#include <gtest/gtest.h>

#include "app/ScriptRunner.h"
#include "tests/support/Program.h"

namespace {

std::set<std::string> tableNames() {
  std::set<std::string> names;
  for (const fxgraph::ScriptCommand& c : fxgraph::ScriptRunner::commands()) names.insert(c.name);
  return names;
}

// The commands a document lists between `from` and `to`: the first word of
// each `quoted` form that is a command's shape (a lower-case word, dashes
// inside).
std::set<std::string> listedIn(const std::string& text, const std::string& from, const std::string& to) {
  const std::size_t begin = text.find(from);
  const std::size_t end = text.find(to, begin);
  std::set<std::string> names;
  if (begin == std::string::npos || end == std::string::npos) return names;
  const std::string part = text.substr(begin, end - begin);
  for (std::size_t at = part.find('`'); at != std::string::npos; at = part.find('`', at + 1)) {
    const std::size_t close = part.find('`', at + 1);
    if (close == std::string::npos) break;
    const std::string quoted = part.substr(at + 1, close - at - 1);
    const std::string first = quoted.substr(0, quoted.find(' '));
    if (!first.empty() && first.front() >= 'a' && first.front() <= 'z' &&
        first.find_first_not_of("abcdefghijklmnopqrstuvwxyz-") == std::string::npos)
      names.insert(first);
    at = close;
  }
  return names;
}

TEST(ScriptCommands, EveryUsageComesFromTheTable) {
  const std::string usage = fxgraph::ScriptRunner::usage();
  for (const fxgraph::ScriptCommand& c : fxgraph::ScriptRunner::commands())
    EXPECT_NE(usage.find(c.usage), std::string::npos) << c.name;
  const auto help = testsupport::runProgram({"--help"});
  EXPECT_NE(help.out.find(usage), std::string::npos) << help.out;
}

TEST(ScriptCommands, TheReadmeListsTheTablesCommands) {
  const std::string readme = testsupport::readText(testsupport::sourcePath("README.md"));
  EXPECT_EQ(listedIn(readme, "### Scripts", "A bad line stops the run"), tableNames());
}

TEST(ScriptCommands, TheDesignListsTheTablesCommands) {
  const std::string design = testsupport::readText(testsupport::sourcePath("../shared/DESIGN.md"));
  if (design.empty()) GTEST_SKIP() << "the design document is not beside this checkout";
  EXPECT_EQ(listedIn(design, "**Script language**", "A bad line stops the run"), tableNames());
}

} // namespace
