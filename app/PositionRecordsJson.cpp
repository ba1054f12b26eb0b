#include "app/PositionRecordsJson.h"

#include <cmath>
#include <limits>
#include <vector>

namespace fxgraph {
namespace {

nlohmann::ordered_json number(double v) {
  if (std::isnan(v)) return "NaN";
  if (std::isinf(v)) return v > 0 ? "Infinity" : "-Infinity";
  return v;
}

bool readNumber(const nlohmann::json& j, double& out) {
  if (j.is_number()) {
    out = j.get<double>();
    return true;
  }
  if (j.is_string()) {
    const std::string s = j.get<std::string>();
    if (s == "NaN")
      out = std::numeric_limits<double>::quiet_NaN();
    else if (s == "Infinity")
      out = std::numeric_limits<double>::infinity();
    else if (s == "-Infinity")
      out = -std::numeric_limits<double>::infinity();
    else
      return false;
    return true;
  }
  return false;
}

bool readPair(const nlohmann::json& rec, const char* key, XY<double>& out, std::string& why) {
  auto it = rec.find(key);
  if (it == rec.end()) return true; // absent: the origin
  if (!it->is_array() || it->size() != 2 || !readNumber((*it)[0], out.x) || !readNumber((*it)[1], out.y)) {
    why = std::string("\"") + key + "\" must be a pair of numbers [x, y]";
    return false;
  }
  return true;
}

struct ParsedRecord {
  IdStamp node;
  Cookie cookie;
  XY<double> draw, manual;
  bool manualSet = false;
};

} // namespace

nlohmann::ordered_json recordsToJson(const NodeUIPosManager& manager) {
  nlohmann::ordered_json records = nlohmann::ordered_json::array();
  for (const NodeUIRecBase* base : manager.records().as<NodeUIRecBase>()) {
    const auto* rec = dynamic_cast<const NodeUIPosRec*>(base);
    if (!rec) continue;
    nlohmann::ordered_json j;
    j["node"] = rec->getNodeId().asString().str();
    j["cookie"] = rec->getCookie().asString().str();
    const XY<double> draw = rec->getDrawPosition();
    const XY<double> manual = rec->getManualPos();
    j["draw"] = {number(draw.x), number(draw.y)};
    j["manual"] = {number(manual.x), number(manual.y)};
    j["manualSet"] = rec->isManualPosSet();
    records.push_back(std::move(j));
  }
  nlohmann::ordered_json doc;
  doc["records"] = std::move(records);
  return doc;
}

bool recordsFromJson(const nlohmann::json& doc, NodeUIPosManager& manager, std::string& why) {
  if (!doc.is_object() || !doc.contains("records") || !doc["records"].is_array()) {
    why = "the document must be an object with a \"records\" array";
    return false;
  }
  std::vector<ParsedRecord> parsed;
  std::size_t index = 0;
  for (const auto& rec : doc["records"]) {
    ++index;
    auto fail = [&](const std::string& reason) {
      why = "record " + std::to_string(index) + ": " + reason;
      return false;
    };
    if (!rec.is_object()) return fail("must be an object");
    ParsedRecord p;
    if (!rec.contains("node") || !rec["node"].is_string() ||
        !IdStamp::fromString(rec["node"].get<std::string>(), p.node))
      return fail("\"node\" must be an id such as \"1.2.3\"");
    if (rec.contains("cookie")) {
      if (!rec["cookie"].is_string() || !Cookie::fromString(rec["cookie"].get<std::string>(), p.cookie))
        return fail("\"cookie\" must be a cookie: 32 hex digits, \".\", two numbers joined by \".\"");
    }
    if (!readPair(rec, "draw", p.draw, why) || !readPair(rec, "manual", p.manual, why)) return fail(why);
    if (rec.contains("manualSet")) {
      if (!rec["manualSet"].is_boolean()) return fail("\"manualSet\" must be true or false");
      p.manualSet = rec["manualSet"].get<bool>();
    }
    parsed.push_back(p);
  }
  for (const ParsedRecord& p : parsed) {
    auto* rec = new NodeUIPosRec(&manager, p.node, p.cookie);
    // Stored as given: setDrawPosition would take -0.0 for the +0.0 already there.
    rec->drawX().setValueQuietly(p.draw.x);
    rec->drawY().setValueQuietly(p.draw.y);
    rec->restoreManualState(p.manual.x, p.manual.y, p.manualSet);
    manager.addNewRec(rec);
  }
  return true;
}

} // namespace fxgraph
