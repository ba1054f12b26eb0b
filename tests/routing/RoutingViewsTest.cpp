// The audio routing table and the multi-track routing dialogue, on small
// edits given as edit files: rows, swaps, clicks, names, pages and tabs.
#include <gtest/gtest.h>

#include "host/config/EditorPreferences.h"
#include "host/edit/EditFile.h"
#include "host/ui/GlobManager.h"
#include "routing/MultiTrackRoutingView.h"
#include "tests/support/Program.h"

namespace {

const IdStamp a1(1, 0, 1), a2(1, 0, 2), gain(4, 0, 1), eq(4, 0, 2), pan(4, 0, 3), reverb(4, 0, 4), street(5, 0, 1);

// An audio effect of one input, its tag under \ZMV\AUD\FX\.
std::string node(const char* id, const char* name, const char* tag, const char* input) {
  return std::string(R"({"id": ")") + id + R"(", "kind": "effect", "type": "audio", "name": ")" + name +
         R"(", "tag": "\\ZMV\\AUD\\FX\\)" + tag + R"(", "inputs": [")" + input + R"("], "inputNames": ["In"]})";
}

// Two audio channels of one group; A1 runs Gain, EQ, Pan, Reverb into the
// street sound; A2 runs its own Pan into it. Extra nodes can be added.
std::string audioEdit(const std::string& a1Head = "4.0.1", const std::string& moreNodes = "") {
  const auto cels = [](const std::string& graph) { return R"([{"start": 0, "end": 8, "graph": ")" + graph + "\"}]"; };
  return R"({"name": "Mix", "cookie": "6d0e5a1b3c9f4e8d8a6b2c4d6e8f0a1b.1.0", "frameRate": 25, "channels": [
           {"id": "1.0.1", "type": "audio", "name": "A1", "group": "A1-2", "cels": )" +
         cels(a1Head) + R"(}, {"id": "1.0.2", "type": "audio", "name": "A2", "group": "A1-2", "cels": )" +
         cels("4.0.9") + R"(}], "nodes": [)" + node("4.0.1", "Gain", "GAIN", "4.0.2") + ", " +
         node("4.0.2", "EQ", "EQ", "4.0.3") + ", " + node("4.0.3", "Pan", "PAN", "4.0.4") + ", " +
         node("4.0.4", "Reverb", "REV", "5.0.1") + ", " + node("4.0.9", "Pan", "PAN", "5.0.1") + moreNodes +
         R"(, {"id": "5.0.1", "kind": "material", "type": "audio", "name": "Street sound", "media": {"tone": 440}}]})";
}

class Routing : public ::testing::Test {
protected:
  void open(const std::string& text) {
    EditFile::LoadResult loaded = EditFile::parse(text, "mix.json", ".");
    ASSERT_TRUE(loaded.edit) << loaded.error;
    edit = loaded.edit;
    vob = std::make_unique<Vob>(edit, "main");
    vob->storeCurrentTime(2);
    monitor = std::make_unique<CompoundEffectMonitor>(vob.get());
  }
  void SetUp() override {
    setPreferencesFile(folder.path("prefs"));
    GlobManager::initialise(1280, 800);
  }
  void TearDown() override {
    GlobManager::shutdown();
    monitor.reset();
    vob.reset();
    if (edit) edit->close();
    setPreferencesFile({});
  }
  // The audio table of A1, as a child of nothing.
  std::unique_ptr<AudioRoutingView> table() {
    monitor->setTrackID(a1);
    AudioRoutingView::InitArgs args(monitor.get(), {300, 200});
    return std::make_unique<AudioRoutingView>(args);
  }
  std::vector<IdStamp> rows(const AudioRoutingView& view) const {
    std::vector<IdStamp> out;
    for (int r = 0; r < view.getSize(); ++r) out.push_back(view.getNodeID(r));
    return out;
  }
  IdStamp head(const IdStamp& channel) const {
    return CelEventPair(edit, edit->findChan(channel), 2).getEffectHandle().id();
  }
  static Event release(bool significant) {
    Event e;
    e.type = Event::mouseUp;
    e.button = Event::left;
    e.sinceDown = significant ? XY<int>{6, 0} : XY<int>{1, 1};
    return e;
  }

  testsupport::TempFolder folder;
  EditPtr edit;
  std::unique_ptr<Vob> vob;
  std::unique_ptr<CompoundEffectMonitor> monitor;
};

TEST_F(Routing, NeighbouringRowsSwapInTheMiddleAndAtTheHeadOfEveryChannelOfTheGroup) {
  open(audioEdit());
  auto view = table();
  EXPECT_EQ(rows(*view), (std::vector<IdStamp>{gain, eq, pan, reverb, street}));
  EXPECT_EQ(view->getFieldText({1, 0}), L"EQ");
  EXPECT_EQ(view->getNodeID(5), IdStamp()) << "past the source row";

  view->swapFields(2, 1, 0);
  EXPECT_EQ(rows(*view), (std::vector<IdStamp>{gain, pan, eq, reverb, street}));
  EXPECT_EQ(edit->undoDepth(), 1u);

  view->swapFields(0, 1, 0);
  EXPECT_EQ(rows(*view), (std::vector<IdStamp>{pan, gain, eq, reverb, street}));
  EXPECT_EQ(head(a1), pan);
  EXPECT_EQ(head(a2), pan) << "the head is set on every channel of the group";
  ASSERT_TRUE(vob->undo());
  EXPECT_EQ(head(a2), IdStamp(4, 0, 9));
}

TEST_F(Routing, TheCrossfadeKeepsItsPlaceInEitherPosition) {
  open(audioEdit("4.0.5", ", " + node("4.0.5", "Crossfade", "XF", "4.0.1")));
  auto view = table();
  ASSERT_EQ(rows(*view).front(), IdStamp(4, 0, 5));
  EXPECT_FALSE(view->canMove(0));
  EXPECT_TRUE(view->canMove(1));
  EXPECT_FALSE(view->canMove(5)) << "the source row";
  EXPECT_FALSE(view->canSwap(0, 1));
  EXPECT_FALSE(view->canSwap(1, 0));
  view->swapFields(1, 0, 0);
  EXPECT_EQ(rows(*view).front(), IdStamp(4, 0, 5));
  EXPECT_EQ(edit->undoDepth(), 0u);
  EXPECT_FALSE(AudioRoutingView::canMove(static_cast<const EffectInstance*>(nullptr)));
}

TEST_F(Routing, OnlyASmallClickOnAnEffectRowSwitchesIt) {
  open(audioEdit());
  auto view = table();
  const auto active = [&](const IdStamp& id) { return edit->openObject<EffectInstance>(id)->isActive(); };
  EXPECT_FALSE(view->handleMouseClickEvent({1, 0}, release(true)));
  EXPECT_TRUE(active(eq));
  EXPECT_FALSE(view->handleMouseClickEvent({4, 0}, release(false))) << "the source row";
  Event press = release(false);
  press.type = Event::mouseDown;
  EXPECT_FALSE(view->handleMouseClickEvent({1, 0}, press));
  EXPECT_TRUE(view->handleMouseClickEvent({1, 0}, release(false)));
  EXPECT_FALSE(active(eq));
  EXPECT_TRUE(view->handleMouseClickEvent({1, 0}, release(false)));
  EXPECT_TRUE(active(eq));
}

TEST_F(Routing, AnEmptyChainHasNoRowsAndTheSourceRowIsNamed) {
  // A1's segment is the street sound itself: no effects, no rows at all.
  std::string text = audioEdit();
  text.replace(text.find("\"graph\": \"4.0.1\""), 16, "\"material\": \"5.0.1\"");
  open(text);
  auto view = table();
  EXPECT_EQ(view->getNumNodes(), 0);
  EXPECT_EQ(view->getSize(), 0);
  EXPECT_EQ(view->getNodeID(0), IdStamp());
  // The source segment is a material: its name, else the track's.
  EXPECT_EQ(view->getSegmentName(CelEventPair(edit, edit->findChan(a1), 2)), L"Street sound");
  EXPECT_EQ(view->getSegmentName(CelEventPair(edit, edit->findChan(a2), 2)), edit->getChanDisplayName(a1, 3))
      << "an effect segment takes the track's name";
}

TEST_F(Routing, PagesAndTabsFollowTheTracks) {
  // Two audio channels and no video: two tabs named by their groups.
  open(audioEdit());
  {
    MultiTrackRoutingView dialogue(MultiTrackRoutingView::InitArgs(vob.get(), {600, 400}));
    ASSERT_TRUE(dialogue.tabs());
    EXPECT_EQ(dialogue.tabs()->pageCount(), 2);
    EXPECT_EQ(dialogue.pageTitles()[0], edit->getGroupDisplayName(a1, false));
    EXPECT_EQ(dialogue.pageIds()[1], L"1.0.2");
    EXPECT_FALSE(dialogue.videoView());
    ASSERT_TRUE(dialogue.audioView());

    // A rebuild keeps the selected page when its id survives.
    monitor->setTrackID(a2);
    EXPECT_EQ(dialogue.tabs()->getCurrentTabIndex(), 1);
    dialogue.updateTracksWidget();
    EXPECT_EQ(dialogue.tabs()->getCurrentTabIndex(), 1);
    EXPECT_EQ(dialogue.audioView()->getTrack(), a2);
    EXPECT_LT(dialogue.getUserArea().y1, static_cast<const StandardPanel&>(dialogue).StandardPanel::getUserArea().y1);
  }
  monitor.reset();
  vob.reset();
  edit->close();

  // Video only: one page, no tabs, and the graph view fills the user area.
  open("{\"name\": \"Pictures\", \"cookie\": \"6d0e5a1b3c9f4e8d8a6b2c4d6e8f0a1c.1.0\", \"channels\": [{\"id\": "
       "\"1.0.7\", \"type\": \"video\", \"name\": \"V1\", \"cels\": [{\"start\": 0, \"end\": 8, \"material\": "
       "\"3.0.1\"}]}], \"nodes\": [{\"id\": \"3.0.1\", \"kind\": \"material\", \"name\": \"Street\", \"media\": "
       "{\"testcard\": \"bars\"}}]}");
  MultiTrackRoutingView only(MultiTrackRoutingView::InitArgs(vob.get(), {600, 400}));
  EXPECT_EQ(only.pageTitles().size(), 1u);
  EXPECT_FALSE(only.tabs());
  ASSERT_TRUE(only.videoView());
  const Glob::PixelBox user = only.getUserArea();
  EXPECT_EQ(XY<int>(only.videoView()->width(), only.videoView()->height()),
            XY<int>(user.x1 - user.x0, user.y1 - user.y0));
}

} // namespace
