#pragma once
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/Edit.h"

// Edit files: a JSON document of channels, cels and graph nodes, plus the
// edit's bound objects in a sidecar objects file named like the edit file
// with ".objects" appended.
struct FXHOST_API EditFile {
  struct LoadResult {
    EditPtr edit;                      // null when the edit was refused
    std::string error;                 // "<file>:<line>: <reason>" when refused
    std::vector<std::string> warnings; // e.g. a missing or damaged sidecar
    // The stamp of the objects file saved with the edit ("" for an edit
    // saved before edits recorded one).
    std::string objectsStamp;
  };

  // Loads an edit. A malformed document is refused with its line and reason
  // and changes nothing. A missing or damaged sidecar loads the edit without
  // its bound objects and says so in the warnings.
  static LoadResult load(const std::string& path);
  // Parses a document held in memory (`name` is used in messages; relative
  // files resolve against `folder`).
  static LoadResult parse(const std::string& text, const std::string& name, const std::string& folder);

  // Writes the document and the sidecar to temporary names, flushes both and
  // only then renames them into place, so a failure never leaves a
  // half-written edit. The document records the stamp of the sidecar saved
  // with it, and the sidecar it replaces stays as sidecar + ".prev" until
  // both are in place: a load after a save cut short between the two
  // renames finds the previous pair whole. A save that fails puts the old
  // pair back, and never removes the objects that the edit on disk names
  // nor a file of somebody else's at the backup's name (EditFilePair).
  // An edit saved through a symbolic link is written to the file the link
  // names, with its sidecar beside it. False with the reason on failure.
  static bool save(const EditPtr& edit, const std::string& path, std::string& error);
  // The JSON document of an edit; with a stamp, the document says which
  // objects file belongs to it, and which one its save replaced.
  static std::string toJson(const Edit& edit, const std::string& objectsStamp = {},
                            const std::string& replacedStamp = {});
  // The stamp of an objects file's bytes.
  static std::string stampOf(const std::string& bytes);

  // The sidecar of the edit at `path`: beside the file the path finally
  // names, so that an edit opened through a link keeps its pair together.
  static std::string sidecarPath(const std::string& path);
};
