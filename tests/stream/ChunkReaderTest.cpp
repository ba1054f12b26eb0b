// The chunk reader, fed byte images stated by hand: what each header problem
// returns, the exact text it reports, and where it leaves the stream. (Other
// damage is replayed from the corpus of damaged files in tests/node_ui.)
#include <gtest/gtest.h>

#include "host/core/Cookie.h"
#include "host/stream/PStream.h"
#include "node_ui/NodeUIPosManager.h"
#include "tests/support/CorpusChains.h"

using namespace testsupport;

namespace {

const PosRecImage sample{IdStamp(4, 5, 6), cookieText, 1.25, -2.5, 0.75, 8.0, 1};
const IdStamp constructorId(7, 7, 7);

std::vector<uint8_t> join(std::vector<uint8_t> a, const std::vector<uint8_t>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

void expectSample(const NodeUIPosRec& rec) {
  EXPECT_EQ(rec.getNodeId(), sample.node);
  EXPECT_EQ(rec.getCookie().asString(), cookieText);
  EXPECT_EQ(rec.getDrawPosition(), XY<double>(sample.drawX, sample.drawY));
  EXPECT_EQ(rec.getManualPos(), XY<double>(sample.manualX, sample.manualY));
  EXPECT_TRUE(rec.isManualPosSet());
}

TEST(ChunkReader, AcceptsShortAndLongLayerNames) {
  std::vector<LayerImage> layers = posRecLayers(sample);
  for (bool longNames : {false, true}) {
    if (longNames) {
      layers[0].name = "Streamable";
      layers[1].name = "NodeUIRecBase";
      layers[2].name = "NodeUIPosRec";
    }
    PStream s(chainImage(layers));
    NodeUIPosRec rec;
    EXPECT_EQ(s.readObject(rec), StreamResult::layerRead);
    expectSample(rec);
    EXPECT_TRUE(s.eof());
    EXPECT_TRUE(s.errorText().empty()) << s.errorText().c_str();
  }
}

TEST(ChunkReader, VersionOneZeroRecordKeepsItsCookieAndIsWrittenBackAsOneOne) {
  const Cookie own = Cookie::generate(3, 4);
  std::vector<LayerImage> layers = posRecLayers(sample);
  layers[1] = {"L", 1, 0, recBaseOwn(sample, false)};
  PStream in(chainImage(layers));
  NodeUIPosRec rec(nullptr, constructorId, own);
  ASSERT_EQ(in.readObject(rec), StreamResult::layerRead);
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(rec.getNodeId(), sample.node);
  EXPECT_EQ(rec.getCookie(), own);
  EXPECT_EQ(NodeUIRecBase::STRM_layerVersion(&rec), (StreamLayerVersion{1, 1}));

  PStream out;
  ASSERT_EQ(out.writeObject(rec), StreamResult::packed);
  PosRecImage expected = sample;
  expected.cookie = own.asString().str();
  EXPECT_EQ(out.bytes(), posRecChain(expected));
}

TEST(ChunkReader, WrongLayerNameSkipsTheRestOfTheObjectAndTheNextOneLoads) {
  struct Case {
    std::size_t layer;
    const char* text;
    bool baseRead;
  };
  for (const Case& c : {Case{1, "Expected short name 'L' for layer NodeUIRecBase, got P.", false},
                        Case{2, "Expected short name 'K' for layer NodeUIPosRec, got P.", true}}) {
    SCOPED_TRACE(c.text);
    std::vector<LayerImage> layers = posRecLayers(sample);
    layers[c.layer].name = "P";
    const std::vector<uint8_t> damaged = chainImage(layers);
    PStream s(join(damaged, posRecChain(sample)));
    NodeUIPosRec first(nullptr, constructorId, invalid_cookie);
    EXPECT_EQ(s.readObject(first), StreamResult::wrongLayerName);
    EXPECT_EQ(s.errorText(), c.text);
    EXPECT_FALSE(s.error());
    EXPECT_EQ(s.position(), damaged.size());
    EXPECT_EQ(first.getNodeId(), c.baseRead ? sample.node : constructorId);
    EXPECT_EQ(first.getDrawPosition(), XY<double>(0, 0)) << "the position layer as a constructor leaves it";
    EXPECT_FALSE(first.isManualPosSet());

    NodeUIPosRec second;
    EXPECT_EQ(s.readObject(second), StreamResult::layerRead);
    expectSample(second);
  }
}

TEST(ChunkReader, OversizedCompactVersions) {
  for (bool major : {true, false}) {
    std::vector<LayerImage> layers = posRecLayers(sample);
    layers[0].major = 1;
    std::vector<uint8_t> bytes = compactChainImage(layers);
    // "L" follows the 11-byte compact root header; after its name come its
    // major and minor, one byte each. Widen one of them to the escaped 256.
    const auto at = bytes.begin() + 11 + 5 + (major ? 0 : 1);
    *at = 0xFF;
    bytes.insert(at + 1, {0x00, 0x01});
    PStream s(bytes);
    NodeUIPosRec rec;
    EXPECT_EQ(s.readObject(rec), StreamResult::error);
    EXPECT_EQ(s.errorText(), major ? " Strm1.0 Object has oversized major rev (L). "
                                   : " Strm1.0 Object has oversized minor rev (L). ");
    EXPECT_TRUE(s.error());
  }
}

} // namespace
