// A save of an edit and its objects cut short at every step it takes (each
// write, sync, link, rename and unlink): what opens afterwards is the whole
// old pair or the whole new pair, never a mix.
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "host/edit/EditFile.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/ObjectsFile.h"
#include "node_ui/NodeUIPosManager.h"
#include "node_ui/NodeUIPosRec.h"
#include "tests/support/Program.h"

namespace {

namespace fs = std::filesystem;

// The edit and its objects as bytes, to compare pairs whole.
std::string pairOf(const EditPtr& edit) {
  PStream objects;
  std::vector<ObjectsFile::Binding> bindings;
  for (const auto& [name, object] : edit->boundObjects()) bindings.push_back({name, object});
  LightweightString<char> why;
  EXPECT_TRUE(ObjectsFile::write(objects, bindings, why)) << why.c_str();
  return EditFile::toJson(*edit) + std::string(objects.bytes().begin(), objects.bytes().end());
}

struct StopAt {
  int at;
  bool stopped = false;
  static bool step(const char*, int number, void* context) {
    auto* self = static_cast<StopAt*>(context);
    if (number != self->at) return true;
    self->stopped = true;
    return false;
  }
};

TEST(SaveFaults, ASaveCutShortAnywhereLeavesTheOldPairOrTheNewOne) {
  testsupport::TempFolder folder;
  auto loaded = EditFile::load(testsupport::sourcePath("examples/promo.json"));
  ASSERT_TRUE(loaded.edit) << loaded.error;
  EditPtr edit = loaded.edit;
  Ux::Ptr<NodeUIPosManager> manager = NodeUIPosManager::getManagerFor(edit);
  manager->createPosRec(IdStamp(2, 0, 1), edit->getCookie())->setDrawPosition(0.25, 0.5, false);
  const std::string path = folder.path("promo.json");
  std::string error;
  ASSERT_TRUE(EditFile::save(edit, path, error)) << error;
  const std::string oldEdit = testsupport::readText(path), oldObjects = testsupport::readText(path + ".objects");
  auto reopened = EditFile::load(path);
  const std::string oldPair = pairOf(reopened.edit);
  reopened.edit->close();

  // The new pair: another name and another place for the node.
  edit->setName(L"Promo, second cut");
  auto* rec = dynamic_cast<NodeUIPosRec*>(manager->findRec(IdStamp(2, 0, 1)));
  ASSERT_TRUE(rec) << "the record was saved and kept";
  rec->setDrawPosition(0.75, -0.5, false);
  const std::string newPair = pairOf(edit);
  ASSERT_NE(newPair, oldPair);

  int steps = 0;
  for (int at = 0;; ++at) {
    // The old pair on disk, as the last save left it.
    for (const auto& e : fs::directory_iterator(folder.path(""))) fs::remove_all(e.path());
    ASSERT_TRUE(writeFileAtomically(path + ".objects", oldObjects, error));
    ASSERT_TRUE(writeFileAtomically(path, oldEdit, error));
    StopAt stop{at};
    setSaveStepHook(&StopAt::step, &stop);
    const bool saved = EditFile::save(edit, path, error);
    setSaveStepHook(nullptr, nullptr);
    auto r = EditFile::load(path);
    ASSERT_TRUE(r.edit) << r.error;
    const std::string found = pairOf(r.edit);
    r.edit->close();
    EXPECT_TRUE(found == oldPair || found == newPair) << "cut at step " << at;
    if (saved) {
      EXPECT_EQ(found, newPair) << "a save that says it is done";
    }
    if (!stop.stopped) {
      steps = at;
      break;
    }
  }
  // Two writes and syncs, the link, two renames, the folder and the unlink.
  EXPECT_EQ(steps, 9);
  edit->close();
}

} // namespace
