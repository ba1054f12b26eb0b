// The edit's objects file and the byte stream under it.
#include "host/stream/ObjectsFile.h"

#include <gtest/gtest.h>

#include "node_ui/NodeUIPosManager.h"
#include "tests/support/CorpusChains.h"

using namespace testsupport;

namespace {

TEST(StreamFile, ARunOfShortReadsReportsOnce) {
  StreamFile s(ByteWriter().u16(0x1234).u32(7).bytes);
  EXPECT_EQ(s.getUnsignedShort(), 0x1234);
  EXPECT_EQ(s.getString().size(), 0u); // 7 bytes claimed, 0 left
  EXPECT_TRUE(s.error());
  EXPECT_TRUE(s.eof());
  const std::string first = s.errorText().str();
  EXPECT_EQ(first, " String of 7 bytes at offset 2 runs past the end of the stream.");
  EXPECT_EQ(s.getUnsignedLong(), 0u);
  EXPECT_EQ(s.getDouble(), 0.0);
  EXPECT_EQ(s.errorText(), first);

  // A new run after the error is cleared gets its own message; a seek beyond
  // the end stops at the end.
  s.clearError();
  EXPECT_FALSE(s.seek(0xFFFFFFFFFFFFFFFFull));
  EXPECT_EQ(s.position(), 6u);
  s.seek(4);
  EXPECT_EQ(s.getUnsignedLong(), 0u);
  EXPECT_EQ(s.errorText().str(), first + " Read past the end of the stream at offset 4 (4 bytes wanted, 2 left).");
}

struct TwoObjects {
  Ux::Ptr<NodeUIPosManager> manager{new NodeUIPosManager()};
  Ux::Ptr<NodeUIPosRec> rec{new NodeUIPosRec(nullptr, IdStamp(9, 8, 7), sampleCookie())};
  TwoObjects() {
    manager->createPosRec(IdStamp(1, 0, 1), sampleCookie())->setManualPos(2, 3);
    rec->setDrawPosition(-4, 5, false);
  }
  std::vector<uint8_t> image() const {
    ByteWriter w;
    w.u8('F').u8('X').u8('O').u8('B').u32(1).u32(2);
    w.str("NodePosManager").str("$.T.N.J");
    w.raw(posManagerChain({posRecChain({IdStamp(1, 0, 1), cookieText, 0, 0, 2, 3, 1})}));
    w.str("Rec").str("$.L.K").raw(posRecChain(recImage));
    return w.bytes;
  }
  const PosRecImage recImage{IdStamp(9, 8, 7), cookieText, -4, 5, 0, 0, 0};
};

TEST(ObjectsFile, WritesAHeaderThenNameKindAndChainPerObject) {
  TwoObjects objects;
  PStream out;
  LightweightString<char> why;
  ASSERT_TRUE(ObjectsFile::write(out, {{"NodePosManager", objects.manager}, {"Rec", objects.rec}}, why));
  ASSERT_EQ(out.bytes(), objects.image());

  PStream in(out.bytes());
  const ObjectsFile::ReadResult r = ObjectsFile::read(in);
  EXPECT_TRUE(r.complete && r.problem.empty() && r.warnings.empty());
  ASSERT_EQ(r.entries.size(), 2u);
  EXPECT_EQ(r.entries[0].kind, "$.T.N.J");
  EXPECT_EQ(r.entries[0].offset, 12u);
  EXPECT_EQ(r.entries[1].offset, objects.image().size() - (4 + 3) - (4 + 5) - posRecChain(objects.recImage).size());
  auto manager = Ux::dynamicCast<NodeUIPosManager>(r.entries[0].object);
  auto rec = Ux::dynamicCast<NodeUIPosRec>(r.entries[1].object);
  ASSERT_TRUE(manager && rec);
  for (const auto& e : r.entries) {
    EXPECT_EQ(e.result, StreamResult::layerRead);
    EXPECT_TRUE(e.errorText.empty());
  }
  ASSERT_NE(manager->openPosRec(IdStamp(1, 0, 1)), nullptr);
  EXPECT_EQ(manager->openPosRec(IdStamp(1, 0, 1))->getManualPos().y, 3.0);
  EXPECT_EQ(rec->getDrawPosition().x, -4.0);
}

TEST(ObjectsFile, RefusesWhatIsNotAnObjectsFileAndCountsThatCannotFit) {
  struct Case {
    std::vector<uint8_t> bytes;
    const char* problem;
  };
  ByteWriter magic;
  magic.u8('F').u8('X').u8('O').u8('B');
  for (const Case& c :
       {Case{{}, "not an objects file"}, Case{ByteWriter().u32(0).u32(1).u32(0).bytes, "not an objects file"},
        Case{ByteWriter(magic).u32(2).u32(0).bytes, "unknown objects file format 2"},
        Case{ByteWriter(magic).u32(1).u32(0x80000000).bytes,
             "the file says it holds 2147483648 objects, more than its 12 bytes could"},
        Case{ByteWriter(magic).u32(1).u32(3).str("a").u32(1000).raw(std::vector<uint8_t>(20, 0)).bytes,
             "object 1: its name runs past the end of the file"}}) {
    PStream in(c.bytes);
    const ObjectsFile::ReadResult r = ObjectsFile::read(in);
    EXPECT_FALSE(r.complete);
    EXPECT_TRUE(r.entries.empty());
    EXPECT_NE(r.problem.find(c.problem), std::string::npos) << r.problem.c_str();
  }
}

} // namespace
