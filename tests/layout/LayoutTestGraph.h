#pragma once
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "host/edit/Edit.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/GraphNodeKinds.h"
#include "tests/support/TestEdit.h"

namespace layouttest {

// Node n of a test graph.
inline IdStamp node(uint32_t n) { return IdStamp(2, 0, n); }

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
// test. Closed when the test ends.
class TestGraph : public testsupport::ScopedEdit {
public:
  // An effect fed by the given nodes; 0 leaves a slot free.
  IdStamp effect(uint32_t n, std::initializer_list<uint32_t> inputs) {
    std::vector<IdStamp> slots;
    for (uint32_t i : inputs) slots.push_back(i ? node(i) : IdStamp());
    return effectWithSlots(n, slots);
  }
  // An effect whose slots name nodes directly.
  IdStamp effectWithSlots(uint32_t n, const std::vector<IdStamp>& slots) {
    return EditBuilder::effect(node(n), "mix", slots)->getId();
  }
  void materials(std::initializer_list<uint32_t> ns) {
    for (uint32_t n : ns) material(n);
  }
  IdStamp material(uint32_t n) { return EditBuilder::material(node(n))->getId(); }
  IdStamp splitter(uint32_t n, std::initializer_list<uint32_t> inputs) {
    std::vector<IdStamp> slots;
    for (uint32_t i : inputs) slots.push_back(node(i));
    (*this)->addNode(Ux::Ptr<FXGraphNodeBase>(new Splitter(node(n), slots)));
    return node(n);
  }
  // An iterator standing at node n itself (the root of the walk).
  EditGraphIterator at(uint32_t n) const { return EditGraphIterator(edit(), 0, node(n), 0); }
};

} // namespace layouttest
