#include "tests/support/LayoutOracle.h"

#include <bit>
#include <sstream>

#include "graph_view/FXGraphView.h"
#include "layout/FXGraphTidier.h"
#include "tests/support/FakePosSource.h"

namespace testsupport {

void examineEveryPath(GraphExaminer& examiner, EditGraphIterator& at) {
  examiner.startAt(at);
  applyToTree(at, examiner);
  examiner.buildLevels();
}

std::string examinationDifferences(const GraphExaminer& a, const GraphExaminer& b) {
  std::ostringstream out;
  int lines = 0;
  auto differ = [&](const std::string& what) {
    if (lines++ < 8) out << what << "\n";
  };
  auto idOf = [](const Ux::Ptr<FXGraphNodeBase>& n) { return n ? n->getId() : IdStamp(); };
  if (a.firstMet() != b.firstMet()) differ("the order of first meetings");
  if (a.records().size() != b.records().size()) differ("the number of records");
  for (const auto& [id, x] : a.records()) {
    const std::string name = id.asString().str();
    const GraphExaminer::NodeInfo* y = b.find(id);
    if (!y) {
      differ(name + ": missing");
      continue;
    }
    if (x.depth != y->depth) differ(name + ": level " + std::to_string(x.depth) + " / " + std::to_string(y->depth));
    if (x.parentDepth != y->parentDepth) differ(name + ": parent depth");
    if (x.inputIndex != y->inputIndex) differ(name + ": input");
    if (idOf(x.parent) != idOf(y->parent)) differ(name + ": parent");
    if (x.record != y->record) differ(name + ": position record");
  }
  if (a.levels().size() != b.levels().size()) differ("the number of levels");
  for (std::size_t k = 0; k < a.levels().size() && k < b.levels().size(); ++k) {
    std::vector<IdStamp> ka, kb;
    for (const auto& info : a.levels()[k]) ka.push_back(idOf(info.node));
    for (const auto& info : b.levels()[k]) kb.push_back(idOf(info.node));
    if (ka != kb) differ("level " + std::to_string(k));
  }
  return out.str();
}

std::vector<uint64_t> tidiedBits(const EditGraphIterator& at, const std::vector<IdStamp>& nodes,
                                 VidRouting::Orientations::Orientation orientation, GraphExaminer::Walk walk) {
  FakePosSource source(orientation);
  FXGraphTidier tidier(source, FXGraphView::layoutGap, FXGraphView::layoutGap);
  EditGraphIterator it = at;
  tidier.tidyTreeStruct(it, 0.25, -0.5, walk);
  std::vector<uint64_t> bits;
  for (const IdStamp& id : nodes) {
    const NodeUIPosRec* rec = source.find(id);
    const XY<double> p = rec ? rec->getDrawPosition() : XY<double>(-7, -7);
    bits.push_back(std::bit_cast<uint64_t>(p.x));
    bits.push_back(std::bit_cast<uint64_t>(p.y));
  }
  const Ux::Box<double> e = tidier.getTreeExtents();
  for (double v : {e.x0, e.y0, e.x1, e.y1}) bits.push_back(std::bit_cast<uint64_t>(v));
  return bits;
}

} // namespace testsupport
