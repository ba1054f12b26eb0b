// An edit too large for the memory there is ends the program with one line.
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "tests/support/Program.h"

namespace outofmemory {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool sanitized = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool sanitized = true;
#else
constexpr bool sanitized = false;
#endif
#else
constexpr bool sanitized = false;
#endif

TEST(OutOfMemory, ALimitedAddressSpaceEndsTheRunWithOneLine) {
  // The sanitizers' shadow memory does not fit any such limit.
  if (sanitized) GTEST_SKIP() << "the address sanitizer reserves more than the limit";
  testsupport::TempFolder folder;
  // A chain of 100,000 effects: about 800 MB at its peak, read under 600 MB.
  const std::string edit = folder.path("chain.json");
  {
    std::ofstream out(edit);
    out << R"({"name": "Chain", "channels": [{"id": "1.0.1", "cels": [{"start": 0, "end": 10, "graph": "2.0.100000"}]}],)"
        << R"( "nodes": [{"id": "3.0.1", "kind": "material", "media": {"testcard": "bars"}})";
    for (int i = 1; i <= 100000; ++i)
      out << ",\n{\"id\": \"2.0." << i << "\", \"kind\": \"effect\", \"tag\": \"colourcorrect\", \"inputs\": [\""
          << (i == 1 ? std::string("3.0.1") : "2.0." + std::to_string(i - 1)) << "\"]}";
    out << "]}\n";
  }
  const std::string png = folder.path("chain.png");
  const auto run =
      testsupport::runProgram({"render", edit, "--prefs", folder.path("prefs"), "--png", png}, {}, "ulimit -v 600000");
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.err, "fxgraph: the edit is too large for the memory there is\n");
  EXPECT_FALSE(std::filesystem::exists(png));
}

} // namespace outofmemory
