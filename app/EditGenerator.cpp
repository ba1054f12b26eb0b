#include "app/EditGenerator.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "host/edit/EditFile.h"
#include "host/edit/GraphNodeKinds.h"

namespace fxgraph {
namespace {

// A small deterministic generator; the standard distributions are not the
// same everywhere, this is.
class Dice {
public:
  explicit Dice(uint64_t seed) : engine_(seed) {}
  unsigned below(unsigned n) { return n ? static_cast<unsigned>(engine_() % n) : 0; }
  double unit() { return static_cast<double>(engine_() >> 11) / 9007199254740992.0; }

private:
  std::mt19937_64 engine_;
};

const char* const effectTags[] = {"mix", "wipe", "pip", "colourcorrect", "", "PixShader:Blur:gaussian.fx"};
const char* const effectNames[] = {"Dissolve", "Wipe", "Picture in picture", "Colour correction", "Effect", "Blur"};
const char* const testCards[] = {"bars", "grid", "ramp"};

class Builder {
public:
  Builder(Edit& edit, uint64_t seed) : edit_(edit), dice_(seed) {}

  // A tree of about `budget` nodes; returns its head.
  IdStamp tree(unsigned budget) {
    if (budget <= 1) return leaf();
    const unsigned kind = dice_.below(6);
    const unsigned inputs = kind < 3 ? 2 : 1 + dice_.below(3);
    Ux::Ptr<EffectInstance> effect(new EffectInstance(next(), toWide(effectNames[kind]), effectTags[kind]));
    effect->setNumInputs(inputs);
    edit_.addNode(effect);
    unsigned left = budget - 1;
    for (unsigned i = 0; i < inputs; ++i) {
      const unsigned share = i + 1 == inputs ? left : std::max(1u, left / (inputs - i));
      effect->setInputTrackId(i, left ? tree(share) : IdStamp(), false);
      left = left > share ? left - share : 0;
    }
    return effect->getId();
  }

  IdStamp next() { return IdStamp(2, 0, ++count_); }
  unsigned count() const { return count_; }

private:
  IdStamp leaf() {
    const IdStamp id = next();
    if (dice_.below(4) == 0) {
      edit_.addNode(Ux::Ptr<FXGraphNodeBase>(new ComplexBackgroundEffect(
          id, L"Matte", ComplexBackgroundEffect::Mode::flat, Colour(dice_.unit(), dice_.unit(), dice_.unit()))));
    } else {
      edit_.addNode(Ux::Ptr<FXGraphNodeBase>(new MaterialUsageNode(id, L"Clip " + toWide(std::to_string(id.third())),
                                                                   MaterialUsageNode::Media::testCard,
                                                                   testCards[dice_.below(3)])));
    }
    return id;
  }

  Edit& edit_;
  Dice dice_;
  unsigned count_ = 0;
};

// One output over a tree grown as compositing trees grow: an expanded node
// takes 1, 2, 3 or 4 inputs (probabilities 0.55, 0.33, 0.10, 0.02); the node
// expanded next is the newest open one with probability 0.6, else any open
// one; no deeper than 20; nodes never expanded are sources. Then nodes/100
// extra inputs from a node to a deeper existing one (shared inputs, still
// without cycles).
IdStamp deepTree(Edit& edit, unsigned nodes, Dice& dice) {
  struct Made {
    Ux::Ptr<EffectInstance> effect; // null while a source
    IdStamp id;
    unsigned depth;
  };
  std::vector<Made> made;
  std::vector<std::size_t> open; // expandable, by index into made
  auto id = [&] { return IdStamp(2, 0, static_cast<uint32_t>(made.size() + 1)); };
  made.push_back({nullptr, id(), 0});
  open.push_back(0);
  while (made.size() < nodes && !open.empty()) {
    const std::size_t pick = dice.unit() < 0.6 ? open.size() - 1 : dice.below(static_cast<unsigned>(open.size()));
    const std::size_t at = open[pick];
    open.erase(open.begin() + static_cast<std::ptrdiff_t>(pick));
    const double roll = dice.unit();
    const unsigned inputs = roll < 0.55 ? 1 : roll < 0.88 ? 2 : roll < 0.98 ? 3 : 4;
    const unsigned kind = inputs == 1 ? 3 + dice.below(3) : dice.below(3);
    Ux::Ptr<EffectInstance> effect(new EffectInstance(made[at].id, toWide(effectNames[kind]), effectTags[kind]));
    effect->setNumInputs(inputs);
    made[at].effect = effect;
    for (unsigned i = 0; i < inputs && made.size() < nodes; ++i) {
      made.push_back({nullptr, id(), made[at].depth + 1});
      effect->setInputTrackId(i, made.back().id, false);
      if (made.back().depth < 20) open.push_back(made.size() - 1);
    }
  }
  // Sources: test cards and mattes.
  for (Made& m : made) {
    if (m.effect) {
      edit.addNode(m.effect);
    } else if (dice.below(4) == 0) {
      edit.addNode(Ux::Ptr<FXGraphNodeBase>(new ComplexBackgroundEffect(
          m.id, L"Matte", ComplexBackgroundEffect::Mode::flat, Colour(dice.unit(), dice.unit(), dice.unit()))));
    } else {
      edit.addNode(Ux::Ptr<FXGraphNodeBase>(new MaterialUsageNode(m.id, L"Clip " + toWide(std::to_string(m.id.third())),
                                                                  MaterialUsageNode::Media::testCard,
                                                                  testCards[dice.below(3)])));
    }
  }
  // Shared inputs: an effect's extra input to a node made later, hence
  // deeper or beside it, never above it.
  for (unsigned k = 0; k < nodes / 100 && made.size() > 2; ++k) {
    const std::size_t from = dice.below(static_cast<unsigned>(made.size() - 1));
    if (!made[from].effect) continue;
    const std::size_t to = from + 1 + dice.below(static_cast<unsigned>(made.size() - from - 1));
    Ux::Ptr<EffectInstance> effect = made[from].effect;
    effect->setNumInputs(effect->getNumInputs() + 1);
    effect->setInputTrackId(effect->getNumInputs() - 1, made[to].id, false);
  }
  return made.front().id;
}

} // namespace

EditPtr generateDeepEdit(unsigned nodes, uint64_t seed) {
  Dice cookieDice(seed ^ 0x9e3779b97f4a7c15ull);
  Cookie::Bytes id{};
  for (auto& b : id) b = static_cast<uint8_t>(cookieDice.below(256));
  id[0] |= 1;
  EditPtr edit(new Edit(Cookie(id, Cookie::editKind, 0), L"Generated"));
  Dice dice(seed);
  EditChannel channel;
  channel.id = IdStamp(1, 0, 1);
  channel.name = L"V1";
  channel.group = channel.name;
  channel.cels.push_back({0, 60, Cel::Kind::graph, deepTree(*edit, std::max(1u, nodes), dice)});
  edit->addChannel(std::move(channel));
  return edit;
}

EditPtr generateEdit(unsigned nodes, uint64_t seed, unsigned treeSize) {
  Dice cookieDice(seed ^ 0x9e3779b97f4a7c15ull);
  Cookie::Bytes id{};
  for (auto& b : id) b = static_cast<uint8_t>(cookieDice.below(256));
  id[0] |= 1; // never the invalid cookie
  EditPtr edit(new Edit(Cookie(id, Cookie::editKind, 0), L"Generated"));
  Builder build(*edit, seed);
  // By default trees of a few dozen nodes, as real graphs are, one per channel.
  const unsigned perTree = std::max(1u, treeSize);
  const unsigned trees = std::max(1u, (nodes + perTree - 1) / perTree);
  for (unsigned t = 0; t < trees && build.count() < nodes; ++t) {
    const unsigned budget = std::min(perTree, nodes - build.count());
    EditChannel channel;
    channel.id = IdStamp(1, 0, t + 1);
    channel.name = L"V" + toWide(std::to_string(t + 1));
    channel.group = channel.name;
    channel.cels.push_back({0, 60, Cel::Kind::graph, build.tree(budget)});
    edit->addChannel(std::move(channel));
  }
  return edit;
}

int runGenEditCommand(int argc, const char* const* argv, std::string& message) {
  static const char* const usage =
      "usage: fxgraph gen-edit --nodes N (1 to 10000000) --seed S [--tree-size K] [--shape deep|forest] OUT";
  unsigned long nodes = 0;
  unsigned long treeSize = 40;
  unsigned long long seed = 1;
  std::string out, shape = "forest";
  for (int i = 0; i < argc; ++i) {
    const std::string arg = argv[i];
    if ((arg == "--nodes" || arg == "--seed" || arg == "--tree-size") && i + 1 < argc) {
      char* end = nullptr;
      const unsigned long long v = std::strtoull(argv[++i], &end, 10);
      if (!end || *end || argv[i][0] == '-') {
        message = "fxgraph gen-edit: " + arg + " wants a whole number";
        return 2;
      }
      if (arg == "--nodes")
        nodes = static_cast<unsigned long>(v);
      else if (arg == "--tree-size")
        treeSize = static_cast<unsigned long>(v);
      else
        seed = v;
    } else if (arg == "--shape" && i + 1 < argc) {
      shape = argv[++i];
      if (shape != "deep" && shape != "forest") {
        message = "fxgraph gen-edit: --shape is deep or forest";
        return 2;
      }
    } else if (out.empty() && !arg.starts_with("--")) {
      out = arg;
    } else {
      message = usage;
      return 2;
    }
  }
  if (nodes == 0 || nodes > 10000000 || treeSize == 0 || out.empty()) {
    message = usage;
    return 2;
  }
  EditPtr edit = shape == "deep" ? generateDeepEdit(static_cast<unsigned>(nodes), seed)
                                 : generateEdit(static_cast<unsigned>(nodes), seed,
                                                static_cast<unsigned>(std::min(treeSize, nodes)));
  // A deep tree stops growing where no node is left to expand.
  const std::size_t made = edit->allNodes().size();
  std::string error;
  const bool saved = EditFile::save(edit, out, error);
  edit->close();
  if (!saved) {
    message = "fxgraph: " + error;
    return 1;
  }
  message = "wrote " + out + " with " + std::to_string(made) + " graph nodes";
  return 0;
}

} // namespace fxgraph
