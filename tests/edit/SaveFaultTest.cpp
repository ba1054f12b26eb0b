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

// The example as saved once, so that what the file leaves to the loader
// (the materials' cookies) is the same in every edit made from it.
std::string base;

// The example under another name, its Dissolve placed by hand. Made afresh
// for each save: an edit's records are kept when it is saved only while it
// is the live edit of its cookie, and every load of the file opens another.
EditPtr editAt(const wchar_t* name, double x, double y) {
  auto loaded = EditFile::load(base);
  EXPECT_TRUE(loaded.edit) << loaded.error;
  loaded.edit->setName(name);
  NodeUIPosManager::getManagerFor(loaded.edit)
      ->createPosRec(IdStamp(2, 0, 1), loaded.edit->getCookie())
      ->setDrawPosition(x, y, false);
  return loaded.edit;
}

std::string pairAt(const wchar_t* name, double x, double y) {
  EditPtr edit = editAt(name, x, y);
  const std::string pair = pairOf(edit);
  edit->close();
  return pair;
}

// Saves the edit, cut short at a step (as a kill would) unless it has fewer.
bool saveCutAt(const wchar_t* name, double x, double y, const std::string& path, int at, bool* cut = nullptr) {
  EditPtr edit = editAt(name, x, y);
  StopAt stop{at};
  setSaveStepHook(&StopAt::step, &stop);
  std::string error;
  const bool saved = EditFile::save(edit, path, error);
  setSaveStepHook(nullptr, nullptr);
  edit->close();
  if (cut) *cut = stop.stopped;
  return saved;
}

// The pair that opens from the files at `path`.
std::string pairOnDisk(const std::string& path) {
  auto r = EditFile::load(path);
  EXPECT_TRUE(r.edit) << r.error;
  if (!r.edit) return {};
  const std::string found = pairOf(r.edit);
  r.edit->close();
  return found;
}

TEST(SaveFaults, SavesCutShortAnywhereLeaveAWholePair) {
  testsupport::TempFolder folder, baseFolder;
  base = baseFolder.path("promo.json");
  std::string error;
  auto example = EditFile::load(testsupport::sourcePath("examples/promo.json"));
  ASSERT_TRUE(example.edit && EditFile::save(example.edit, base, error)) << error;
  example.edit->close();
  const std::string path = folder.path("promo.json");
  ASSERT_TRUE(saveCutAt(L"Promo", 0.25, 0.5, path, -1));
  const std::string oldEdit = testsupport::readText(path), oldObjects = testsupport::readText(path + ".objects");
  const std::string oldPair = pairOnDisk(path);
  const std::string newPair = pairAt(L"Promo, second cut", 0.75, -0.5);
  const std::string newerPair = pairAt(L"Promo, third cut", 0.5, 0.125);
  ASSERT_NE(newPair, oldPair);
  ASSERT_NE(newPair.find("Promo, second cut"), std::string::npos);
  auto startFromOldPair = [&] {
    for (const auto& e : fs::directory_iterator(folder.path(""))) fs::remove_all(e.path());
    ASSERT_TRUE(writeFileAtomically(path + ".objects", oldObjects, error));
    ASSERT_TRUE(writeFileAtomically(path, oldEdit, error));
  };

  int steps = 0;
  for (int at = 0;; ++at) {
    startFromOldPair();
    bool cut = false;
    const bool saved = saveCutAt(L"Promo, second cut", 0.75, -0.5, path, at, &cut);
    const std::string found = pairOnDisk(path);
    EXPECT_TRUE(found == oldPair || found == newPair) << "cut at step " << at;
    if (saved) {
      EXPECT_EQ(found, newPair) << "a save that says it is done";
    }
    if (!cut) {
      steps = at;
      break;
    }
  }
  // Two writes and syncs, the link, two renames, the folder and the unlink.
  EXPECT_EQ(steps, 9);

  // A save cut short, then another cut short anywhere: the edit on disk
  // still opens with the objects it names. A second save that replaced the
  // backup a first one left would lose the positions the edit names.
  for (int first = 0; first < steps; ++first)
    for (int second = 0; second <= steps; ++second) {
      startFromOldPair();
      saveCutAt(L"Promo, second cut", 0.75, -0.5, path, first);
      const bool saved = saveCutAt(L"Promo, third cut", 0.5, 0.125, path, second);
      const std::string found = pairOnDisk(path);
      EXPECT_TRUE(found == oldPair || found == newPair || found == newerPair)
          << "cut at step " << first << ", then at step " << second;
      if (saved) {
        EXPECT_EQ(found, newerPair);
      }
    }
}

} // namespace
