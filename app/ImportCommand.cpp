#include "app/ImportCommand.h"

#include <filesystem>
#include <ostream>

#include "host/edit/EditFile.h"
#include "host/edit/OtioReader.h"
#include "host/stream/AtomicFiles.h"
#include "host/stream/BoundedRead.h"

namespace fxgraph {

int runImportCommand(const std::vector<std::string>& args, std::ostream& out, std::ostream& err) {
  namespace fs = std::filesystem;
  if (args.size() != 2 || !OtioReader::isTimelinePath(args[0])) {
    err << "usage: fxgraph import TIMELINE.otio OUT.json\n";
    return 2;
  }
  const std::string& timeline = args[0];
  const std::string& target = args[1];
  std::error_code ec;
  if (fs::equivalent(timeline, target, ec) || OtioReader::isTimelinePath(target)) {
    err << "fxgraph: " << target << " is a timeline; the edit is not written over it\n";
    return 1;
  }
  std::string text, why;
  if (!readBoundedFile(timeline, std::size_t(256) << 20, text, why)) {
    err << "fxgraph: " << timeline << ": " << why << "\n";
    return 1;
  }
  // Media named relative to the timeline are named relative to the edit.
  const fs::path from = fs::absolute(fs::path(finalTargetOf(timeline)).parent_path()).lexically_normal();
  const fs::path to = fs::absolute(fs::path(target).parent_path()).lexically_normal();
  std::string mediaFolder;
  if (from != to) {
    fs::path relative = from.lexically_relative(to);
    mediaFolder = (relative.empty() ? from : relative).string();
    if (!mediaFolder.empty() && mediaFolder != ".")
      mediaFolder += "/";
    else
      mediaFolder.clear();
  }
  const OtioReader::Result doc = OtioReader::toEditDocument(text, timeline, mediaFolder);
  if (!doc.error.empty()) {
    err << "fxgraph: " << doc.error << "\n";
    return 1;
  }
  for (const std::string& w : doc.warnings) err << "fxgraph: warning: " << w << "\n";
  EditFile::LoadResult loaded = EditFile::parse(doc.document, timeline, to.string());
  if (!loaded.edit) {
    err << "fxgraph: " << timeline << ": the timeline could not be made an edit (" << loaded.error << ")\n";
    return 1;
  }
  const bool saved = EditFile::save(loaded.edit, target, why);
  const int channels = loaded.edit->getNumChans();
  const std::size_t nodes = loaded.edit->allNodes().size();
  loaded.edit->close();
  if (!saved) {
    err << "fxgraph: " << why << "\n";
    return 1;
  }
  out << "imported " << timeline << " as " << target << " (" << channels
      << (channels == 1 ? " channel, " : " channels, ") << nodes << (nodes == 1 ? " graph node)\n" : " graph nodes)\n");
  return 0;
}

} // namespace fxgraph
