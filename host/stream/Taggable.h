#pragma once
#include <memory>

#include "host/FxHostApi.h"
#include "host/core/UndoExtra.h"
#include "host/stream/StreamClassRegistrar.h"
#include "host/stream/StreamableTraits.h"

// An object that an edit keeps in its tag bag or binds by name, and streams
// with its other tagged objects. Layer "T", no own data. The notifications
// are the edit's hooks around removal and destruction; by default they do
// nothing.
class FXHOST_API Taggable : public Streamable {
  STRM_DECLARE_LAYER(Taggable, Streamable)
public:
  Taggable() = default;
  ~Taggable() override;

  void pack(PStream&) const {}
  void unpack(PStream&) {}

  // The type of tag the object carries (an effect's template type, such as
  // "PixShader:Mattes:flatcol.fx"); absent (null text) when it has none.
  virtual LightweightString<char> tagTypeId() const { return {}; }

  virtual void destroyChildren() {}
  virtual void displaceNotify() {}
  virtual void preDeleteNotify() {}
  virtual void preDestroyNotify() {}
  virtual void destroyNotify() {}
  virtual LightweightString<char> asString() const;
  virtual Ux::Ptr<Taggable> clone() const;
  virtual Ux::Ptr<Taggable> cloneWithChildren() const { return clone(); }
  // For an object bound to an edit: what of it an undo step of the edit
  // should bring back (it lives outside the edit's snapshots); null for none.
  virtual std::shared_ptr<const UndoExtra> undoState() const { return nullptr; }
};
