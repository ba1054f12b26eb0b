#pragma once
#include <string>

#include <nlohmann/json.hpp>

#include "node_ui/NodeUIPosManager.h"

namespace fxgraph {

// Position records as JSON: {"records": [{"node": "1.2.3", "cookie": "<text>",
// "draw": [x, y], "manual": [x, y], "manualSet": true}]}. Numbers are written
// so that they read back to the same double; non-finite values are the
// strings "NaN", "Infinity" and "-Infinity".
nlohmann::ordered_json recordsToJson(const NodeUIPosManager& manager);

// Adds the records of a JSON document to the manager. On a malformed
// document returns false with the reason and leaves the manager as it was.
bool recordsFromJson(const nlohmann::json& doc, NodeUIPosManager& manager, std::string& why);

} // namespace fxgraph
