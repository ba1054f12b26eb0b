#pragma once
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "host/edit/Edit.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/GraphNodeKinds.h"

namespace layouttest {

// Node n of a test graph.
inline IdStamp node(uint32_t n) { return IdStamp(2, 0, n); }
inline IdStamp channelId(uint32_t n) { return IdStamp(1, 0, n); }

// A node with input slots that is not an effect instance (a host could have
// such kinds); the layout finds no input tracks to count on it.
class Splitter : public FXGraphNodeBase {
public:
  Splitter(const IdStamp& id, std::vector<IdStamp> inputs) : FXGraphNodeBase(id, L"Splitter"), inputs_(inputs) {}
  unsigned getNumInputs() const override { return static_cast<unsigned>(inputs_.size()); }
  IdStamp getInputTrackId(unsigned i) const override { return i < inputs_.size() ? inputs_[i] : IdStamp(); }
  Ux::Ptr<FXGraphNodeBase> cloneNode() const override { return Ux::Ptr<FXGraphNodeBase>(new Splitter(*this)); }

private:
  Splitter(const Splitter&) = default;
  std::vector<IdStamp> inputs_;
};

// A small hand-made edit: effects, materials and splitters numbered by the
// test, channels whose graph cels span [0, 10). Closed when the test ends.
class TestGraph {
public:
  TestGraph() : edit_(new Edit(Cookie::generate(), L"Layout test")) {}
  ~TestGraph() { edit_->close(); }
  TestGraph(const TestGraph&) = delete;
  TestGraph& operator=(const TestGraph&) = delete;

  EditPtr ptr() const { return EditPtr(edit_); }

  // An effect fed by the given nodes; 0 leaves a slot free.
  IdStamp effect(uint32_t n, std::initializer_list<uint32_t> inputs) {
    std::vector<IdStamp> slots;
    for (uint32_t i : inputs) slots.push_back(i ? node(i) : IdStamp());
    return effectWithSlots(n, slots);
  }
  // An effect whose slots name nodes or channels directly.
  IdStamp effectWithSlots(uint32_t n, const std::vector<IdStamp>& slots) {
    Ux::Ptr<EffectInstance> fx(new EffectInstance(node(n), L"Effect", "mix"));
    fx->setNumInputs(static_cast<unsigned>(slots.size()));
    for (unsigned i = 0; i < slots.size(); ++i) fx->setInputTrackId(i, slots[i], false);
    edit_->addNode(fx);
    return node(n);
  }
  void materials(std::initializer_list<uint32_t> ns) {
    for (uint32_t n : ns) material(n);
  }
  IdStamp material(uint32_t n, MaterialUsageNode::Kind kind = {}) {
    Ux::Ptr<MaterialUsageNode> m(new MaterialUsageNode(node(n), L"Clip", MaterialUsageNode::Media::testCard, "bars"));
    m->setMaterialKind(kind);
    edit_->addNode(m);
    return node(n);
  }
  IdStamp splitter(uint32_t n, std::initializer_list<uint32_t> inputs) {
    std::vector<IdStamp> slots;
    for (uint32_t i : inputs) slots.push_back(node(i));
    edit_->addNode(Ux::Ptr<FXGraphNodeBase>(new Splitter(node(n), slots)));
    return node(n);
  }
  // A video channel whose cel over [0, 10) is the graph headed by `head`
  // (or, with `asMaterial`, that material).
  IdStamp channel(uint32_t n, const IdStamp& head, int subtype = 0, bool asMaterial = false) {
    EditChannel c;
    c.id = channelId(n);
    c.subtype = subtype;
    c.cels.push_back({0, 10, asMaterial ? Cel::Kind::material : Cel::Kind::graph, head});
    const IdStamp id = c.id;
    edit_->addChannel(std::move(c));
    return id;
  }

  // An iterator standing at node n itself (the root of the walk).
  EditGraphIterator at(uint32_t n) const { return EditGraphIterator(ptr(), 0, node(n), 0); }
  EditGraphIterator atChannel(uint32_t n) const { return EditGraphIterator::atChannel(ptr(), 0, channelId(n)); }

private:
  Ux::Ptr<Edit> edit_;
};

} // namespace layouttest
