// Chunk layouts: the bytes of each layer as written, the version rewrite of
// "L", what a failed nested layer leaves behind, and the compact headers of
// old files. (A manager's nesting of records is in ObjectsFileTest.)
#include <gtest/gtest.h>

#include "host/core/Cookie.h"
#include "host/notify/Log.h"
#include "host/stream/PStream.h"
#include "node_ui/NodeUIPosManager.h"
#include "tests/support/CorpusChains.h"

using namespace testsupport;

// A layer of the tests' own over the root.
class ProbeOuter : public Streamable {
  STRM_DECLARE_LAYER(ProbeOuter, Streamable)
public:
  void pack(PStream& s) const { s.setUnsignedLong(value); }
  void unpack(PStream& s) { value = s.getUnsignedLong(); }
  uint32_t value = 0xA1A2A3A4;
};

// A position record with one more layer, which can fail to pack.
class FailingPosRec : public NodeUIPosRec {
  STRM_DECLARE_LAYER(FailingPosRec, NodeUIPosRec)
public:
  void pack(PStream& s) const {
    s.setCookedChar(0x5A);
    if (fail) s.setError();
  }
  void unpack(PStream& s) { s.getCookedChar(); }
  bool fail = false;
};

STRM_DEFINE_LAYER(ProbeOuter, "A")
STRM_DEFINE_LAYER(FailingPosRec, "R")

namespace {

std::vector<uint8_t> written(const Streamable& object, int expectedResult = StreamResult::packed) {
  PStream s;
  EXPECT_EQ(s.writeObject(object), expectedResult);
  return s.bytes();
}

TEST(ChunkLayout, PositionRecordLayersAsWritten) {
  NodeUIPosRec rec(nullptr, IdStamp(1, 2, 3), sampleCookie());
  rec.setDrawPosition(1.5, -2.0, false);
  rec.setManualPos(3.0, 4.0);
  const PosRecImage image{IdStamp(1, 2, 3), cookieText, 1.5, -2.0, 3.0, 4.0, 1};

  // Stated field by field: root 2.0 with no data, "L" rewritten as 1.1 with
  // the cookie text, "K" 1.0 with its 33 bytes.
  const std::vector<uint8_t> l = recBaseOwn(image);
  const std::vector<uint8_t> k = posOwn(image);
  ASSERT_EQ(l.size(), 1 + 12 + 4 + 36u);
  ASSERT_EQ(k.size(), 33u);
  const uint32_t kChunk = 15 + 33, lChunk = 15 + static_cast<uint32_t>(l.size());
  ByteWriter expected;
  expected.header("$", 2, 0, 0, lChunk + kChunk);
  expected.header("L", 1, 1, static_cast<uint32_t>(l.size()), static_cast<uint32_t>(l.size()) + kChunk).raw(l);
  expected.header("K", 1, 0, 33, 33).raw(k);
  EXPECT_EQ(written(rec), expected.bytes);
  EXPECT_EQ(expected.bytes, posRecChain(image));
}

TEST(ChunkLayout, FailedNestedLayerLeavesPlaceholdersAndTheFirstHeaderOfL) {
  FailingPosRec rec;
  const PosRecImage image{IdStamp(), invalid_cookie.asString().str()};
  std::vector<LayerImage> layers = posRecLayers(image);
  layers.push_back({"R", 1, 0, {0x5A}});
  EXPECT_EQ(written(rec), chainImage(layers));

  // The failing layer finishes its own header. The layers around it keep
  // their placeholder sizes, and "L" the 1.0 it was first written with.
  rec.fail = true;
  ByteWriter expected;
  expected.header("$", 2, 0, 0xFFFFFFFF, 0xFFFFFFFF);
  expected.header("L", 1, 0, 0xFFFFFFFF, 0xFFFFFFFF).raw(recBaseOwn(image));
  expected.header("K", 1, 0, 0xFFFFFFFF, 0xFFFFFFFF).raw(posOwn(image));
  expected.header("R", 1, 0, 1, 1).u8(0x5A);
  EXPECT_EQ(written(rec, StreamResult::error), expected.bytes);
}

TEST(ChunkLayout, CompactRootSwitchesEveryFollowingHeaderIncludingItsOwnSizes) {
  // Escapes everywhere: the root's total, the minor 255 and the sizes 65535.
  std::vector<uint8_t> own(65535, 0);
  own[0] = 0x11;
  const std::vector<uint8_t> bytes = compactChainImage({{"$", 1, 0, {}}, {"A", 1, 255, own}});
  // "$": count and name (5 bytes), major 1, minor, own size 0 (16-bit), escaped total.
  ASSERT_EQ(bytes[5], 1);
  ASSERT_EQ(bytes[9], 0xFF);
  ASSERT_EQ(bytes[10], 0xFF);

  PStream s(bytes);
  LogChannel::Capture log(Log::channel());
  ProbeOuter probe;
  EXPECT_EQ(probe.STRM_hierarchyUnpack(s), StreamResult::layerRead);
  EXPECT_EQ(probe.value, 0x11u);
  EXPECT_EQ(s.formatNumber(), 1);
  EXPECT_TRUE(s.eof());
  EXPECT_TRUE(s.errorText().empty());
  ASSERT_EQ(log.messages().size(), 1u);
  EXPECT_EQ(log.messages()[0], "Warning: Not all object data was read while unpacking object ProbeOuter, layer "
                               "ProbeOuter v1.255, 65531/65535 bytes unread.\n");
}

} // namespace
