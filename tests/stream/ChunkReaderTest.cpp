// The chunk reader, fed byte images stated by hand: what each header problem
// returns, the exact text it reports, and where it leaves the stream.
#include <cstring>

#include <gtest/gtest.h>

#include "host/core/Cookie.h"
#include "host/notify/Log.h"
#include "host/stream/PStream.h"
#include "host/stream/StreamTraceSink.h"
#include "node_ui/NodeUIPosManager.h"
#include "tests/support/CorpusChains.h"

using namespace testsupport;

namespace {

const char* const cookieText = "5f1c0a3e9b7d4e21a8c6f0b2d4e6a8c0.1.0";
const PosRecImage sample{IdStamp(4, 5, 6), cookieText, 1.25, -2.5, 0.75, 8.0, 1};
const IdStamp constructorId(7, 7, 7);

std::vector<uint8_t> join(std::vector<uint8_t> a, const std::vector<uint8_t>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

void expectSample(const NodeUIPosRec& rec) {
  EXPECT_EQ(rec.getNodeId(), sample.node);
  EXPECT_EQ(rec.getCookie().asString(), cookieText);
  EXPECT_EQ(rec.getDrawPosition().x, sample.drawX);
  EXPECT_EQ(rec.getDrawPosition().y, sample.drawY);
  EXPECT_EQ(rec.getManualPos().x, sample.manualX);
  EXPECT_EQ(rec.getManualPos().y, sample.manualY);
  EXPECT_TRUE(rec.isManualPosSet());
}

// The position layer as a constructor leaves it.
void expectNoPositions(const NodeUIPosRec& rec) {
  EXPECT_EQ(rec.getDrawPosition().x, 0.0);
  EXPECT_EQ(rec.getDrawPosition().y, 0.0);
  EXPECT_FALSE(rec.isManualPosSet());
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
    expectNoPositions(first);

    NodeUIPosRec second;
    EXPECT_EQ(s.readObject(second), StreamResult::layerRead);
    expectSample(second);
  }
}

TEST(ChunkReader, WrongNameWithHugeTotalMovesToTheEndWithoutWrapping) {
  ByteWriter w;
  w.raw(chainImage({{"$", 2, 0, {}}, {"L", 1, 1, recBaseOwn(sample)}}));
  w.header("P", 1, 0, 33, 0xFFFFFFFF).raw(posOwn(sample)).raw(std::vector<uint8_t>(64, 0xEE));
  PStream s(w.bytes);
  NodeUIPosRec rec;
  EXPECT_EQ(s.readObject(rec), StreamResult::wrongLayerName);
  EXPECT_EQ(s.position(), s.size());
}

TEST(ChunkReader, OwnSizeZeroIsAcceptedWhateverTheName) {
  // An empty "L" under another name: accepted, and "K" is still read.
  std::vector<LayerImage> layers = posRecLayers(sample);
  layers[1] = {"Q", 9, 9, {}};
  PStream s(chainImage(layers));
  NodeUIPosRec rec(nullptr, constructorId, invalid_cookie);
  EXPECT_EQ(s.readObject(rec), StreamResult::layerRead);
  EXPECT_EQ(rec.getNodeId(), constructorId);
  EXPECT_EQ(rec.getDrawPosition().x, sample.drawX);
  EXPECT_TRUE(s.errorText().empty());

  // An empty last layer, even at the very end of the stream.
  layers = posRecLayers(sample);
  layers[2] = {"Z", 1, 0, {}};
  PStream t(chainImage(layers));
  NodeUIPosRec other;
  EXPECT_EQ(t.readObject(other), StreamResult::layerRead);
  EXPECT_EQ(other.getNodeId(), sample.node);
  expectNoPositions(other);
  EXPECT_TRUE(t.errorText().empty());
  EXPECT_FALSE(t.error());
}

TEST(ChunkReader, EndOfFileRightAfterAHeader) {
  const std::vector<uint8_t> upToK = chainImage({{"$", 2, 0, {}}, {"L", 1, 1, recBaseOwn(sample)}});
  const char* const eofText = "Unexpected end-of-file while unpacking NodeUIRecBase.NodeUIPosRec, layer NodeUIPosRec.";
  struct Case {
    const char* what;
    std::vector<uint8_t> tail;
    int result;
  };
  for (const Case& c : {Case{"sizes 0", ByteWriter().header("K", 1, 0, 0, 0).bytes, StreamResult::layerRead},
                        Case{"sizes 33", ByteWriter().header("K", 1, 0, 33, 33).bytes, StreamResult::unexpectedEof},
                        Case{"no header", {}, StreamResult::unexpectedEof}}) {
    SCOPED_TRACE(c.what);
    PStream s(join(upToK, c.tail));
    NodeUIPosRec rec;
    EXPECT_EQ(s.readObject(rec), c.result);
    EXPECT_EQ(rec.getNodeId(), sample.node);
    expectNoPositions(rec);
    if (c.result == StreamResult::layerRead) {
      EXPECT_TRUE(s.errorText().empty());
      EXPECT_FALSE(s.error());
    } else {
      EXPECT_EQ(s.errorText(), eofText);
      EXPECT_TRUE(s.error());
    }
  }
}

TEST(ChunkReader, UnreadBytesAreAWarningAndSkipped) {
  std::vector<LayerImage> layers = posRecLayers(sample);
  layers[2].minor = 1;
  layers[2].own.insert(layers[2].own.end(), {0xAB, 0xCD, 0xEF});
  const std::vector<uint8_t> newer = chainImage(layers);
  PStream s(join(newer, posRecChain(sample)));
  LogChannel::Capture log(Log::channel());
  NodeUIPosRec rec;
  EXPECT_EQ(s.readObject(rec), StreamResult::layerRead);
  expectSample(rec);
  EXPECT_EQ(s.position(), newer.size());
  EXPECT_TRUE(s.errorText().empty());
  EXPECT_FALSE(s.error());
  EXPECT_EQ(log.joined(), "Warning: Not all object data was read while unpacking object NodeUIRecBase.NodeUIPosRec, "
                          "layer NodeUIPosRec v1.1, 3/36 bytes unread.\n");
  NodeUIPosRec next;
  EXPECT_EQ(s.readObject(next), StreamResult::layerRead);
}

TEST(ChunkReader, OverreadIsAnErrorAndTheStreamStaysWhereTheReaderStopped) {
  std::vector<LayerImage> layers = posRecLayers(sample);
  layers[2].own.resize(31);
  const std::vector<uint8_t> older = chainImage(layers);
  PStream s(join(older, std::vector<uint8_t>{0x01, 0x02, 0x03, 0x04}));
  NodeUIPosRec rec;
  EXPECT_EQ(s.readObject(rec), StreamResult::error);
  EXPECT_EQ(s.errorText(), "Error: Unpacker read beyond end of chunk while unpacking object "
                           "NodeUIRecBase.NodeUIPosRec, layer NodeUIPosRec v1.0, 2 bytes overread.\n");
  EXPECT_TRUE(s.error());
  EXPECT_EQ(s.position(), older.size() + 2);
}

TEST(ChunkReader, CompactRecordThenRawRecordInOneStream) {
  std::vector<LayerImage> layers = posRecLayers(sample);
  layers[0].major = 1;
  const std::vector<uint8_t> compact = compactChainImage(layers);
  ASSERT_LT(compact.size(), posRecChain(sample).size());
  PStream s(join(compact, posRecChain(sample)));
  NodeUIPosRec first, second;
  EXPECT_EQ(s.readObject(first), StreamResult::layerRead);
  EXPECT_EQ(s.formatNumber(), 1);
  EXPECT_EQ(s.position(), compact.size());
  expectSample(first);
  // Read in compact mode, the next root's name and version bytes are the same;
  // its major 2 switches back before its sizes.
  EXPECT_EQ(s.readObject(second), StreamResult::layerRead);
  EXPECT_EQ(s.formatNumber(), 2);
  expectSample(second);
  EXPECT_TRUE(s.eof());
  EXPECT_TRUE(s.errorText().empty());
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

TEST(ChunkReader, UnknownHeaderEncoding) {
  std::vector<LayerImage> layers = posRecLayers(sample);
  layers[0].major = 3;
  PStream s(chainImage(layers));
  NodeUIPosRec rec;
  EXPECT_EQ(s.readObject(rec), StreamResult::error);
  EXPECT_EQ(s.errorText(), "Unrecognized version for Streamable base");
  EXPECT_TRUE(s.error());

  PStream t(posRecChain(sample));
  t.setFormatNumber(0);
  EXPECT_EQ(t.readObject(rec), StreamResult::error);
  EXPECT_EQ(t.errorText(), "Unrecognized version for Streamable base");
}

TEST(ChunkReader, BuildDiscardsTheObjectOnlyOnError) {
  std::vector<LayerImage> wrongName = posRecLayers(sample), shortK = posRecLayers(sample);
  wrongName[2].name = "P";
  shortK[2].own.resize(31);
  struct Case {
    std::vector<uint8_t> bytes;
    int result;
  };
  const std::vector<uint8_t> valid = posRecChain(sample);
  for (const Case& c : {Case{valid, StreamResult::layerRead}, Case{chainImage(wrongName), StreamResult::wrongLayerName},
                        Case{{valid.begin(), valid.end() - 33}, StreamResult::unexpectedEof},
                        Case{join(chainImage(shortK), {0, 0}), StreamResult::error}}) {
    PStream s(c.bytes);
    Ux::Ptr<NodeUIPosRec> built = NodeUIPosRec::build(s);
    EXPECT_EQ(s.lastObjectResult(), c.result);
    EXPECT_EQ(built == nullptr, c.result == StreamResult::error) << c.result;
  }
}

// Collects the chunk tree as "name@depth" and each chunk's end.
class TraceCollector : public StreamTraceSink {
public:
  void chunkHeader(const Header& h) override {
    names.push_back(h.name.str() + "@" + std::to_string(open.size()));
    headers.push_back(h);
    open.push_back(ends.size());
    ends.push_back({0, 0});
  }
  void chunkEnd(int code, uint64_t position) override {
    ASSERT_FALSE(open.empty());
    ends[open.back()] = {code, position};
    open.pop_back();
  }
  std::vector<std::string> names;
  std::vector<Header> headers;
  std::vector<std::pair<int, uint64_t>> ends;
  std::vector<std::size_t> open;
};

TEST(ChunkReader, TraceSinkSeesEveryChunkNestedInItsOwner) {
  const std::vector<uint8_t> a = posRecChain(sample);
  const std::vector<uint8_t> bytes = posManagerChain({a, a});
  PStream s(bytes);
  TraceCollector trace;
  s.setTraceSink(&trace);
  NodeUIPosManager manager;
  ASSERT_EQ(s.readObject(manager), StreamResult::layerRead);
  EXPECT_EQ(manager.recordCount(), 2u);
  EXPECT_EQ(trace.names,
            (std::vector<std::string>{"$@0", "T@0", "N@0", "$@1", "L@1", "K@1", "$@1", "L@1", "K@1", "J@0"}));
  EXPECT_TRUE(trace.open.empty());
  for (const auto& [code, at] : trace.ends) EXPECT_EQ(code, StreamResult::layerRead);
  // "N" holds the count and both records; it ends where "J" begins.
  const auto& n = trace.headers[2];
  EXPECT_EQ(n.ownSize, 4 + 2 * a.size());
  EXPECT_EQ(trace.ends[2].second, trace.headers[9].offset);
  EXPECT_EQ(trace.headers[3].offset, n.dataStart + 4);
  EXPECT_EQ(trace.headers[5].expectedLayer, "NodeUIPosRec");
  EXPECT_EQ(trace.headers[9].format, 2);
  EXPECT_EQ(trace.ends[9].second, bytes.size());
}

} // namespace
