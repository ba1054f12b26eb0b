#pragma once
#include <nlohmann/json.hpp>

#include "app/Session.h"

namespace fxgraph {

// The state of the open session as JSON, read from the live objects: the
// panel, the view's geometry, every node with its geometry and pads, the
// wires, the drag state and the undo state. Ids are IdStamp text forms;
// numbers are written so that they read back to the same double.
nlohmann::ordered_json dumpState(const Session& session);
// The same as the text of a dump file: valid UTF-8 whatever bytes the
// session holds (a message, a name, typed text), with U+FFFD where bytes
// were not UTF-8.
std::string dumpStateText(const Session& session);

} // namespace fxgraph
