#include <filesystem>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "host/edit/EditFile.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/FXEditor.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/Vob.h"
#include "host/stream/AtomicFiles.h"
#include "tests/support/Bytes.h"
#include "tests/support/Program.h"
#include "tests/support/TestEdit.h"

namespace {

// A small graph built in code: V1 shows mix(a, b) for [0, 10) and b alone
// after; `loop` and `tail` feed each other (a cycle no cel uses).
class SmallEdit : public ::testing::Test {
protected:
  void SetUp() override {
    a = built.material(IdStamp(3, 0, 1));
    b = built.material(IdStamp(3, 0, 2));
    mix = built.effect(IdStamp(2, 0, 1), "mix", {a->getId(), b->getId()});
    loop = built.effect(IdStamp(2, 0, 8), "", {IdStamp(2, 0, 9)});
    tail = built.effect(IdStamp(2, 0, 9), "", {IdStamp(2, 0, 8)});
    built.channel(IdStamp(1, 0, 1), L"V1", mix->getId());
    edit->getChan(0).cels.push_back({10, 20, Cel::Kind::material, b->getId()});
  }

  testsupport::ScopedEdit built;
  EditPtr edit = built.edit();
  Ux::Ptr<MaterialUsageNode> a, b;
  Ux::Ptr<EffectInstance> mix, loop, tail;
};

TEST_F(SmallEdit, IteratorWalksInputsAndKeepsItsPath) {
  EditGraphIterator it(edit, 5, EditGraphIterator::startAtFirstRoot);
  ASSERT_TRUE(it.isValid());
  EXPECT_EQ(it.getNode()->getId(), mix->getId());
  EXPECT_EQ(it.getChanId(-1), IdStamp(1, 0, 1));
  ASSERT_TRUE(it.moveToInput(1));
  EXPECT_EQ(it.getNode()->getId(), b->getId());
  EXPECT_EQ(it.getDepth(), 1);
  EXPECT_EQ(it.getParentInputNum(), 1);
  EXPECT_EQ(it.getNode(0)->getId(), mix->getId());
  EXPECT_FALSE(it.moveToInput(0)) << "a material has no inputs";
  EXPECT_TRUE(it.moveBack());
  EXPECT_FALSE(it.moveBack()) << "no parent above the root";
  EXPECT_FALSE(it.moveToInput(2));

  // After 10 the channel shows a material: it is no graph root.
  std::vector<IdStamp> roots;
  findAllRootNodeChans(edit, roots, 12, true);
  EXPECT_TRUE(roots.empty());
}

TEST_F(SmallEdit, StateTextRoundTripsAndRebuildsThePosition) {
  EditGraphIterator it(edit, 2.5, b->getId(), EditGraphIterator::positionAtNode);
  ASSERT_TRUE(it.isValid());
  EXPECT_EQ(it.getDepth(), 1) << "placed on the path from the root";
  const LightweightString<char> text = it.getState().asString();
  const EditGraphIteratorState parsed(text);
  ASSERT_TRUE(parsed.valid());
  EXPECT_EQ(parsed.asString(), text);
  EditGraphIterator again(parsed);
  ASSERT_TRUE(again.isValid());
  EXPECT_EQ(again.getNode()->getId(), b->getId());
  EXPECT_EQ(again.getTime(), 2.5);

  for (const char* bad : {"", "fxgs1:", "fxgs1:zz:0:1.0.1:2.0.1:-", "fxgs1:" /* cookie later */})
    EXPECT_FALSE(EditGraphIteratorState(bad).valid()) << bad;
  std::string noPath = text.str();
  noPath.resize(noPath.rfind(':'));
  EXPECT_FALSE(EditGraphIteratorState(LightweightString<char>(noPath + ":1,,2")).valid());
}

TEST_F(SmallEdit, CyclesAreWalkableAndFoundAsOrphans) {
  EditGraphIterator it(edit, 0, loop->getId(), EditGraphIterator::positionAtNode);
  ASSERT_TRUE(it.isValid());
  EXPECT_EQ(it.getDepth(), 0) << "no root reaches it: it is its own root";
  Vector<IdStamp> all;
  it.findAllComponents(all);
  EXPECT_EQ(all.size(), 2u);

  std::vector<IdStamp> roots;
  FXEditor::findOrphanedComponents(edit, roots, 0);
  ASSERT_EQ(roots.size(), 1u) << "a piece that is all cycle has one head";
  EXPECT_EQ(roots[0], loop->getId());
}

TEST_F(SmallEdit, EditorRefusesCyclesSelfFeedingAndWrongSlots) {
  FXEditor editor(edit);
  EditGraphIterator atMix(edit, 0, mix->getId(), EditGraphIterator::atNode),
      atA(edit, 0, a->getId(), EditGraphIterator::atNode), atLoop(edit, 0, loop->getId(), EditGraphIterator::atNode);
  EXPECT_FALSE(editor.canConnectNodes(atMix, 0, atMix)) << "a node may not feed itself";
  EXPECT_FALSE(editor.canConnectNodes(atA, 0, atMix)) << "a material has no inputs";
  EXPECT_FALSE(editor.canConnectNodes(atMix, 2, atLoop)) << "no third input";
  EXPECT_TRUE(editor.canConnectNodes(atMix, 0, atLoop));
  ASSERT_TRUE(editor.connectNodes(atMix, 0, atLoop, true));
  EXPECT_EQ(mix->getInputTrackId(0), loop->getId());
  // Now the mix depends on the loop: the loop may not take the mix.
  EXPECT_FALSE(editor.canConnectNodes(EditGraphIterator(edit, 0, tail->getId(), EditGraphIterator::atNode), 0, atMix));

  mix->setConnectionEditable(false);
  EXPECT_FALSE(editor.canConnectNodes(atMix, 1, atA)) << "locked connections";
  mix->setConnectionEditable(true);
  Ux::Ptr<MaterialUsageNode> sound(
      new MaterialUsageNode(IdStamp(5, 0, 1), L"tone", MaterialUsageNode::Media::tone, "440", TrackType::audio));
  edit->addNode(sound);
  EXPECT_FALSE(editor.canConnectNodes(atMix, 1, EditGraphIterator(edit, 0, sound->getId(), EditGraphIterator::atNode)))
      << "audio into video";

  ASSERT_TRUE(editor.disconnectNodes(atMix, 1, true));
  EXPECT_FALSE(mix->getInputTrackId(1).valid());
}

TEST_F(SmallEdit, DestroyingAHeadLeavesItsFirstInputInPlace) {
  FXEditor editor(edit);
  ASSERT_TRUE(editor.destroyNode(EditGraphIterator(edit, 0, mix->getId(), EditGraphIterator::atNode), true));
  EXPECT_FALSE(edit->openNode(mix->getId()));
  const Cel* cel = edit->getChan(0).celAt(1);
  ASSERT_NE(cel, nullptr);
  EXPECT_EQ(cel->kind, Cel::Kind::graph);
  EXPECT_EQ(cel->ref, a->getId());
}

// A client of a vob, counting what it hears.
struct Listener : VobClient {
  explicit Listener(Vob* v) : VobClient(v, 1) {}
  void handleModifications(const EditModifications& mods, const VobModification& vm) override {
    heard += mods.includes(EditModification::structure);
    timeChanges += (vm.flags & VobModification::timeChanged) != 0;
  }
  int heard = 0;
  int timeChanges = 0;
};

TEST_F(SmallEdit, UndoRestoresWholeEditsAndEveryVobHears) {
  Vob vob(edit), other(edit);
  Listener one(&vob), two(&other);
  FXEditor editor(edit);
  {
    EasyBackup step(&vob);
    editor.disconnectNodes(EditGraphIterator(edit, 0, mix->getId(), EditGraphIterator::atNode), 0, true);
  }
  edit->addModification({EditModification(EditModification::structure)}, true);
  EXPECT_EQ(one.heard, 1);
  EXPECT_EQ(two.heard, 1);
  ASSERT_TRUE(vob.canUndo());
  ASSERT_TRUE(vob.undo());
  // Undo brings back copies of the nodes as they were.
  EXPECT_EQ(edit->openObject<EffectInstance>(mix->getId())->getInputTrackId(0), a->getId());
  EXPECT_EQ(one.heard, 2);
  ASSERT_TRUE(vob.redo());
  EXPECT_FALSE(edit->openObject<EffectInstance>(mix->getId())->getInputTrackId(0).valid());
  EXPECT_FALSE(vob.canRedo());

  vob.setCurrentTime(3);
  EXPECT_EQ(one.timeChanges, 1);
  EXPECT_EQ(two.timeChanges, 0) << "time belongs to the vob, not the edit";
}

TEST(EditFileTest, SavedEditLoadsBackTheSameOrWithoutADamagedSidecar) {
  auto loaded = EditFile::load(testsupport::sourcePath("examples/promo.json"));
  ASSERT_TRUE(loaded.edit) << loaded.error;
  const std::string first = EditFile::toJson(*loaded.edit);
  const std::string path = ::testing::TempDir() + "promo-copy.json";
  std::string error;
  ASSERT_TRUE(EditFile::save(loaded.edit, path, error)) << error;
  loaded.edit->close();
  auto again = EditFile::load(path);
  ASSERT_TRUE(again.edit) << again.error;
  EXPECT_TRUE(again.warnings.empty()) << "the sidecar was saved with the edit";
  EXPECT_EQ(EditFile::toJson(*again.edit), first);
  again.edit->close();

  // A damaged sidecar: the edit loads without its objects, with a warning.
  std::FILE* f = std::fopen(EditFile::sidecarPath(path).c_str(), "wb");
  std::fputs("FXOB garbage", f);
  std::fclose(f);
  auto damaged = EditFile::load(path);
  ASSERT_TRUE(damaged.edit) << damaged.error;
  ASSERT_EQ(damaged.warnings.size(), 1u);
  EXPECT_NE(damaged.warnings[0].find("not the one saved with the edit (damaged"), std::string::npos);
  EXPECT_TRUE(damaged.edit->boundObjects().empty());
  damaged.edit->close();
}

TEST(EditFileTest, EveryDamagedSidecarGetsOneLineWithAReason) {
  auto loaded = EditFile::load(testsupport::sourcePath("examples/promo.json"));
  ASSERT_TRUE(loaded.edit) << loaded.error;
  const std::string path = ::testing::TempDir() + "promo-cut.json";
  std::string error;
  ASSERT_TRUE(EditFile::save(loaded.edit, path, error)) << error;
  // An edit that names no objects file of its own reads whatever sidecar it
  // has: each damage is then found by reading it.
  ASSERT_TRUE(writeFileAtomically(path, EditFile::toJson(*loaded.edit), error)) << error;
  loaded.edit->close();
  const std::string whole = testsupport::readText(EditFile::sidecarPath(path));
  // Every damaged file of the records corpus, every cut of the sidecar, and
  // a byte changed at every place.
  std::vector<std::string> sidecars;
  for (const auto& e : std::filesystem::directory_iterator(testsupport::sourcePath("tests/node_ui/corpus")))
    if (e.path().extension() == ".objects") sidecars.push_back(testsupport::readText(e.path().string()));
  for (std::size_t cut = 0; cut <= whole.size(); cut += 1 + cut / 16) {
    sidecars.push_back(whole.substr(0, cut));
    if (cut < whole.size()) (sidecars.push_back(whole), sidecars.back()[cut] ^= 0x5a);
  }
  for (const std::string& bytes : sidecars) {
    std::FILE* f = std::fopen(EditFile::sidecarPath(path).c_str(), "wb");
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
    auto r = EditFile::load(path);
    ASSERT_TRUE(r.edit) << r.error;
    for (const std::string& w : r.warnings) {
      EXPECT_EQ(w.find('\n'), std::string::npos) << w;
      EXPECT_EQ(w.find("()"), std::string::npos) << w;
      EXPECT_EQ(w.find(":)"), std::string::npos) << "a reason, not nothing: " << w;
    }
    r.edit->close();
  }
}

TEST(EditFileTest, FieldsOfALaterVersionSurviveALoadAndASave) {
  const std::string text = R"({"name": "Later", "frameRate": 25, "colourSpace": {"primaries": "bt709"},
    "channels": [{"id": "1.0.1", "cels": [{"start": 0, "end": 1, "graph": "2.0.1", "speed": 2},
                                       {"start": 1, "end": 2, "black": true}], "locked": true}],
    "nodes": [{"id": "2.0.1", "kind": "effect", "tag": "mix", "inputs": ["3.0.1", "0.0.0"], "blendMode": "screen"},
              {"id": "3.0.1", "kind": "material", "media": {"testcard": "bars"}, "reel": ["A", 7]}]})";
  auto loaded = EditFile::parse(text, "later.json", ".");
  ASSERT_TRUE(loaded.edit) << loaded.error;
  const nlohmann::json saved = nlohmann::json::parse(EditFile::toJson(*loaded.edit));
  loaded.edit->close();
  EXPECT_EQ(saved["colourSpace"], nlohmann::json::parse(R"({"primaries": "bt709"})"));
  EXPECT_EQ(saved["channels"][0]["locked"], true);
  EXPECT_EQ(saved["channels"][0]["cels"][0]["speed"], 2);
  EXPECT_FALSE(saved["channels"][0]["cels"][1].contains("speed"));
  EXPECT_EQ(saved["nodes"][0]["blendMode"], "screen");
  EXPECT_EQ(saved["nodes"][1]["reel"], nlohmann::json::parse(R"(["A", 7])"));
  // And again: what was kept is kept once, not doubled.
  auto again = EditFile::parse(saved.dump(), "again.json", ".");
  ASSERT_TRUE(again.edit) << again.error;
  EXPECT_EQ(nlohmann::json::parse(EditFile::toJson(*again.edit)), saved);
  again.edit->close();
}

TEST(EditFileTest, MalformedEditsAreRefusedWithTheirLine) {
  struct Case {
    const char* text;
    const char* where;
    const char* reason;
  };
  const Case cases[] = {
      {"{\n\"name\": \"x\",\n\"channels\": [\n}", ":4:", "not valid JSON at \"\"channels\": [<U+000A>}\""},
      // What the editor never makes: a node fed by itself, directly, through
      // other nodes or through a channel; a source with inputs; names that
      // do not match the inputs; times before the edit and frame rates no
      // picture has.
      {"{\"nodes\": [\n {\"id\": \"2.0.1\", \"kind\": \"effect\", \"inputs\": [\"2.0.1\"]}]}",
       ":2:", "a node cannot be its own input"},
      {"{\"nodes\": [{\"id\": \"2.0.1\", \"kind\": \"effect\", \"inputs\": [\"2.0.2\"]},\n"
       " {\"id\": \"2.0.2\", \"kind\": \"effect\", \"inputs\": [\"2.0.1\"]}]}",
       ":2:", "closes a cycle"},
      {"{\"nodes\": [{\"id\": \"2.0.1\", \"kind\": \"effect\",\n \"inputs\": [\"1.0.1\"]}],\n"
       " \"channels\": [{\"id\": \"1.0.1\", \"cels\": [{\"start\": 0, \"end\": 1, \"graph\": \"2.0.1\"}]}]}",
       ":2:", "closes a cycle"},
      {"{\"nodes\": [{\"id\": \"3.0.1\", \"kind\": \"material\", \"media\": {\"testcard\": \"bars\"},\n"
       " \"inputs\": [\"3.0.1\"]}]}",
       ":2:", "a material has no inputs"},
      {"{\"nodes\": [{\"id\": \"2.0.1\", \"kind\": \"effect\", \"inputs\": [\"0.0.0\"],\n \"inputNames\": [\"A\", "
       "\"B\"]}]}",
       ":2:", "2 input names for 1 inputs"},
      {"{\"name\": \"x\",\n\"frameRate\": 1e-320}", ":2:", "the frame rate must be from 1 to 1000"},
      {"{\"channels\": [{\"id\": \"1.0.1\", \"cels\": [\n {\"start\": -1e308, \"end\": 1, \"black\": true}]}]}",
       ":2:", "0 or more"},
      {"{\"nodes\": [\n {\"id\": \"2.0.1\", \"kind\": \"effect\"},\n {\"id\": \"2.0.1\", \"kind\": \"effect\"}]}",
       ":3:", "used twice"},
      {"{\"nodes\": [\n {\"id\": \"2.0.1\",\n  \"kind\": \"sprocket\"}]}", ":3:", "unknown kind"},
      // Text quoted back stays on one line.
      {"{\"nodes\": [{\"id\": \"2.0.1\", \"kind\": \"eff\\nect\"}]}", ":1:", "unknown kind \"eff\\x0aect\""},
      {"{\"nodes\": [{\"id\": \"2.0.1\", \"kind\": \"effect\",\n \"inputs\": [\"9.9.9\"]}]}",
       ":2:", "no node or channel"},
      {"{\"channels\": [{\"id\": \"1.0.1\", \"cels\": [\n {\"start\": 5, \"end\": 1, \"black\": true}]}]}",
       ":2:", "end after"},
      {"{\"channels\": [{\"id\": \"1.0.1\", \"cels\": [\n {\"start\": 0, \"end\": 1, \"graph\": \"2.0.7\"}]}]}",
       ":2:", "no node"},
      {"{\"frameRate\":\n -3}", ":2:", "frame rate"},
  };
  for (const Case& c : cases) {
    auto r = EditFile::parse(c.text, "bad.json", ".");
    EXPECT_FALSE(r.edit) << c.text;
    EXPECT_NE(r.error.find(std::string("bad.json") + c.where), std::string::npos) << r.error;
    EXPECT_NE(r.error.find(c.reason), std::string::npos) << r.error;
    EXPECT_EQ(r.error.find('\n'), std::string::npos) << r.error;
  }
}

TEST(EditFileTest, HostileTextIsRefusedInPlainWordsAtLittleCost) {
  // Nesting far deeper than any edit, even under a field nobody reads: refused
  // at the level past the limit, before the parser's memory grows with it.
  const std::string deep = std::string(60000, '[');
  const std::string unknown = "{\"name\": \"x\", \"future\":\n" + std::string(10000, '[') + "}";
  for (const std::string& text : {deep, unknown}) {
    const auto r = EditFile::parse(text, "deep.json", ".");
    EXPECT_FALSE(r.edit);
    EXPECT_NE(r.error.find("nested deeper than 256 levels"), std::string::npos) << r.error.substr(0, 200);
  }
  // A name of 50 MB, refused before anything is made of it.
  auto r = EditFile::parse("{\"name\": \"" + std::string(50 << 20, 'n') + "\"}", "long.json", ".");
  EXPECT_EQ(r.error, "long.json:1: \"name\" is longer than 4096 bytes");
  // A number no double holds, and text that stops short.
  r = EditFile::parse("{\"frameRate\": 1e400}", "big.json", ".");
  EXPECT_EQ(r.error, "big.json:1: a number out of range at \"1e400\"");
  r = EditFile::parse("{\"name\": \"x", "short.json", ".");
  EXPECT_NE(r.error.find("short.json:1: "), std::string::npos) << r.error;
  EXPECT_EQ(r.error.find("syntax error"), std::string::npos) << r.error;
}

} // namespace
