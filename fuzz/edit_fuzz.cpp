// Fuzzes the edit-file loader and the timeline reader with arbitrary text.
// A refusal must be one line with a reason; an edit that loads must write a
// document that loads again to the same document; a timeline that is read
// must make an edit the edit-file loader takes.
#include <cstddef>
#include <cstdint>
#include <string>

#include "host/edit/EditFile.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/OtioReader.h"
#include "host/edit/ProjectDatabase.h"

namespace {

void check(bool ok) {
  if (!ok) __builtin_trap();
}

// Loading enters an edit's materials in the project database: they go
// again, so that the database does not grow from one input to the next.
void done(const EditPtr& edit) {
  for (const auto& node : edit->allNodes())
    if (const auto* m = dynamic_cast<const MaterialUsageNode*>(node.get()))
      EditManager::getProjdb().forget(m->getMaterialCookie());
  edit->close();
}

// The same text as a timeline.
void readAsTimeline(const std::string& text) {
  const OtioReader::Result t = OtioReader::toEditDocument(text, "fuzz.otio");
  if (!t.error.empty()) {
    check(t.document.empty() && t.error.find('\n') == std::string::npos);
    return;
  }
  for (const std::string& w : t.warnings) check(w.find('\n') == std::string::npos);
  const EditFile::LoadResult edit = EditFile::parse(t.document, "fuzz.otio", "/nonexistent-fuzz-folder");
  check(edit.edit != nullptr);
  if (edit.edit) done(edit.edit);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  readAsTimeline(text);
  // Files named by the edit resolve in a folder that is not there: nothing is read.
  const EditFile::LoadResult r = EditFile::parse(text, "fuzz.json", "/nonexistent-fuzz-folder");
  if (!r.edit) {
    check(!r.error.empty() && r.error.find('\n') == std::string::npos);
    return 0;
  }
  const std::string first = EditFile::toJson(*r.edit);
  const EditFile::LoadResult again = EditFile::parse(first, "again.json", "/nonexistent-fuzz-folder");
  check(again.edit != nullptr);
  if (again.edit) {
    check(EditFile::toJson(*again.edit) == first);
    done(again.edit);
  }
  done(r.edit);
  return 0;
}
