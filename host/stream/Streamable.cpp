#include "host/stream/Streamable.h"

#include "host/stream/StreamableTraits.h"

Streamable::Streamable(BuilderType, const Streamable&) {}

Streamable::~Streamable() = default;

void Streamable::STRM_L_Streamable_buildHierarchyName(LightweightString<char>& text, bool withRoot, bool shortNames) {
  if (!withRoot) return;
  StreamableTraitsBase::prependLayerName(text, shortNames ? shortLayerName() : layerName());
}

int Streamable::STRM_hierarchyPack(PStream& s) const {
  return StreamableTraits<Streamable, void>::hierarchyPackRoot(this, s);
}

int Streamable::STRM_hierarchyUnpack(PStream& s) { return StreamableTraits<Streamable, void>::unpack(this, s); }

Ux::Ptr<Streamable> Streamable::clone(BuilderType b) const { return Ux::Ptr<Streamable>(new Streamable(b, *this)); }

LightweightString<char> Streamable::hierarchyName(bool withRoot, bool shortNames) const {
  LightweightString<char> text;
  STRM_L_Streamable_buildHierarchyName(text, withRoot, shortNames);
  return text;
}

void Streamable::assign(const Streamable*) {}
