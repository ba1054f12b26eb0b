#include "layout/FXGraphTidier.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numbers>
#include <unordered_set>
#include <vector>

#include "host/edit/Edit.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/GraphNodeKinds.h"

namespace {

// Neighbours exactly one spacing apart must not count as overlapping despite
// rounding in the sums of offsets (graph units).
constexpr double overlapTolerance = 0.0001;

// The number of different nodes or channels feeding an effect; 0 for a node
// that is not an effect. Unsigned 64-bit on purpose: the sibling spread below
// subtracts one before converting, and for 0 that wraps to 2^64 - 1, which
// pushes the children of a non-effect parent far out along the breadth axis.
// Tidy's positions include that wrap.
uint64_t distinctInputTracks(const FXGraphNodeBase& node) {
  const auto* effect = dynamic_cast<const EffectInstance_opu4h5a4j*>(&node);
  if (!effect) return 0;
  const unsigned inputs = effect->getNumInputs();
  if (inputs > 16) {
    std::unordered_set<IdStamp> seen;
    for (unsigned i = 0; i < inputs; ++i)
      if (const IdStamp track = effect->getInputTrackId(i); track.valid()) seen.insert(track);
    return seen.size();
  }
  // Most effects have a handful of inputs: each is compared with those before it.
  uint64_t distinct = 0;
  for (unsigned i = 0; i < inputs; ++i) {
    const IdStamp track = effect->getInputTrackId(i);
    if (!track.valid()) continue;
    bool repeat = false;
    for (unsigned k = 0; k < i && !repeat; ++k) repeat = effect->getInputTrackId(k) == track;
    distinct += repeat ? 0 : 1;
  }
  return distinct;
}

// The subtype of the channel through which the iterator reached its node, or -1.
int channelSubtype(const EditGraphIterator& iterator) {
  const int channel = iterator.getChanIndex(-1);
  const EditPtr& edit = iterator.getEdit();
  return edit && channel >= 0 ? edit->getChan(channel).subtype : -1;
}

// Materials of this host kind on channels of this subtype stay out of the
// local tree.
bool isLeftOutOfLocalTree(const FXGraphNodeBase& node, const EditGraphIterator& iterator) {
  const auto* material = dynamic_cast<const MaterialUsageNode*>(&node);
  if (!material) return false;
  const MaterialUsageNode::Kind kind = material->getMaterialKind();
  return kind.first == 1 && kind.second == 647 && channelSubtype(iterator) == 4;
}

double toRadians(double degrees) { return degrees * std::numbers::pi / 180.0; }

} // namespace

FXGraphTidier::FXGraphTidier(NodeUIPosSource& source, double depthSpacing, double breadthSpacing)
    : depthSpacing_(depthSpacing), breadthSpacing_(breadthSpacing), source_(source) {}

bool FXGraphTidier::tidyTreeStruct(EditGraphIterator& iterator, double x, double y, GraphExaminer::Walk walk) {
  minX_ = maxX_ = x;
  minY_ = maxY_ = y;
  const Ux::Ptr<FXGraphNodeBase> root = iterator.getNode();
  if (!root || !source_.getPosRecForNode(root->getId())) return false;

  GraphExaminer examiner(source_);
  examiner.examine(iterator, walk);
  if (walk == GraphExaminer::Walk::everyPath || !parentsOneLevelUp(examiner))
    placeLevelsAgainEachTime(examiner, x, y);
  else
    placeLevelByLevel(examiner, x, y);
  for (const auto& [id, info] : examiner.records()) {
    if (!info.record) continue;
    const XY<double> p = info.record->getDrawPosition();
    if (p.x < minX_)
      minX_ = p.x;
    else if (p.x > maxX_)
      maxX_ = p.x;
    if (p.y < minY_)
      minY_ = p.y;
    else if (p.y > maxY_)
      maxY_ = p.y;
  }
  return true;
}

// Whether every node's parent lies on the level just above it, as in every
// graph without a cycle; placing level by level relies on it.
bool FXGraphTidier::parentsOneLevelUp(const GraphExaminer& examiner) {
  for (const auto& [id, info] : examiner.records()) {
    if (!info.parent) continue;
    const GraphExaminer::NodeInfo* parent = examiner.find(info.parent->getId());
    if (!parent || parent->depth != info.depth - 1) return false;
  }
  return true;
}

GraphExaminer::RelPos FXGraphTidier::relativePosition(const GraphExaminer& examiner,
                                                      const GraphExaminer::NodeInfo& info, double x, double y) const {
  // Each node relative to its parent: one depth spacing further out, siblings
  // one spacing apart with the first input at the positive end, the set
  // centred on the parent.
  if (!info.parent) return {nullptr, x, y};
  const GraphExaminer::NodeInfo* parentInfo = examiner.find(info.parent->getId());
  const uint64_t siblings = distinctInputTracks(*info.parent);
  const double breadth = static_cast<double>(siblings - 1) * breadthSpacing_ * 0.5 - info.inputIndex * breadthSpacing_;
  return {parentInfo ? parentInfo->record : nullptr, depthSpacing_, breadth};
}

// Cousins can land on each other. Per level, the first pair too close
// spreads the parents' level by half a spacing each way about the first
// pair member's parent; the two levels nearest the root are left alone.
//
// A level's places follow from the level above and its own offsets, and a
// spread changes only the level above and what lies below it, so each level
// is placed when it is first looked at and placed again only after a spread
// of the level above it: the places are those of placing every level again
// after every spread, and the work grows with the nodes, not with nodes
// times levels.
void FXGraphTidier::placeLevelByLevel(const GraphExaminer& examiner, double x, double y) {
  const auto& levels = examiner.levels();
  const double spacing = breadthSpacing_;
  const VidRouting::Orientations::Orientation orientation = source_.getOrientation();
  // Places are worked out in a table, each parent's found by its place in
  // the level above, and written into the records once at the end: a record
  // tells its followers of every move, and a level may be placed twice. Only
  // when a record's draw values have a manager, which may change what it is
  // given, does each place go through the record as it is made.
  struct Slot {
    XY<double> at;
    int parentLevel = -1, parent = -1; // the parent's slot; -1: its record, read as it stands
  };
  std::vector<std::vector<GraphExaminer::RelPos>> rel(levels.size());
  std::vector<std::vector<Slot>> slots(levels.size());
  bool managed = false;
  for (std::size_t k = 0; k < levels.size(); ++k) {
    rel[k].reserve(levels[k].size());
    slots[k].resize(levels[k].size());
    for (std::size_t j = 0; j < levels[k].size(); ++j) {
      const GraphExaminer::NodeInfo& info = levels[k][j];
      rel[k].push_back(relativePosition(examiner, info, x, y));
      if (info.record) managed = managed || info.record->drawX().getManager() || info.record->drawY().getManager();
      if (!rel[k][j].parentRecord) continue;
      const GraphExaminer::NodeInfo* parent = examiner.find(info.parent->getId());
      if (parent && parent->slot >= 0) slots[k][j].parentLevel = parent->depth, slots[k][j].parent = parent->slot;
    }
  }
  auto placeOf = [&](std::size_t k, std::size_t j) {
    return managed ? levels[k][j].record->getDrawPosition() : slots[k][j].at;
  };
  auto place = [&](std::size_t k, std::size_t j) {
    const GraphExaminer::NodeInfo& info = levels[k][j];
    if (!info.record) return;
    if (managed) {
      storeAbsNodePosition(info, rel[k][j], orientation);
      return;
    }
    const GraphExaminer::RelPos& r = rel[k][j];
    const Slot& slot = slots[k][j];
    XY<double> p{r.depthOffset, r.breadthOffset};
    if (r.parentRecord) {
      // As storeAbsNodePosition places it.
      const XY<double> parent =
          slot.parent >= 0 ? slots[static_cast<std::size_t>(slot.parentLevel)][static_cast<std::size_t>(slot.parent)].at
                           : r.parentRecord->getDrawPosition();
      p = orientation == VidRouting::Orientations::LeftToRight
              ? XY<double>{parent.x - r.depthOffset, parent.y + r.breadthOffset}
              : XY<double>{parent.x - r.breadthOffset, parent.y - r.depthOffset};
    }
    slots[k][j].at = p;
  };
  // As overlap() compares two records.
  auto tooClose = [&](std::size_t k, std::size_t j) {
    if (!levels[k][j].record || !levels[k][j + 1].record) return false;
    const XY<double> a = placeOf(k, j), b = placeOf(k, j + 1);
    if (orientation == VidRouting::Orientations::LeftToRight)
      return std::fabs(a.y - b.y) < breadthSpacing_ - overlapTolerance;
    return std::fabs(a.x - b.x) < depthSpacing_ - overlapTolerance;
  };

  std::size_t placed = 0; // levels below this one hold their current places
  auto placeTo = [&](std::size_t last) {
    for (; placed <= last && placed < levels.size(); ++placed)
      for (std::size_t j = 0; j < levels[placed].size(); ++j) place(placed, j);
  };
  for (std::size_t k = 2; k < levels.size(); ++k) {
    placeTo(k);
    const auto& level = levels[k];
    for (std::size_t j = 0; j + 1 < level.size(); ++j) {
      if (!tooClose(k, j)) continue;
      if (level[j].parent->getId() != level[j + 1].parent->getId()) {
        bool pastParent = false;
        for (std::size_t u = 0; u < levels[k - 1].size(); ++u) {
          rel[k - 1][u].breadthOffset += pastParent ? -0.5 * spacing : 0.5 * spacing;
          if (levels[k - 1][u].node->getId() == level[j].parent->getId()) pastParent = true;
        }
        placed = k - 1;
      }
      break;
    }
  }
  placeTo(levels.empty() ? 0 : levels.size() - 1);
  if (managed) return;
  for (std::size_t k = 0; k < levels.size(); ++k)
    for (std::size_t j = 0; j < levels[k].size(); ++j)
      if (NodeUIPosRec* record = levels[k][j].record) record->setDrawPosition(slots[k][j].at, false);
}

// Places every level again after every spread. Needs nothing of the
// graph's shape: used when a parent is not on the level just above its
// node (a cycle) and by the every-path walk.
void FXGraphTidier::placeLevelsAgainEachTime(const GraphExaminer& examiner, double x, double y) {
  const auto& levels = examiner.levels();
  const double spacing = breadthSpacing_;
  std::map<IdStamp, GraphExaminer::RelPos> relPos;
  for (const auto& level : levels)
    for (const GraphExaminer::NodeInfo& info : level)
      relPos[info.node->getId()] = relativePosition(examiner, info, x, y);
  const VidRouting::Orientations::Orientation orientation = source_.getOrientation();
  storeAbsNodePositions(examiner, relPos, orientation);
  for (std::size_t k = 2; k < levels.size(); ++k) {
    const auto& level = levels[k];
    for (std::size_t j = 0; j + 1 < level.size(); ++j) {
      if (!overlap(level[j].record, level[j + 1].record)) continue;
      if (level[j].parent->getId() != level[j + 1].parent->getId()) {
        bool pastParent = false;
        for (const GraphExaminer::NodeInfo& upper : levels[k - 1]) {
          const auto found = relPos.find(upper.node->getId());
          if (found != relPos.end()) found->second.breadthOffset += pastParent ? -0.5 * spacing : 0.5 * spacing;
          if (upper.node->getId() == level[j].parent->getId()) pastParent = true;
        }
        storeAbsNodePositions(examiner, relPos, orientation);
      }
      break;
    }
  }
}

bool FXGraphTidier::overlap(NodeUIPosRec* a, NodeUIPosRec* b) const {
  if (!a || !b) return false;
  const XY<double> pa = a->getDrawPosition();
  const XY<double> pb = b->getDrawPosition();
  if (source_.getOrientation() == VidRouting::Orientations::LeftToRight)
    return std::fabs(pa.y - pb.y) < breadthSpacing_ - overlapTolerance;
  return std::fabs(pa.x - pb.x) < depthSpacing_ - overlapTolerance;
}

void storeAbsNodePosition(const GraphExaminer::NodeInfo& info, const GraphExaminer::RelPos& rel,
                          VidRouting::Orientations::Orientation orientation) {
  if (!info.record) return;
  double x = rel.depthOffset;
  double y = rel.breadthOffset;
  if (rel.parentRecord) {
    // Depth always runs towards smaller coordinates; breadth keeps y up in
    // left-to-right and runs leftwards in bottom-to-top.
    const XY<double> parent = rel.parentRecord->getDrawPosition();
    if (orientation == VidRouting::Orientations::LeftToRight) {
      x = parent.x - rel.depthOffset;
      y = parent.y + rel.breadthOffset;
    } else {
      x = parent.x - rel.breadthOffset;
      y = parent.y - rel.depthOffset;
    }
  }
  info.record->setDrawPosition(x, y, false);
}

void storeAbsNodePositions(const GraphExaminer& examiner, const std::map<IdStamp, GraphExaminer::RelPos>& relPos,
                           VidRouting::Orientations::Orientation orientation) {
  for (const auto& level : examiner.levels()) {
    for (const GraphExaminer::NodeInfo& info : level) {
      const auto found = relPos.find(info.node->getId());
      if (found != relPos.end()) storeAbsNodePosition(info, found->second, orientation);
    }
  }
}

XY<double> rotatePointAboutOrigin(const XY<double>& p, double degrees) {
  if (p.x == 0 && p.y == 0) return p;
  double angle = 0; // polar angle of p, degrees
  if (p.x == 0) {
    angle = p.y > 0 ? 90 : 270;
  } else if (p.y == 0) {
    angle = p.x > 0 ? 0 : 180;
  } else {
    const double u = std::atan(std::fabs(p.y / p.x)) * 180.0 / std::numbers::pi;
    if (p.x > 0)
      angle = p.y > 0 ? u : 360 - u;
    else
      angle = p.y > 0 ? 180 - u : u + 180;
  }
  const double r = std::sqrt(p.x * p.x + p.y * p.y);
  return {r * std::cos(toRadians(angle + degrees)), r * std::sin(toRadians(angle + degrees))};
}

// Local tree ------------------------------------------------------------------

int FXGraphTidier::findLocalRec(const NodeUIPosRec* record) const {
  for (int i = 0; i < localCount_; ++i)
    if (localTree_[static_cast<std::size_t>(i)].record == record) return i;
  return -1;
}

void FXGraphTidier::unlinkFromParent(int index) {
  const int parent = localTree_[static_cast<std::size_t>(index)].parent;
  if (parent < 0) return;
  LocalTreeRec& from = localTree_[static_cast<std::size_t>(parent)];
  for (int k = 0; k < from.childCount; ++k) {
    if (from.children[k] != index) continue;
    std::copy(from.children + k + 1, from.children + from.childCount, from.children + k);
    --from.childCount;
    return;
  }
}

int FXGraphTidier::parseEditIntoLocalTree(EditGraphIterator& iterator, NodeUIPosRec* record, int parent) {
  const Ux::Ptr<FXGraphNodeBase> node = iterator.getNode();
  if (!node || !record) return -1;
  if (isLeftOutOfLocalTree(*node, iterator)) return -1;
  const int depth = iterator.getDepth();
  for (int d = depth - 1; d >= 0; --d) {
    const Ux::Ptr<FXGraphNodeBase> above = iterator.getNode(d);
    if (above && above->getId() == node->getId()) return -1; // a cycle
  }

  // Met again further from the root: move the branch under the new parent.
  if (const int known = findLocalRec(record); known >= 0) {
    LocalTreeRec& rec = localTree_[static_cast<std::size_t>(known)];
    if (rec.depthLevel >= depth) return -1;
    unlinkFromParent(known);
    rec.parent = parent;
    offsetDepth(known, depth - rec.depthLevel);
    return known;
  }

  if (localCount_ >= maxLocalRecords) return -1;
  const int index = localCount_++;
  LocalTreeRec& rec = localTree_[static_cast<std::size_t>(index)];
  rec = LocalTreeRec{};
  rec.record = record;
  rec.parent = parent;
  rec.depthLevel = depth;
  for (int i = static_cast<int>(node->getNumInputs()) - 1; i >= 0; --i) {
    if (rec.childCount >= maxLocalChildren) break; // full: later inputs are left out
    if (!iterator.moveToInput(i)) continue;
    const Ux::Ptr<FXGraphNodeBase> input = iterator.getNode();
    NodeUIPosRec* inputRecord = source_.getPosRecForNode(input->getId());
    if (inputRecord && inputRecord->getExtraValue() == record->getExtraValue()) {
      const int child = parseEditIntoLocalTree(iterator, inputRecord, index);
      if (child >= 0) rec.children[rec.childCount++] = child;
    }
    iterator.moveBack();
  }
  return index;
}

void FXGraphTidier::tidyTreeRecursive(int index, double depth) {
  LocalTreeRec& rec = localTree_[static_cast<std::size_t>(index)];
  rec.depthPos = depth;
  if (rec.childCount == 0) {
    rec.breadthPos = 0;
    return;
  }
  for (int k = 0; k < rec.childCount; ++k) tidyTreeRecursive(rec.children[k], depth - depthSpacing_);
  const auto breadthOf = [this](int i) { return localTree_[static_cast<std::size_t>(i)].breadthPos; };
  if (rec.childCount == 1) {
    // A lone child sits half a spacing off its parent, away from its side.
    const double mean = breadthOf(rec.children[0]);
    rec.breadthPos = mean + 0.5 * (mean < 0 ? breadthSpacing_ : -breadthSpacing_);
    return;
  }
  for (int k = 1; k < rec.childCount; ++k) {
    double shift = 0;
    for (int j = 0; j < k; ++j) shift = std::max(shift, getShiftAmmount(rec.children[j], rec.children[k]));
    shiftBranch(rec.children[k], shift + breadthSpacing_);
  }
  rec.breadthPos = (breadthOf(rec.children[0]) + breadthOf(rec.children[rec.childCount - 1])) / 2;
}

double FXGraphTidier::getShiftAmmount(int a, int b) const {
  const LocalTreeRec& ra = localTree_[static_cast<std::size_t>(a)];
  const LocalTreeRec& rb = localTree_[static_cast<std::size_t>(b)];
  const double apart = ra.breadthPos - rb.breadthPos;
  if (ra.childCount == 0 || rb.childCount == 0) return apart;
  const auto breadthOf = [this](int i) { return localTree_[static_cast<std::size_t>(i)].breadthPos; };
  double shift = std::max(apart, breadthOf(ra.children[ra.childCount - 1]) - breadthOf(rb.children[0]));
  for (int i = 0; i < ra.childCount; ++i)
    for (int j = 0; j < rb.childCount; ++j) shift = std::max(shift, getShiftAmmount(ra.children[i], rb.children[j]));
  return shift;
}

void FXGraphTidier::shiftBranch(int index, double amount) {
  LocalTreeRec& rec = localTree_[static_cast<std::size_t>(index)];
  rec.breadthPos += amount;
  for (int k = 0; k < rec.childCount; ++k) shiftBranch(rec.children[k], amount);
}

void FXGraphTidier::offsetDepth(int index, int levels) {
  LocalTreeRec& rec = localTree_[static_cast<std::size_t>(index)];
  rec.depthLevel += levels;
  for (int k = 0; k < rec.childCount; ++k) offsetDepth(rec.children[k], levels);
}

void FXGraphTidier::findLocalTreeExtents() {
  for (int i = 0; i < localCount_; ++i) {
    const LocalTreeRec& rec = localTree_[static_cast<std::size_t>(i)];
    if (i == 0) {
      minX_ = maxX_ = rec.depthPos;
      minY_ = maxY_ = rec.breadthPos;
      continue;
    }
    minX_ = std::min(minX_, rec.depthPos);
    maxX_ = std::max(maxX_, rec.depthPos);
    minY_ = std::min(minY_, rec.breadthPos);
    maxY_ = std::max(maxY_, rec.breadthPos);
  }
}

void FXGraphTidier::updatePositionsInternal(int index, double dx, double dy) {
  const LocalTreeRec& rec = localTree_[static_cast<std::size_t>(index)];
  if (rec.record) rec.record->setDrawPosition(dx + rec.depthPos, dy + rec.breadthPos, false);
  for (int k = 0; k < rec.childCount; ++k) updatePositionsInternal(rec.children[k], dx, dy);
}

void FXGraphTidier::updatePositionRecsFromLocalTree() {
  findLocalTreeExtents();
  // Written as laid out, so that the extents describe the written positions.
  if (localCount_ > 0) updatePositionsInternal(0, 0, 0);
}
