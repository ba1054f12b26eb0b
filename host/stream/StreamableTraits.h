#pragma once
// The per-class layer machinery of streamable objects.
//
// Map
//   result codes and versions ........ Streamable.h
//   PackFunctionStack ................ the layers still to write in one pack
//   StreamableTraitsBase ............. the chunk writer and reader shared by all layers
//   StreamableTraits<T, Base> ........ one layer; the root specialisation ends the chain
//   STRM_* macros .................... what a layer class declares and defines
//
// Wire layout of one layer chunk (the only form written):
//   short name   string (32-bit count + bytes)
//   major, minor 1 byte each
//   own size     32-bit: bytes of this layer's own data, which follow
//   total size   32-bit: bytes from the end of this header to the end of the chain
//   own data
// Chunks follow one another from the root layer down to the object's class.
// The root chunk's major selects the header encoding of everything after it:
// 2 is the raw form above, 1 the compact form (8-bit versions, 16-bit sizes,
// each with an escape to the wider value), read only.
#include <cstdint>
#include <typeinfo>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/stream/PStream.h"
#include "host/stream/Streamable.h"

// The demangled run-time type name ("NodeUIPosRec"); empty if demangling fails.
FXHOST_API LightweightString<char> printableTypeName(const std::type_info& type);
template <class T>
const LightweightString<char>& getPrintableTypeName() {
  static const LightweightString<char> name = printableTypeName(typeid(T));
  return name;
}

class FXHOST_API StreamableTraitsBase {
public:
  class PackFunctionStack;
  struct PackFunctionStackEntry {
    int (*function)(const void* object, PStream& s, PackFunctionStack& stack) = nullptr;
    const void* object = nullptr;
  };
  // The layers of one top-level pack still to be written, front first.
  // Hierarchies are shallow, so entries live inline, and one is made for
  // every object packed: nothing here is set before it is used.
  class PackFunctionStack {
  public:
    bool empty() const noexcept { return count_ == 0; }
    std::size_t size() const noexcept { return count_; }
    void pushFront(const PackFunctionStackEntry& e) {
      if (count_ < inlineCapacity)
        inline_[count_].entry = e;
      else
        spill_.push_back(e);
      ++count_;
    }
    const PackFunctionStackEntry& front() const noexcept {
      return count_ <= inlineCapacity ? inline_[count_ - 1].entry : spill_.back();
    }
    void popFront() noexcept {
      if (count_ == 0) return;
      if (count_ > inlineCapacity) spill_.pop_back();
      --count_;
    }

  private:
    static constexpr std::size_t inlineCapacity = 12;
    union Slot {
      Slot() noexcept {}
      PackFunctionStackEntry entry;
    };
    // Stored back to front: the front entry is the last one.
    Slot inline_[inlineCapacity];
    std::vector<PackFunctionStackEntry> spill_;
    std::size_t count_ = 0;
  };

  struct LayerInfo {
    const char* shortName;
    LightweightString<char> printableName;
    StreamLayerVersion writtenVersion;
  };
  using PackOwn = void (*)(const void* object, PStream& s);
  using UnpackOwn = void (*)(void* object, PStream& s);

  // Writes one layer chunk and drives the layers after it.
  static int packLayer(PStream& s, const LayerInfo& layer, StreamLayerVersion& version, const void* object,
                       PackOwn packOwn, PackFunctionStack& stack);
  // Reads and checks one layer chunk. `whole` names the object in messages.
  static int unpackLayer(PStream& s, const LayerInfo& layer, const Streamable& whole, StreamLayerVersion& version,
                         void* object, UnpackOwn unpackOwn);
  // Writes a header: name, major, minor, own size, total size.
  static void writeHeader(PStream& s, const char* shortName, StreamLayerVersion version, uint32_t ownSize,
                          uint32_t totalSize);
  // Adds a layer's name in front of a hierarchy name being built.
  static void prependLayerName(LightweightString<char>& text, const LightweightString<char>& name);
};

template <class T, class B = typename T::StrmBase>
struct StreamableTraits : StreamableTraitsBase {
  static constexpr StreamLayerVersion writtenVersion{1, 0};

  static const LayerInfo& layer() {
    static const LayerInfo info{T::STRM_shortLayerName(), getPrintableTypeName<T>(), writtenVersion};
    return info;
  }
  // Pushes this layer, then the base's: the root ends up at the front.
  static int pack(const T* object, PStream& s, PackFunctionStack& stack) {
    stack.pushFront({&packHeaderAndObjectEntry, static_cast<const void*>(object)});
    return StreamableTraits<B>::pack(object, s, stack);
  }
  static int packHeaderAndObject(const T* object, PStream& s, PackFunctionStack& stack) {
    return packLayer(s, layer(), T::STRM_layerVersion(object), object, &packOwn, stack);
  }
  // Reads the base layers first; this layer only when they read.
  static int unpack(T* object, PStream& s) {
    const int baseResult = StreamableTraits<B>::unpack(object, s);
    if (!StreamResult::canContinue(baseResult)) return baseResult;
    return unpackHeaderAndObject(object, s);
  }
  static int unpackHeaderAndObject(T* object, PStream& s) {
    return unpackLayer(s, layer(), *object, T::STRM_layerVersion(object), object, &unpackOwn);
  }
  static int hierarchyPack(const T* object, PStream& s) {
    PackFunctionStack stack;
    return pack(object, s, stack);
  }
  // A new object whose root part comes from the source and whose own parts
  // are default-constructed; assign() copies fields.
  static Ux::Ptr<T> clone(const T*) { return Ux::Ptr<T>(new T()); }
  // A new object read from the stream; discarded only on result 6.
  static Ux::Ptr<T> build(PStream& s) {
    Ux::Ptr<T> object(new T());
    const int result = object->STRM_hierarchyUnpack(s);
    s.setLastObjectResult(result);
    if (result == StreamResult::error) return nullptr;
    return object;
  }
  static void buildHierarchyName(LightweightString<char>& text, bool withRoot, bool shortNames) {
    prependLayerName(text, shortNames ? LightweightString<char>(T::STRM_shortLayerName()) : getPrintableTypeName<T>());
    StreamableTraits<B>::buildHierarchyName(text, withRoot, shortNames);
  }

private:
  static int packHeaderAndObjectEntry(const void* object, PStream& s, PackFunctionStack& stack) {
    return packHeaderAndObject(static_cast<const T*>(object), s, stack);
  }
  static void packOwn(const void* object, PStream& s) { static_cast<const T*>(object)->T::pack(s); }
  static void unpackOwn(void* object, PStream& s) { static_cast<T*>(object)->T::unpack(s); }
};

// The root layer: no base, no own data. Written as version 2.0, because its
// major announces the header encoding of the whole object and the writer
// produces the raw form.
template <>
struct StreamableTraits<Streamable, void> : StreamableTraitsBase {
  static constexpr StreamLayerVersion writtenVersion{2, 0};
  FXHOST_API static const LayerInfo& layer();
  static int pack(const Streamable* object, PStream& s, PackFunctionStack& stack) {
    stack.pushFront({&packHeaderAndObjectEntry, static_cast<const void*>(object)});
    return packHeaderAndObject(object, s, stack);
  }
  FXHOST_API static int packHeaderAndObject(const Streamable* object, PStream& s, PackFunctionStack& stack);
  static int unpack(Streamable* object, PStream& s) { return unpackHeaderAndObject(object, s); }
  static int hierarchyPackRoot(const Streamable* object, PStream& s) {
    PackFunctionStack stack;
    return pack(object, s, stack);
  }
  FXHOST_API static int unpackHeaderAndObject(Streamable* object, PStream& s);
  static void buildHierarchyName(LightweightString<char>& text, bool withRoot, bool shortNames) {
    Streamable::STRM_L_Streamable_buildHierarchyName(text, withRoot, shortNames);
  }

private:
  static int packHeaderAndObjectEntry(const void* object, PStream& s, PackFunctionStack& stack) {
    return packHeaderAndObject(static_cast<const Streamable*>(object), s, stack);
  }
};

// What a layer class declares in its body. The class must also declare its
// layer's own data functions: void pack(PStream&) const; void unpack(PStream&);
#define STRM_DECLARE_LAYER(Class, Base)                                                                                \
public:                                                                                                                \
  using StrmBase = Base;                                                                                               \
  static const char* STRM_shortLayerName() noexcept;                                                                   \
  static StreamLayerVersion& STRM_layerVersion(const Class* o) { return o->STRM_layerVersion_##Class; }                \
  static void STRM_L_##Class##_buildHierarchyName(LightweightString<char>& text, bool withRoot, bool shortNames);      \
  static LightweightString<char> subHierarchyName(bool withRoot, bool shortNames);                                     \
  static Ux::Ptr<Streamable> STRM_L_##Class##_builder(PStream& s);                                                     \
  static Ux::Ptr<Class> build(PStream& s);                                                                             \
  int STRM_hierarchyPack(PStream& s) const override;                                                                   \
  int STRM_hierarchyUnpack(PStream& s) override;                                                                       \
  Ux::Ptr<Streamable> clone(Streamable::BuilderType) const override;                                                   \
  LightweightString<char> hierarchyName(bool withRoot, bool shortNames) const override;                                \
  void assign(const Streamable* source) override;                                                                      \
                                                                                                                       \
private:                                                                                                               \
  mutable StreamLayerVersion STRM_layerVersion_##Class;                                                                \
                                                                                                                       \
public:

// What a layer's source file defines.
#define STRM_DEFINE_LAYER(Class, ShortName)                                                                            \
  const char* Class::STRM_shortLayerName() noexcept { return ShortName; }                                              \
  void Class::STRM_L_##Class##_buildHierarchyName(LightweightString<char>& text, bool withRoot, bool shortNames) {     \
    StreamableTraits<Class>::buildHierarchyName(text, withRoot, shortNames);                                           \
  }                                                                                                                    \
  LightweightString<char> Class::subHierarchyName(bool withRoot, bool shortNames) {                                    \
    LightweightString<char> text;                                                                                      \
    STRM_L_##Class##_buildHierarchyName(text, withRoot, shortNames);                                                   \
    return text;                                                                                                       \
  }                                                                                                                    \
  Ux::Ptr<Streamable> Class::STRM_L_##Class##_builder(PStream& s) { return StreamableTraits<Class>::build(s); }        \
  Ux::Ptr<Class> Class::build(PStream& s) { return StreamableTraits<Class>::build(s); }                                \
  int Class::STRM_hierarchyPack(PStream& s) const { return StreamableTraits<Class>::hierarchyPack(this, s); }          \
  int Class::STRM_hierarchyUnpack(PStream& s) { return StreamableTraits<Class>::unpack(this, s); }                     \
  Ux::Ptr<Streamable> Class::clone(Streamable::BuilderType) const { return StreamableTraits<Class>::clone(this); }     \
  LightweightString<char> Class::hierarchyName(bool withRoot, bool shortNames) const {                                 \
    return subHierarchyName(withRoot, shortNames);                                                                     \
  }                                                                                                                    \
  void Class::assign(const Streamable* source) {                                                                       \
    if (const auto* same = dynamic_cast<const Class*>(source)) *this = *same;                                          \
  }

// The load-time registration of a layer class's builder, under its full and
// short hierarchy names. Declare `static StreamClassRegistrar
// STRM_L_<Class>_registrar_;` in the class (exported).
#define STRM_REGISTER_LAYER(Class)                                                                                     \
  StreamClassRegistrar Class::STRM_L_##Class##_registrar_(                                                             \
      Class::subHierarchyName(true, false), Class::subHierarchyName(true, true), &Class::STRM_L_##Class##_builder)
