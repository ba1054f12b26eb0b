#pragma once
#include <cstddef>
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/core/IdStamp.h"
#include "host/edit/Vob.h"

class EffectInstance_opu4h5a4j;
using EffectInstance = EffectInstance_opu4h5a4j;

// Effect parameters in the host's generic form: one number of one parameter
// of one effect ("amount", "gain" index 2...). The parameter decides every
// change asked of it: it refuses one it cannot make (the effect is gone, the
// value is not a finite number, the vob's edit is read-only, which the user
// is told) and makes the others as one undo step that every view and still
// of the edit follows (modification kind 4).
namespace GenericParam {

// A background matte's colours are parameters of three values each (red,
// green, blue, from 0 to 1) under these keys; a flat matte has the first.
inline constexpr const char* colourKey = "colour";
inline constexpr const char* secondColourKey = "colour 2";

class FXHOST_API ParamBase {
public:
  ParamBase(Vob* vob, const IdStamp& effect, std::string key, std::size_t index);
  virtual ~ParamBase();

  // Whether the effect still has this value.
  bool exists() const;
  // The current value; 0 when it does not exist.
  double getValue() const;
  // Asks for a new value; true when it was made.
  bool requestValueChange(double value);

  // The keys an effect has values under, colours first, and their values.
  static std::vector<std::string> keysOf(const EffectInstance& fx);
  static std::vector<double> valuesOf(const EffectInstance& fx, const std::string& key);

  Vob* getVob() const noexcept { return vob_; }
  const IdStamp& getEffectId() const noexcept { return effect_; }
  const std::string& getKey() const noexcept { return key_; }
  std::size_t getIndex() const noexcept { return index_; }

private:
  Vob* vob_;
  IdStamp effect_;
  std::string key_;
  std::size_t index_;
};

} // namespace GenericParam
