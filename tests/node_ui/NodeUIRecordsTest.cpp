// Position records, their managers and the clients that follow them.
#include <bit>
#include <limits>

#include <gtest/gtest.h>

#include "host/notify/Log.h"
#include "node_ui/NodeUIClients.h"
#include "node_ui/NodeUIPosManager.h"
#include "node_ui/VidRouting.h"
#include "tests/support/CorpusChains.h"
#include "tests/support/NotifyRecorder.h"
#include "tests/support/TestEdit.h"

using namespace testsupport;

namespace {

const IdStamp n1(1, 0, 1), n2(1, 0, 2), n3(1, 0, 3), n4(1, 0, 4);

std::vector<uint8_t> packed(const Streamable& object) {
  PStream s;
  EXPECT_EQ(s.writeObject(object), StreamResult::packed);
  return s.bytes();
}

uint64_t bitsOf(double v) { return std::bit_cast<uint64_t>(v); }

// Counts the value changes one server reports.
struct Heard : ValObserver<double> {
  explicit Heard(ValServer<double>& server) : ValObserver<double>([this](ValServer<double>*) { ++count; }) {
    registerWith(&server);
  }
  int count = 0;
};

std::vector<IdStamp> idsOf(const NodeUIManagerBase& m) {
  std::vector<IdStamp> ids;
  for (const NodeUIRecBase* r : m.records().as<NodeUIRecBase>()) ids.push_back(r->getNodeId());
  return ids;
}

TEST(NodeUIPosRec, ReadRecordIsHeardByObserversOfItsValues) {
  NodeUIPosRec rec(nullptr, IdStamp(0xFFFFFFFF, 0, 1), Cookie::generate(65535, 1));
  rec.drawX() = -0.0;
  rec.setManualPos(std::bit_cast<double>(0xFFF8DEADBEEF0001ull), -std::numeric_limits<double>::infinity());
  const std::vector<uint8_t> bytes = packed(rec);

  PStream in(bytes);
  NodeUIPosRec back;
  Heard x(back.drawX()), y(back.drawY());
  ASSERT_EQ(in.readObject(back), StreamResult::layerRead);
  EXPECT_EQ(bitsOf(back.getDrawPosition().x), bitsOf(-0.0));
  EXPECT_EQ(bitsOf(back.getManualPos().x), 0xFFF8DEADBEEF0001ull);
  EXPECT_EQ(packed(back), bytes);
  // Observers of the draw values hear them arrive, and the record still
  // follows its own servers, once each.
  EXPECT_EQ(std::pair(x.count, y.count), std::pair(1, 1));
  EXPECT_EQ(back.registrationCount(), 2u);
}

// A follower hears every coordinate change, quiet ones too, until it stops
// following; assignment leaves each record's followers as they were.
TEST(NodeUIPosRec, FollowersHearEachCoordinateQuietOrNot) {
  struct Counter final : NodeUIPosRec::DrawFollower {
    virtual ~Counter() = default;
    int moves = 0;
    void drawMoved(NodeUIPosRec&) override { ++moves; }
  } a, b;
  NodeUIPosRec rec, other;
  rec.addDrawFollower(&a);
  rec.addDrawFollower(&a);
  rec.addDrawFollower(&b);
  rec.setDrawPosition(1, 2, false);
  rec.drawY() = 5;
  EXPECT_EQ(std::pair(a.moves, b.moves), std::pair(3, 3));
  rec.removeDrawFollower(&a);
  other = rec;
  rec.setDrawPosition(0, 0, false);
  other.setDrawPosition(9, 9, false);
  EXPECT_EQ(std::pair(a.moves, b.moves), std::pair(3, 5));
}

TEST(NodeUIPosRec, AssignmentCopiesDrawYIntoBothQuietly) {
  const Cookie cookie = Cookie::generate();
  NodeUIPosRec source(nullptr, n1, cookie);
  source.setDrawPosition(10, 20, false);
  source.setManualPos(1, 2);
  source.setExtraValue(77);

  NodeUIPosRec target;
  NotifyRecorder messages(target.getNotify());
  Heard x(target.drawX());
  target = source;
  EXPECT_EQ(target.getDrawPosition(), XY<double>(20, 20));
  EXPECT_EQ(target.getManualPos(), XY<double>(1, 2));
  EXPECT_TRUE(target.isManualPosSet());
  EXPECT_EQ(std::tuple(target.getExtraValue(), target.getNodeId(), target.getCookie()), std::tuple(77u, n1, cookie));
  EXPECT_TRUE(messages.heard.empty());
  EXPECT_EQ(x.count, 0);

  // assign() copies the same; a null or foreign source changes nothing, not
  // even the shared base part.
  NodeUIPosRec viaAssign;
  viaAssign.assign(&source);
  EXPECT_EQ(viaAssign.getDrawPosition().x, 20.0);
  NodeUIRecBase plain(nullptr, n2, Cookie::generate());
  for (const Streamable* other : {static_cast<const Streamable*>(nullptr), static_cast<const Streamable*>(&plain)}) {
    viaAssign.assign(other);
    EXPECT_EQ(viaAssign.getNodeId(), n1);
  }
}

class RecClient : public NodeUIRecClient {
public:
  void nodeRecUpdateNotify(const NotifyMsg& msg) override { texts.push_back(msg.text.str()); }
  std::vector<std::string> texts;
};

TEST(NodeUIPosRec, SetDrawPositionSendsAtMostOneUpdate) {
  NodeUIPosRec rec;
  RecClient client;
  client.registerWith(&rec);
  Heard x(rec.drawX()), y(rec.drawY());
  auto updates = [&] { return client.texts.size(); };

  rec.setDrawPosition(1, 2, true);
  rec.setManualPos(4, 4); // quiet
  EXPECT_EQ(updates(), 1u);
  EXPECT_EQ(x.count, 1);
  EXPECT_EQ(y.count, 1);

  rec.setDrawPosition(XY<double>{1, 2}, true); // unchanged: nothing at all
  EXPECT_EQ(updates(), 1u);
  EXPECT_EQ(x.count, 1);

  rec.setDrawPosition(3, 2, false); // both servers are set; the record stays quiet
  EXPECT_EQ(updates(), 1u);
  EXPECT_EQ(x.count, 2);
  EXPECT_EQ(y.count, 2);

  rec.drawX() = 9; // a change from outside reaches the record's observers
  EXPECT_EQ(updates(), 2u);

  rec.suspendNotifications();
  rec.setDrawPosition(5, 5, true);
  EXPECT_EQ(updates(), 2u);
  rec.resumeNotifications();
  EXPECT_EQ(client.texts, (std::vector<std::string>{"", ""}));
  client.registerWith(nullptr);
  rec.setDrawPosition(2, 2, true);
  EXPECT_EQ(updates(), 2u);
}

TEST(NodeUIPosManager, CreatePosRecOverloadsDifferAndPackWritesOnlyLiveNodes) {
  ScopedEdit edit;
  Ux::Ptr<FXGraphNodeBase> node1 = edit.material(n1), node2 = edit.material(n2);
  edit.material(n3);
  Ux::Ptr<NodeUIPosManager> manager = NodeUIPosManager::getManagerFor(edit.edit());
  ASSERT_TRUE(manager);
  edit->setDirty(false);
  NotifyRecorder messages(manager->getNotify());

  NodeUIPosRec* a = manager->createPosRec(n1, edit->getCookie());
  ASSERT_NE(a, nullptr);
  EXPECT_EQ(a->getCookie(), edit->getCookie());
  EXPECT_FALSE(a->isManualPosSet());
  EXPECT_EQ(a->getManager(), manager.get());
  EXPECT_EQ(a->registeredNode(), node1.get());
  EXPECT_TRUE(edit->isDirty());
  ASSERT_EQ(messages.count("nodeRecAdded"), 1u);
  EXPECT_EQ(messages.heard[0].text, formatText("%p", static_cast<void*>(a)).str());

  // An existing record is returned by one overload, refused by the other.
  EXPECT_EQ(manager->createPosRec(n1, Cookie::generate()), a);
  EXPECT_EQ(manager->createPosRec(n1, 5, 6), nullptr);
  EXPECT_FALSE(a->isManualPosSet());
  NodeUIPosRec* b = manager->createPosRec(n2, 5, 6);
  ASSERT_NE(b, nullptr);
  EXPECT_EQ(b->getCookie(), invalid_cookie);
  EXPECT_TRUE(b->isManualPosSet());
  EXPECT_EQ(b->getManualPos(), XY<double>(5, 6));
  EXPECT_EQ(b->getDrawPosition(), XY<double>(5, 6));
  EXPECT_EQ(b->registeredNode(), node2.get());
  EXPECT_EQ(messages.count("nodeRecAdded"), 2u);
  EXPECT_EQ(messages.count("nodeRecUpdate"), 0u);

  // Packing drops, quietly, records of nodes gone from the edit and those
  // that name no live edit.
  manager->createPosRec(n3, edit->getCookie());
  manager->createPosRec(n4, 1, 1);
  edit->getTagBag().removeObject(n1);
  messages.heard.clear();
  const std::vector<uint8_t> bytes = packed(*manager);
  EXPECT_EQ(u32At(bytes, 3 * 15), 1u); // the count, after the "$", "T" and "N" headers
  EXPECT_EQ(idsOf(*manager), (std::vector<IdStamp>{n3}));
  EXPECT_TRUE(messages.heard.empty());
  PStream in(bytes);
  NodeUIPosManager back;
  ASSERT_EQ(in.readObject(back), StreamResult::layerRead);
  EXPECT_EQ(idsOf(back), (std::vector<IdStamp>{n3}));
  EXPECT_TRUE(in.eof());
}

TEST(NodeUIPosManager, GetManagerForIsLazySharedAndAdoptsAReadManager) {
  EXPECT_EQ(NodeUIPosManager::getManagerFor(EditPtr()), nullptr);
  {
    ScopedEdit edit;
    Ux::Ptr<NodeUIPosManager> first = NodeUIPosManager::getManagerFor(edit.edit());
    ASSERT_TRUE(first);
    EXPECT_EQ(NodeUIPosManager::getManagerFor(edit.edit()), first);
    EXPECT_EQ(edit->openObjectInternal("NodePosManager").get(), first.get());
  }

  // A manager read with the edit: records are neither pruned nor registered
  // until the manager is asked for, and then only live ones stay.
  ScopedEdit edit;
  Ux::Ptr<FXGraphNodeBase> node1 = edit.material(n1);
  const std::string cookie = edit->getCookie().asString().str();
  PStream in(posManagerChain({posRecChain({n1, cookie}), posRecChain({n3, cookie})}));
  Ux::Ptr<NodeUIPosManager> loaded(new NodeUIPosManager());
  ASSERT_EQ(in.readObject(*loaded), StreamResult::layerRead);
  ASSERT_EQ(loaded->recordCount(), 2u);
  EXPECT_EQ(loaded->openPosRec(n1)->registeredNode(), nullptr);
  edit->bindObjectToEdit("NodePosManager", loaded);

  EXPECT_EQ(NodeUIPosManager::getManagerFor(edit.edit()), loaded);
  EXPECT_EQ(loaded->getEdit(), edit.edit());
  EXPECT_EQ(idsOf(*loaded), (std::vector<IdStamp>{n1}));
  EXPECT_EQ(loaded->openPosRec(n1)->registeredNode(), node1.get());
}

TEST(NodeUIManagerBase, DeleteAndSuspension) {
  ScopedEdit edit;
  for (const IdStamp& id : {n1, n2}) edit.material(id);
  Ux::Ptr<NodeUIPosManager> manager = NodeUIPosManager::getManagerFor(edit.edit());
  NodeUIPosManager other;
  NodeUIPosRec* foreign = other.createPosRec(n1, edit->getCookie());
  NodeUIPosRec* own = manager->createPosRec(n1, edit->getCookie());
  edit->setDirty(false);
  NotifyRecorder heard(manager->getNotify()), heardOther(other.getNotify());

  manager->deleteRec(foreign); // not its record: nothing happens
  EXPECT_EQ(std::pair(manager->recordCount(), other.recordCount()), (std::pair<std::size_t, std::size_t>(1, 1)));
  EXPECT_TRUE(heard.heard.empty() && heardOther.heard.empty());
  EXPECT_FALSE(edit->isDirty());

  // Suspended: the list still changes and the edit is still marked.
  manager->suspendNotifications();
  manager->deleteRec(own);
  NodeUIPosRec* second = manager->createPosRec(n2, edit->getCookie());
  manager->sendGeneralUpdateNotification("GroupUpdateMsg");
  EXPECT_EQ(idsOf(*manager), (std::vector<IdStamp>{n2}));
  EXPECT_TRUE(edit->isDirty());
  EXPECT_TRUE(heard.heard.empty());
  manager->resumeNotifications();

  edit->setDirty(false);
  manager->nodeIsBeingDestroyed(second); // silent, and not an edit change
  EXPECT_EQ(manager->recordCount(), 0u);
  EXPECT_FALSE(edit->isDirty());
  manager->sendGeneralUpdateNotification("GroupUpdateMsg");
  ASSERT_EQ(heard.heard.size(), 1u);
  EXPECT_EQ(heard.heard[0].type, "NodeManagerGeneral");
  EXPECT_EQ(heard.heard[0].text, "GroupUpdateMsg");
}

class ManagerClient : public NodeUIManagerClient {
public:
  void newNodeRecNotify(NodeUIRecBase* rec) override { added.push_back(rec); }
  // The record must still be alive while its deletion is announced.
  void nodeRecDeletedNotify(NodeUIRecBase* rec) override { deleted.push_back(rec->getNodeId()); }
  void nodeManagerGeneralNotify(const LightweightString<char>& text) override { general.push_back(text.str()); }
  std::vector<NodeUIRecBase*> added;
  std::vector<IdStamp> deleted;
  std::vector<std::string> general;
};

TEST(NodeUIManagerClient, FollowsOneManagerAtATime) {
  NodeUIPosManager manager, other;
  ManagerClient client;
  client.registerWith(&manager);
  NodeUIPosRec* rec = manager.createPosRec(n1, invalid_cookie);
  manager.sendGeneralUpdateNotification("GroupUpdateMsg");
  manager.deleteRec(rec);
  EXPECT_EQ(client.added, (std::vector<NodeUIRecBase*>{rec}));
  EXPECT_EQ(client.deleted, (std::vector<IdStamp>{n1}));
  EXPECT_EQ(client.general, (std::vector<std::string>{"GroupUpdateMsg"}));

  client.registerWith(&other);
  EXPECT_EQ(client.subscriptionCount(), 3u);
  manager.createPosRec(n2, invalid_cookie);
  NodeUIPosRec* fromOther = other.createPosRec(n3, invalid_cookie);
  EXPECT_EQ(client.added, (std::vector<NodeUIRecBase*>{rec, fromOther}));
  client.registerWith(nullptr);
  EXPECT_EQ(client.subscriptionCount(), 0u);
}

TEST(NodeUIManagerBase, ReadingEmptiesTheListAndNeverTrustsTheCount) {
  NodeUIPosManager manager;
  manager.createPosRec(n1, invalid_cookie);
  PStream empty(posManagerChain({}));
  EXPECT_EQ(empty.readObject(manager), StreamResult::layerRead);
  EXPECT_EQ(manager.recordCount(), 0u);

  // Without a record factory nothing can be read: each record is tried and
  // the data is left for the layer reader to skip.
  const std::vector<uint8_t> rec = posRecChain({n1, "x"});
  const std::vector<uint8_t> own = ByteWriter().u32(2).raw(rec).raw(rec).bytes;
  PStream two(chainImage({{"$", 2, 0, {}}, {"T", 1, 0, {}}, {"N", 1, 0, own}}));
  LogChannel::Capture debug(debugChannel()), log(Log::channel());
  NodeUIManagerBase base;
  EXPECT_EQ(two.readObject(base), StreamResult::layerRead);
  EXPECT_EQ(base.recordCount(), 0u);
  EXPECT_EQ(debug.messages(),
            std::vector<std::string>(2, "Danger Will Robinson! ::createNewNodeRec() returned NULL!\n"));
  EXPECT_EQ(log.joined(),
            formatText("Warning: Not all object data was read while unpacking object "
                       "Taggable.NodeUIManagerBase, layer NodeUIManagerBase v1.0, %zu/%zu bytes unread.\n",
                       own.size() - 4, own.size())
                .str());

  // With no bytes after the count, each record is still tried as the format
  // says: nothing is read and nothing is refused.
  PStream bare(chainImage({{"$", 2, 0, {}}, {"T", 1, 0, {}}, {"N", 1, 0, ByteWriter().u32(2).bytes}}));
  NodeUIManagerBase noBytes;
  EXPECT_EQ(bare.readObject(noBytes), StreamResult::layerRead);
  EXPECT_EQ(debug.messages().size(), 4u);
  EXPECT_EQ(bare.errorText(), "");

  // A count of 4294967295 without a factory: a bounded number of tries, then
  // the log says the rest were not read; the read itself is fine.
  PStream lying(chainImage({{"$", 2, 0, {}},
                            {"T", 1, 0, {}},
                            {"N", 1, 0, ByteWriter().u32(0xFFFFFFFF).raw(std::vector<uint8_t>(25)).bytes}}));
  NodeUIManagerBase other;
  EXPECT_EQ(lying.readObject(other), StreamResult::layerRead);
  EXPECT_EQ(debug.messages().size(), 4u + NodeUIManagerBase::maxEmptyPasses);
  EXPECT_EQ(lying.errorText(), "");
  EXPECT_NE(log.joined().find("no record could be made for 64 of 4294967295 records"), std::string::npos)
      << log.joined();
}

// A count far above what the stream holds: every record there is read, the
// one cut off keeps what it read, and the reading ends with the bytes. The
// error text holds the readers' messages and nothing else.
TEST(NodeUIManagerBase, LyingCountEndsWithTheStreamAndFailedRecordsKeepWhatTheyRead) {
  const std::vector<uint8_t> rec = posRecChain({n1, "x"});
  std::vector<uint8_t> cut = posRecChain({n2, "y"});
  cut.resize(cut.size() - 3);
  const std::vector<uint8_t> own = ByteWriter().u32(0xFFFFFFFF).raw(rec).raw(cut).bytes;
  PStream s(chainImage({{"$", 2, 0, {}}, {"T", 1, 0, {}}, {"N", 1, 0, own}}));
  LogChannel::Capture log(Log::channel());
  NodeUIPosManager manager;
  EXPECT_EQ(s.readObject(manager), StreamResult::error);
  ASSERT_EQ(manager.recordCount(), 2u);
  EXPECT_EQ(manager.findRec(n1)->getNodeId(), n1);
  EXPECT_NE(manager.findRec(n2), nullptr) << "the cut record keeps its node id";
  EXPECT_EQ(s.errorText().str(),
            " Read past the end of the stream at offset 232 (8 bytes wanted, 6 left)."
            "Unexpected end-of-file while unpacking NodeUIRecBase.NodeUIPosRec, layer Streamable.");
  EXPECT_NE(log.joined().find("the stream ended at offset"), std::string::npos) << log.joined();
}

TEST(VidRouting, OrientationTextForms) {
  using O = VidRouting::Orientations;
  EXPECT_TRUE(O::asString(static_cast<O::Orientation>(2)).empty());
  EXPECT_EQ(O::fromString("BottomToTop"), O::BottomToTop);
  for (const char* other : {"bottomtotop", "", "BottomToTop "}) EXPECT_EQ(O::fromString(other), O::LeftToRight);
}

} // namespace
