#pragma once
#include <cstdint>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/core/Ptr.h"
#include "host/core/iObject.h"

class PStream;

// A layer's two-byte version, major then minor.
struct StreamLayerVersion {
  uint8_t major = 0;
  uint8_t minor = 0;
  friend constexpr bool operator==(const StreamLayerVersion&, const StreamLayerVersion&) = default;
};

// Result codes of packing and unpacking.
namespace StreamResult {
constexpr int packed = 2;         // written
constexpr int layerRead = 3;      // read, or legitimately empty
constexpr int error = 6;          // text appended to the stream's error text
constexpr int wrongLayerName = 7; // the rest of the object was skipped
constexpr int unexpectedEof = 8;
// Whether a caller may go on with the next layer.
constexpr bool canContinue(int code) { return code == packed || code == layerRead; }
} // namespace StreamResult

// Root of every persistent object. Each class of a streamable hierarchy is one
// layer, written as one chunk (see StreamableTraits). The root layer has no own
// data; its short name is "$" and its long name "Streamable".
class FXHOST_API Streamable : public iObject {
public:
  struct BuilderType {};

  Streamable() = default;
  // The root part of a clone, built from its source.
  Streamable(BuilderType, const Streamable& source);
  ~Streamable() override;

  static const char* shortLayerName() noexcept { return "$"; }
  static const char* layerName() noexcept { return "Streamable"; }
  // Adds the root's part to a hierarchy name: with `withRoot`, the root's
  // name (short or long) goes in front.
  static void STRM_L_Streamable_buildHierarchyName(LightweightString<char>& text, bool withRoot, bool shortNames);

  virtual int STRM_hierarchyPack(PStream& s) const;
  virtual int STRM_hierarchyUnpack(PStream& s);
  virtual Ux::Ptr<Streamable> clone(BuilderType) const;
  // Layer names from the root down to the object's class, joined by ".".
  virtual LightweightString<char> hierarchyName(bool withRoot, bool shortNames) const;
  // Copies the fields of a source of the same class; others change nothing.
  virtual void assign(const Streamable* source);

  // The root layer's own data: none.
  void pack(PStream&) const {}
  void unpack(PStream&) {}

  using StrmBase = void;
  static const char* STRM_shortLayerName() noexcept { return shortLayerName(); }
  static StreamLayerVersion& STRM_layerVersion(const Streamable* o) { return o->STRM_layerVersion_Streamable; }

private:
  mutable StreamLayerVersion STRM_layerVersion_Streamable;
};
