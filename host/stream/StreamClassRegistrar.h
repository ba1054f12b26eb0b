#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/LightweightString.h"
#include "host/core/Ptr.h"

class PStream;
class Streamable;

// Registers, for as long as it lives, the builder of a streamable class under
// its full and short hierarchy names. Readers of object files find a builder
// by either name. Made at load time, one per registered class.
class FXHOST_API StreamClassRegistrar {
public:
  using Builder = Ux::Ptr<Streamable> (*)(PStream& s);

  StreamClassRegistrar(const LightweightString<char>& fullName, const LightweightString<char>& shortName,
                       Builder builder);
  ~StreamClassRegistrar();
  StreamClassRegistrar(const StreamClassRegistrar&) = delete;
  StreamClassRegistrar& operator=(const StreamClassRegistrar&) = delete;

  // The builder registered under a name, or null.
  static Builder findBuilder(const LightweightString<char>& name);
  static std::vector<LightweightString<char>> registeredNames();

private:
  LightweightString<char> fullName_;
  LightweightString<char> shortName_;
};
