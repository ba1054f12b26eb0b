#include "host/render/StillPlan.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "host/edit/EditGraphWalk.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/media/MediaFiles.h"
#include "host/notify/Log.h"
#include "host/render/ImageCache.h"
#include "host/render/MaterialManager.h"
#include "host/render/NodePictures.h"
#include "host/render/StillPixels.h"

namespace Render {

struct StillPlan::Step {
  enum class Op : uint8_t { black, testCard, file, media, matte, mix, wipe, pip, colourCorrect, shared };
  Op op = Op::black;
  std::string text;  // the test card's pattern, the picture file or the media file
  std::string label; // media: what its card says when it is offline
  bool flag = false; // a matte: flat; a file: over a clear ground
  Colour bottom, top;
  double x = 0, y = 0, z = 0;
  std::vector<double> gain;
  int in[2] = {-1, -1};                      // the steps whose pictures it uses; -1 is black
  NodePictures::EntryPtr from;               // Op::shared: the picture to take
  std::vector<NodePictures::EntryPtr> keeps; // promises its picture keeps
};

// The walk down the graph that writes the steps. It follows the render's
// rules exactly; only pixels are left for later.
class StillPlan::Planner {
public:
  Planner(StillPlan& plan, const RenderContext& context)
      : plan_(plan), at_(context.iterator()), top_(at_.getDepth()), share_(!hasCycleBelow()) {}

  int node() {
    height_ = 0;
    lastCut_ = false;
    Ux::Ptr<FXGraphNodeBase> here = at_.getNode();
    if (!here) return -1;
    // A node already on the path above closes a cycle: it shows black there.
    // Only a graph with a cycle can meet one, so only such a graph pays for the look.
    if (!share_)
      for (int d = 0; d < at_.getDepth(); ++d)
        if (at_.getNode(d) == here) return -1;
    const int depth = at_.getDepth() - top_;
    if (share_) {
      const auto kept = planned_.find(here.get());
      if (kept != planned_.end() && usable(kept->second.height, depth)) {
        height_ = kept->second.height;
        return kept->second.step;
      }
      if (NodePictures::EntryPtr made = NodePictures::instance().find(keyFor(*here));
          made && usable(made->height(), depth)) {
        height_ = made->height();
        Step step;
        step.op = Step::Op::shared;
        step.from = std::move(made);
        const int taken = add(std::move(step));
        planned_[here.get()] = Planned{taken, height_};
        return taken;
      }
    }
    const int outerHeight = heightSoFar_;
    const bool outerCut = cutDeep_;
    heightSoFar_ = 0;
    cutDeep_ = false;
    int step = make(here);
    const int height = heightSoFar_;
    const bool cut = cutDeep_;
    heightSoFar_ = outerHeight;
    cutDeep_ = outerCut;
    // A picture cut short by the depth limit is this path's alone.
    if (share_ && !cut) {
      if (NodePictures::EntryPtr promise = NodePictures::instance().promise(keyFor(*here), height)) {
        if (step < 0) step = add(Step{});
        plan_.steps_[static_cast<std::size_t>(step)].keeps.push_back(std::move(promise));
      }
      planned_[here.get()] = Planned{step, height};
    }
    height_ = height;
    lastCut_ = cut;
    return step;
  }

private:
  struct Planned {
    int step;
    int height; // the longest run of inputs below the node that it used
  };

  static bool usable(int height, int depth) { return height == 0 || depth + height < maxInputDepth; }

  NodePictures::Key keyFor(const FXGraphNodeBase& node, const EditGraphIterator& at) const {
    const Edit* edit = at.getEdit().get();
    return NodePictures::Key{
        edit, edit ? edit->revision() : 0, nodeChanges_, at.getTime(), node.getId(), plan_.width_, plan_.height_};
  }
  NodePictures::Key keyFor(const FXGraphNodeBase& node) const { return keyFor(node, at_); }

  int add(Step step) {
    plan_.steps_.push_back(std::move(step));
    return static_cast<int>(plan_.steps_.size()) - 1;
  }

  // Whether the graph under the iterator's node closes a cycle anywhere. A
  // node whose picture is known has nothing of the kind below it.
  bool hasCycleBelow() {
    if (!at_.isValid()) return false;
    EditGraphIterator at = at_;
    std::unordered_map<const FXGraphNodeBase*, bool> done; // false while on the path
    bool cycle = false;
    walkInputsDepthFirst(
        at,
        [&](EditGraphIterator& here) {
          const Ux::Ptr<FXGraphNodeBase> n = here.getNode();
          if (!n) return WalkStep::skip;
          const auto [it, fresh] = done.try_emplace(n.get(), false);
          if (!fresh) {
            cycle = !it->second;
            return cycle ? WalkStep::stop : WalkStep::skip;
          }
          if (NodePictures::instance().knows(keyFor(*n, here))) {
            it->second = true;
            return WalkStep::skip;
          }
          return WalkStep::descend;
        },
        [&](EditGraphIterator& here) { done[here.getNode().get()] = true; });
    return cycle;
  }

  int make(const Ux::Ptr<FXGraphNodeBase>& here) {
    const double t = at_.getTime();
    Step step;
    if (auto* m = dynamic_cast<MaterialUsageNode*>(here.get())) {
      if (m->getTrackType() != TrackType::video || m->getMedia() == MaterialUsageNode::Media::tone) return -1;
      if (m->getMedia() == MaterialUsageNode::Media::testCard) {
        step.op = Step::Op::testCard;
        step.text = m->getSource().str();
      } else {
        // The frame at the edit's time, where the material's placement puts it.
        step.op = Step::Op::media;
        step.text = path(m->getSource().str());
        step.x = m->placement().mediaTime(t);
        step.label = m->getSource().empty() ? toUTF8(m->getName()).str() : m->getSource().str();
      }
      return add(std::move(step));
    }
    auto* effect = dynamic_cast<EffectInstance*>(here.get());
    if (!effect || effect->getTrackType() != TrackType::video) return -1;
    if (auto* image = dynamic_cast<ImageImportEffect*>(effect)) {
      step.op = Step::Op::file;
      step.text = MaterialManager::findFileForImageClip(*image, *at_.getEdit());
      step.flag = true;
      return add(std::move(step));
    }
    if (auto* bg = dynamic_cast<ComplexBackgroundEffect*>(effect)) {
      step.op = Step::Op::matte;
      step.flag = bg->isFlat();
      step.bottom = bg->getColour(t, 0);
      step.top = step.flag ? step.bottom : bg->getColour(t, 1);
      return add(std::move(step));
    }
    // A bypassed effect and a stand-in show what feeds them.
    if (!effect->isActive() || dynamic_cast<AliasedInputEffect*>(effect)) return input(0);

    const LightweightString<char> tag = effect->tagTypeId();
    if (tag == "mix") {
      step.op = Step::Op::mix;
      step.x = effect->param("amount", 0.5);
      // A transition's mix runs from A to B between its start and end.
      const double from = effect->param("start", 0), to = effect->param("end", 0);
      if (to > from) step.x = std::clamp((t - from) / (to - from), 0.0, 1.0);
    } else if (tag == "wipe") {
      step.op = Step::Op::wipe;
      step.x = effect->param("position", 0.5);
    } else if (tag == "pip") {
      step.op = Step::Op::pip;
      step.x = effect->param("x", 0.75);
      step.y = effect->param("y", 0.75);
      step.z = effect->param("scale", 0.33);
    } else if (tag == "colourcorrect") {
      step.op = Step::Op::colourCorrect;
      step.gain = effect->paramValues("gain");
      step.in[0] = input(0);
      return add(std::move(step));
    } else if (tag == "compound") {
      // A nested stack shows its topmost track that has a picture there.
      for (int i = static_cast<int>(effect->getNumInputs()) - 1; i >= 0; --i)
        if (const int shown = input(i); shown >= 0 || i == 0) return shown;
      return -1;
    } else {
      return input(0);
    }
    step.in[0] = input(0);
    step.in[1] = input(1);
    return add(std::move(step));
  }

  int input(int i) {
    if (at_.getDepth() - top_ >= maxInputDepth) {
      if (!tooDeepTold_) debugPrintf("Still: inputs deeper than %d steps show black\n", maxInputDepth);
      tooDeepTold_ = true;
      cutDeep_ = true;
      return -1;
    }
    if (!at_.moveToInput(i)) return -1;
    const int step = node();
    at_.moveBack();
    heightSoFar_ = std::max(heightSoFar_, height_ + 1);
    cutDeep_ = cutDeep_ || lastCut_;
    return step;
  }

  std::string path(const std::string& file) const {
    if (file.empty() || file.front() == '/') return file;
    const std::string& folder = at_.getEdit()->getFolder();
    return folder.empty() ? file : folder + "/" + file;
  }

  StillPlan& plan_;
  EditGraphIterator at_;
  int top_; // the depth of the position rendered
  uint64_t nodeChanges_ = FXGraphNodeBase::changeCount();
  bool share_; // no cycle below: pictures are the nodes' own
  bool tooDeepTold_ = false;
  std::unordered_map<const FXGraphNodeBase*, Planned> planned_;
  int height_ = 0;       // of the node just planned or found
  bool lastCut_ = false; // whether it met the depth limit
  int heightSoFar_ = 0;  // of the inputs of the node being planned
  bool cutDeep_ = false; // whether the node being planned met the depth limit
};

StillPlan::StillPlan(const RenderContext& context) {
  const VideoFormat& f = context.format();
  valid_ = f.valid() && f.width <= DigitalVideoFormats::maxSide && f.height <= DigitalVideoFormats::maxSide;
  if (!valid_) return;
  width_ = f.width;
  height_ = f.height;
  lut_ = context.hasViewLUT();
  if (lut_) viewLUT_ = context.viewLUT();
  aspect_ = f.aspect > 0 ? f.aspect : double(width_) / height_;
  arc_ = context.arc();
  const EditGraphIterator& at = context.iterator();
  if (at.isValid() && at.getEdit()) top_ = Planner(*this, context).node();
}

StillPlan::~StillPlan() {
  for (Step& step : steps_)
    for (const NodePictures::EntryPtr& promise : step.keeps) NodePictures::instance().fulfil(promise, nullptr);
}

std::size_t StillPlan::pictures() const noexcept {
  return static_cast<std::size_t>(
      std::count_if(steps_.begin(), steps_.end(), [](const Step& s) { return s.op != Step::Op::shared; }));
}

Ux::Ptr<UxImage> StillPlan::run() {
  if (!valid_) return nullptr;
  using Pixels::Image;
  // One black frame serves every black input: pictures are never changed once made.
  Image black;
  auto blackFrame = [&] {
    if (!black) black = Pixels::blank(width_, height_);
    return black;
  };
  // Each picture is let go once the last step that uses it has run.
  std::vector<int> uses(steps_.size(), 0);
  for (const Step& s : steps_)
    for (int i : s.in)
      if (i >= 0) ++uses[static_cast<std::size_t>(i)];
  if (top_ >= 0) ++uses[static_cast<std::size_t>(top_)];
  std::vector<Image> made(steps_.size());
  for (std::size_t k = 0; k < steps_.size(); ++k) {
    Step& s = steps_[k];
    auto in = [&](int n) { return s.in[n] >= 0 ? made[static_cast<std::size_t>(s.in[n])] : blackFrame(); };
    Image& out = made[k];
    switch (s.op) {
    case Step::Op::black:
      out = blackFrame();
      break;
    case Step::Op::testCard:
      out = Pixels::testCard(s.text, width_, height_);
      break;
    case Step::Op::file:
      out = Pixels::fitted(ImageCache::loadImage(s.text, nullptr, 0, 0), width_, height_, aspect_, arc_, s.flag);
      break;
    case Step::Op::media: {
      const MediaFiles::Frame frame = MediaFiles::frameAt(s.text, s.x);
      out = frame.image ? Pixels::fitted(frame.image, width_, height_, aspect_, arc_)
                        : Pixels::offline(s.label, width_, height_);
      break;
    }
    case Step::Op::matte:
      out = Pixels::matte(s.flag, s.bottom, s.top, width_, height_);
      break;
    case Step::Op::mix:
      out = Pixels::mix(in(0), in(1), s.x);
      break;
    case Step::Op::wipe:
      out = Pixels::wipe(in(0), in(1), s.x);
      break;
    case Step::Op::pip:
      out = Pixels::pictureInPicture(in(0), in(1), s.x, s.y, s.z);
      break;
    case Step::Op::colourCorrect:
      out = Pixels::colourCorrect(in(0), s.gain);
      break;
    case Step::Op::shared:
      out = NodePictures::instance().wait(s.from);
      s.from.reset();
      // A picture given up by its maker shows black rather than nothing.
      if (!out) out = blackFrame();
      break;
    }
    for (const NodePictures::EntryPtr& promise : s.keeps) NodePictures::instance().fulfil(promise, out);
    s.keeps.clear();
    for (int i : s.in)
      if (i >= 0 && --uses[static_cast<std::size_t>(i)] == 0) made[static_cast<std::size_t>(i)].reset();
  }
  Image picture = top_ >= 0 ? made[static_cast<std::size_t>(top_)] : blackFrame();
  if (lut_) picture = Pixels::withLUT(*picture, viewLUT_);
  steps_.clear();
  return picture;
}

} // namespace Render
