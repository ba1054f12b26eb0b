#include "app/NodeUICommand.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/core/Cookie.h"
#include "tests/support/CorpusChains.h"
#include "tests/support/Program.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace {

struct Outcome {
  int status;
  std::string out, err;
};

Outcome nodeui(const std::vector<std::string>& args) {
  std::ostringstream out, err;
  const int status = fxgraph::runNodeUICommand(args, out, err);
  return {status, out.str(), err.str()};
}

// An error is one line on stderr, ending with a newline.
bool isOneLine(const std::string& err) {
  return !err.empty() && err.back() == '\n' && std::count(err.begin(), err.end(), '\n') == 1;
}

// The shortest text that reads back to the same double, kept a JSON float.
std::string jsonNumber(double v) {
  if (std::isnan(v)) return "\"NaN\"";
  if (std::isinf(v)) return v > 0 ? "\"Infinity\"" : "\"-Infinity\"";
  char buf[64];
  const auto end = std::to_chars(buf, buf + sizeof buf, v).ptr;
  std::string s(buf, end);
  if (s.find_first_of(".e") == std::string::npos) s += ".0";
  return s;
}

class NodeUICommandTest : public ::testing::Test {
protected:
  std::string path(const std::string& name) const { return folder.path(name); }

  // Packs the records given as JSON text; returns the objects file's path.
  std::string packed(const std::string& records, const std::string& name = "out.objects") {
    const Outcome r = nodeui({"pack", folder.write(name + ".json", records), path(name)});
    EXPECT_EQ(r.status, 0) << r.err;
    return path(name);
  }

  // Two records, the first with every field given.
  std::string twoRecords() {
    return packed(R"({"records": [
      {"node": "1.0.1", "cookie": "00112233445566778899aabbccddeeff.7.9", "draw": [1.5, -2.25],
       "manual": [3.0, 4.0], "manualSet": true},
      {"node": "1.0.2", "draw": [0.125, 0.5]}]})");
  }

  testsupport::TempFolder folder;
};

TEST_F(NodeUICommandTest, PackThenDumpRoundTripsEveryBit) {
  using limits = std::numeric_limits<double>;
  const double inf = limits::infinity(), nan = limits::quiet_NaN();
  const double big = limits::max(), small = limits::min(), tiny = limits::denorm_min();
  // Every record takes four values in turn, so each value lands in each field.
  const std::vector<double> values = {0.0,   -0.0,   1.0 / 3.0,          -2.5, 0.1, 1e308, big, -big, small, tiny,
                                      -tiny, 1e-300, 9007199254740993.0, nan,  inf, -inf};
  const std::size_t n = values.size();
  auto at = [&](std::size_t i) { return values[i % n]; };
  std::vector<std::string> cookies;
  std::string text = "{\"records\": [\n";
  for (std::size_t i = 0; i < n; ++i) {
    cookies.push_back(Cookie::generate(static_cast<uint16_t>(i), 65535).asString().str());
    text += (i ? ",\n" : "") + std::string("{\"node\": \"7.0.") + std::to_string(i + 1) + "\", \"cookie\": \"" +
            cookies[i] + "\", \"draw\": [" + jsonNumber(at(i)) + ", " + jsonNumber(at(i + 1)) + "], \"manual\": [" +
            jsonNumber(at(i + 2)) + ", " + jsonNumber(at(i + 3)) + "], \"manualSet\": " + (i % 2 ? "false" : "true") +
            "}";
  }
  const std::string objects = packed(text + "]}");

  const Outcome dumped = nodeui({"dump", objects});
  ASSERT_EQ(dumped.status, 0) << dumped.err;
  const json doc = json::parse(dumped.out);
  EXPECT_EQ(doc["result"], 3);
  EXPECT_EQ(doc["complete"], true);
  EXPECT_EQ(doc["errorText"], "");
  EXPECT_TRUE(doc["warnings"].empty());
  ASSERT_EQ(doc["records"].size(), n);

  auto expectSame = [](const json& j, double want, const std::string& where) {
    if (std::isnan(want)) {
      EXPECT_EQ(j, "NaN") << where;
    } else if (std::isinf(want)) {
      EXPECT_EQ(j, want > 0 ? "Infinity" : "-Infinity") << where;
    } else {
      ASSERT_TRUE(j.is_number_float()) << where << ": " << j.dump();
      EXPECT_EQ(std::bit_cast<uint64_t>(j.get<double>()), std::bit_cast<uint64_t>(want))
          << where << ": wrote " << jsonNumber(want) << ", read " << j;
    }
  };
  for (std::size_t i = 0; i < n; ++i) {
    const json& rec = doc["records"][i];
    const std::string where = "record " + std::to_string(i + 1);
    EXPECT_EQ(rec["node"], "7.0." + std::to_string(i + 1));
    EXPECT_EQ(rec["cookie"], cookies[i]);
    expectSame(rec["draw"][0], at(i), where + " draw x");
    expectSame(rec["draw"][1], at(i + 1), where + " draw y");
    expectSame(rec["manual"][0], at(i + 2), where + " manual x");
    expectSame(rec["manual"][1], at(i + 3), where + " manual y");
    EXPECT_EQ(rec["manualSet"], i % 2 == 0);
  }

  // The dump is itself valid input, and packing it again gives the same bytes.
  ASSERT_EQ(nodeui({"pack", folder.write("again.json", dumped.out), path("again.objects")}).status, 0);
  EXPECT_EQ(testsupport::readText(path("again.objects")), testsupport::readText(objects));

  // Absent fields default to the origin and the invalid cookie.
  const json rec =
      json::parse(nodeui({"dump", packed(R"({"records": [{"node": "4.5.6"}]})", "one")}).out)["records"][0];
  EXPECT_EQ(rec["cookie"], invalid_cookie.asString().str());
  EXPECT_EQ(rec["draw"], json::parse("[0.0, 0.0]"));
  EXPECT_EQ(rec["manualSet"], false);
}

TEST_F(NodeUICommandTest, MalformedRecordsAreRefusedOnOneLineAndWriteNothing) {
  struct Case {
    std::string json, mentions;
  };
  const std::string ok = R"({"node": "1.0.1"}, )";
  const Case cases[] = {
      {"{\"records\": [\n  {\"node\": \"1.0.1\"},\n  {\"node\": \"1.0.2\",}\n]}", "line 3"},
      {"", "line 1"},
      {R"([{"node": "1.0.1"}])", "records"},
      {R"({"records": [)" + ok + R"("1.0.2"]})", "record 2"},
      {R"({"records": [)" + ok + R"({"node": "1.2"}]})", "record 2: \"node\""},
      {R"({"records": [{"draw": [1.0, 2.0]}]})", "\"node\""},
      {R"({"records": [{"node": "4294967296.0.1"}]})", "\"node\""},
      {R"({"records": [{"node": "1.0.1", "cookie": "00112233445566778899aabbccddeeff.1"}]})", "\"cookie\""},
      {R"({"records": [{"node": "1.0.1", "draw": [1.0, 2.0, 3.0]}]})", "\"draw\""},
      {R"({"records": [{"node": "1.0.1", "draw": [null, 2.0]}]})", "\"draw\""},
      {R"({"records": [{"node": "1.0.1", "manual": ["nan", 2.0]}]})", "\"manual\""},
      {R"({"records": [{"node": "1.0.1", "manualSet": "yes"}]})", "\"manualSet\""},
      // Hostile input: a number no double holds, and nesting deeper than
      // any records file (even inside a field nobody reads).
      {R"({"records":[{"node":"2.0.1","draw":[1e400,0]}]})", "a number out of range"},
      {std::string(60000, '['), "nested deeper than 256 levels"},
      {R"({"records": [], "future": )" + std::string(300, '[') + std::string(300, ']') + "}",
       "line 1, column 282: values nested deeper than 256 levels"},
  };
  for (const Case& c : cases) {
    const Outcome r = nodeui({"pack", folder.write("in.json", c.json), path("out.objects")});
    EXPECT_EQ(r.status, 1) << c.json;
    EXPECT_EQ(r.err.find("exception"), std::string::npos) << "plain words, not a library's text: " << r.err;
    EXPECT_TRUE(isOneLine(r.err)) << r.err;
    EXPECT_NE(r.err.find(c.mentions), std::string::npos) << "expected \"" << c.mentions << "\" in: " << r.err;
    EXPECT_NE(r.err.find(path("in.json")), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty()) << r.out;
  }
  EXPECT_FALSE(fs::exists(path("out.objects")));
  EXPECT_TRUE(folder.leftovers().empty());
}

TEST_F(NodeUICommandTest, MissingFilesOrWrongArgumentsFail) {
  for (const auto& args : std::vector<std::vector<std::string>>{{"pack", path("none.json"), path("out.objects")},
                                                                {"dump", path("absent.objects")},
                                                                {"inspect", path("absent.objects")}}) {
    const Outcome r = nodeui(args);
    EXPECT_EQ(r.status, 1) << args[0];
    EXPECT_TRUE(isOneLine(r.err)) << r.err;
    EXPECT_NE(r.err.find(args[1]), std::string::npos) << r.err;
  }
  EXPECT_FALSE(fs::exists(path("out.objects")));
  // Records that are no file, or a file that never ends, are refused before
  // any of it is read.
  fs::create_directory(path("folder.json"));
  for (const std::string& records : {path("folder.json"), std::string("/dev/zero")}) {
    const Outcome r = nodeui({"pack", records, path("out.objects")});
    EXPECT_EQ(r.status, 1) << records;
    EXPECT_TRUE(isOneLine(r.err)) << r.err;
    EXPECT_NE(r.err.find("not a regular file"), std::string::npos) << r.err;
  }
  EXPECT_FALSE(fs::exists(path("out.objects")));
  for (const auto& args : std::vector<std::vector<std::string>>{
           {}, {"pack", "only-one"}, {"dump"}, {"inspect", "a", "b"}, {"unpack", "a"}}) {
    const Outcome r = nodeui(args);
    EXPECT_EQ(r.status, 2);
    EXPECT_TRUE(isOneLine(r.err)) << r.err;
  }
}

TEST_F(NodeUICommandTest, PackReplacesAnExistingFileWholeOrNotAtAll) {
  const std::string out = twoRecords();
  const std::string before = testsupport::readText(out);
  EXPECT_NE(nodeui({"pack", folder.write("bad.json", R"({"records": [{"node": "oops"}]})"), out}).status, 0);
  EXPECT_EQ(testsupport::readText(out), before);

  // A reader holding the old file keeps seeing it whole: the new one is
  // written beside it and renamed over it, never rewritten in place.
  fs::create_hard_link(out, path("held-by-reader"));
  const std::string one = folder.write("one.json", R"({"records": [{"node": "9.9.9"}]})");
  ASSERT_EQ(nodeui({"pack", one, out}).status, 0);
  EXPECT_EQ(testsupport::readText(path("held-by-reader")), before);
  const json doc = json::parse(nodeui({"dump", out}).out);
  ASSERT_EQ(doc["records"].size(), 1u);
  EXPECT_EQ(doc["records"][0]["node"], "9.9.9");
  EXPECT_TRUE(folder.leftovers().empty());

  // A destination that cannot be replaced at all.
  fs::create_directory(path("a-folder"));
  folder.write("a-folder/keep", "x");
  for (const std::string& to : {path("a-folder"), path("missing/out.objects")}) {
    const Outcome r = nodeui({"pack", one, to});
    EXPECT_NE(r.status, 0) << to;
    EXPECT_TRUE(isOneLine(r.err)) << r.err;
  }
  EXPECT_TRUE(fs::exists(path("a-folder/keep")));
  EXPECT_TRUE(folder.leftovers().empty());
}

TEST_F(NodeUICommandTest, InspectListsEveryChunkWithItsVersionAndSizes) {
  const std::string file = twoRecords();
  const Outcome r = nodeui({"inspect", file});
  ASSERT_EQ(r.status, 0) << r.err << r.out;
  EXPECT_TRUE(r.err.empty());
  // Lines of read chunks: offset, name, version, own size, total size, "3 read".
  std::string names, versions;
  std::vector<uint64_t> ends;
  std::istringstream lines(r.out);
  for (std::string line; std::getline(lines, line);) {
    if (line.empty() || !std::isdigit(static_cast<unsigned char>(line[0])) || !line.ends_with(" 3 read")) continue;
    uint64_t offset, own, total;
    std::string name, version;
    std::istringstream(line) >> offset >> name >> version >> own >> total;
    names += name, versions += version + " ", ends.push_back(offset + 15 + total);
  }
  EXPECT_EQ(names, "$TN$LK$LKJ");
  EXPECT_EQ(versions, "2.0 1.0 1.0 2.0 1.1 1.0 2.0 1.1 1.0 1.0 ");
  ASSERT_EQ(ends.size(), 10u);
  EXPECT_EQ(ends.front(), fs::file_size(file)) << "the root reaches the end";
  EXPECT_EQ(ends.back(), fs::file_size(file)) << "so does J";
}

// A record cut off by the end of the file is kept with what it read, the
// error text is the reader's own message and nothing more, and both commands
// fail with one line.
TEST_F(NodeUICommandTest, DumpKeepsARecordCutOffAndShowsOnlyTheReadersMessage) {
  const std::string file = testsupport::sourcePath("tests/node_ui/corpus/count-3-two-and-a-half.objects");
  const Outcome inspected = nodeui({"inspect", file}), r = nodeui({"dump", file});
  EXPECT_EQ(inspected.status, 1);
  EXPECT_TRUE(isOneLine(inspected.err)) << inspected.err;
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(isOneLine(r.err)) << r.err;
  const json doc = json::parse(r.out);
  EXPECT_EQ(doc["result"], 6);
  ASSERT_EQ(doc["records"].size(), 3u);
  const json& cut = doc["records"][2];
  EXPECT_EQ(cut["node"], "3.0.2");
  EXPECT_EQ(cut["cookie"], "00000000000000000000000000000000.0.0") << "the cookie ran past the end";
  EXPECT_EQ(cut["draw"], json::array({0.0, 0.0}));
  EXPECT_EQ(doc["errorText"], "String of 40 bytes at offset 395 runs past the end of the stream.");
  EXPECT_TRUE(doc["warnings"].empty());
}

// A bare manager (no record factory) whose count promises two records and
// whose data ends there reads fine: each record is tried, none is made.
TEST_F(NodeUICommandTest, ABareManagerWithACountAndNoRecordsReadsCleanly) {
  using testsupport::ByteWriter;
  const std::vector<uint8_t> bare =
      testsupport::chainImage({{"$", 2, 0, {}}, {"T", 1, 0, {}}, {"N", 1, 0, ByteWriter().u32(2).bytes}});
  ByteWriter file;
  file.raw({'F', 'X', 'O', 'B'}).u32(1).u32(2);
  file.str("NodePosManager").str("$.T.N.J").raw(testsupport::posManagerChain({}));
  file.str("Bare").str("$.T.N").raw(bare);
  const std::string objects = path("bare.objects");
  std::ofstream(objects, std::ios::binary)
      .write(reinterpret_cast<const char*>(file.bytes.data()), static_cast<std::streamsize>(file.bytes.size()));

  const Outcome dumped = nodeui({"dump", objects});
  EXPECT_EQ(dumped.status, 0) << dumped.err;
  const json doc = json::parse(dumped.out);
  EXPECT_EQ(doc["complete"], true);
  EXPECT_EQ(doc["errorText"], "");
  const Outcome inspected = nodeui({"inspect", objects});
  EXPECT_EQ(inspected.status, 0) << inspected.err;
  EXPECT_NE(inspected.out.find("object \"Bare\" ($.T.N) at 105\n"), std::string::npos) << inspected.out;
  EXPECT_NE(inspected.out.find("152         N                     1.0      4           4           3 read\n"),
            std::string::npos)
      << inspected.out;
}

} // namespace
