#include "host/edit/ParamBase.h"

#include <algorithm>
#include <cmath>

#include "host/config/Resources.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/GraphNodeKinds.h"
#include "host/edit/TransitStatus.h"
#include "host/notify/Diagnostics.h"

namespace GenericParam {
namespace {
Ux::Ptr<EffectInstance> effectOf(Vob* vob, const IdStamp& id) {
  if (!vob || !vob->getEdit()) return nullptr;
  return vob->getEdit()->openObject<EffectInstance>(id);
}

// A matte's colour as a parameter of three values (red, green, blue): which
// colour a key names, or -1.
int colourIndex(const EffectInstance& fx, const std::string& key) {
  const auto* matte = dynamic_cast<const ComplexBackgroundEffect*>(&fx);
  if (!matte) return -1;
  if (key == colourKey) return 0;
  if (key == secondColourKey && !matte->isFlat()) return 1;
  return -1;
}

std::vector<double> valuesOf(const EffectInstance& fx, const std::string& key) {
  const int colour = colourIndex(fx, key);
  if (colour < 0) return fx.paramValues(key);
  const Colour c = static_cast<const ComplexBackgroundEffect&>(fx).getColour(0, colour);
  return {c.r, c.g, c.b};
}
} // namespace

std::vector<std::string> ParamBase::keysOf(const EffectInstance& fx) {
  std::vector<std::string> keys;
  for (const char* key : {colourKey, secondColourKey})
    if (colourIndex(fx, key) >= 0) keys.emplace_back(key);
  for (const auto& [key, values] : fx.params()) keys.push_back(key);
  return keys;
}

std::vector<double> ParamBase::valuesOf(const EffectInstance& fx, const std::string& key) {
  return GenericParam::valuesOf(fx, key);
}

ParamBase::ParamBase(Vob* vob, const IdStamp& effect, std::string key, std::size_t index)
    : vob_(vob), effect_(effect), key_(std::move(key)), index_(index) {}

ParamBase::~ParamBase() = default;

bool ParamBase::exists() const {
  const Ux::Ptr<EffectInstance> fx = effectOf(vob_, effect_);
  return fx && index_ < valuesOf(*fx, key_).size();
}

double ParamBase::getValue() const {
  const Ux::Ptr<EffectInstance> fx = effectOf(vob_, effect_);
  if (!fx) return 0;
  const std::vector<double> values = valuesOf(*fx, key_);
  return index_ < values.size() ? values[index_] : 0;
}

bool ParamBase::requestValueChange(double value) {
  const Ux::Ptr<EffectInstance> fx = effectOf(vob_, effect_);
  if (!fx || !std::isfinite(value)) return false;
  std::vector<double> values = valuesOf(*fx, key_);
  if (index_ >= values.size()) return false;
  const int colour = colourIndex(*fx, key_);
  // A colour's parts run from 0 to 1, as an edit file keeps them.
  if (colour >= 0) value = std::clamp(value, 0.0, 1.0);
  if (vob_->isReadOnly()) {
    Diagnostics::tellUser(resourceStrW(13029));
    return false;
  }
  const EditPtr edit = vob_->getEdit();
  {
    EasyBackup undoStep(edit);
    values[index_] = value;
    if (colour >= 0)
      static_cast<ComplexBackgroundEffect&>(*fx).setColour(colour, Colour(values[0], values[1], values[2]));
    else
      fx->setParam(key_, values);
    edit->setDirty(true);
  }
  if (vob_->getStateFlag()) TransitStatus::manager().notifyChange(vob_);
  fx->notifyChanged(EffectModification(EffectModification::eParams, fx->getId()));
  edit->addModification({EditModification(EditModification::effectParams, fx->getId())}, true);
  return true;
}

} // namespace GenericParam
