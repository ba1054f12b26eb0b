#pragma once
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/EditFile.h"

// Reads an OpenTimelineIO timeline (.otio, JSON) as an edit: each video and
// audio track a channel, each clip a cel whose graph is its media under its
// effects, each transition a cel of its own that mixes the clips on either
// side, each nested stack or track a compound effect over channels of its
// own. What the edit cannot hold is left out with one warning line per kind
// of thing; a file that is not a timeline is refused in one line.
class FXHOST_API OtioReader {
public:
  struct Result {
    std::string document;              // the edit file's JSON; empty when refused
    std::string error;                 // "<file>[:<line>]: <reason>" when refused
    std::vector<std::string> warnings; // "<file>: <what was left out>"
  };

  // The edit document of a timeline's text; `name` is used in messages and
  // names the edit when the timeline has no name. Media paths relative to
  // the timeline's folder get `mediaFolder` in front ("" keeps them), for
  // an edit that is to lie elsewhere.
  static Result toEditDocument(const std::string& text, const std::string& name, const std::string& mediaFolder = {});
  // Reads the timeline file as an edit whose media lie beside it.
  static EditFile::LoadResult load(const std::string& path);
  // Whether a path names a timeline rather than an edit file.
  static bool isTimelinePath(const std::string& path);
};
