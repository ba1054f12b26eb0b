#include "host/edit/ParamBase.h"

#include <cmath>

#include "host/config/Resources.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/TransitStatus.h"
#include "host/notify/Diagnostics.h"

namespace GenericParam {
namespace {
Ux::Ptr<EffectInstance> effectOf(Vob* vob, const IdStamp& id) {
  if (!vob || !vob->getEdit()) return nullptr;
  return vob->getEdit()->openObject<EffectInstance>(id);
}
} // namespace

ParamBase::ParamBase(Vob* vob, const IdStamp& effect, std::string key, std::size_t index)
    : vob_(vob), effect_(effect), key_(std::move(key)), index_(index) {}

ParamBase::~ParamBase() = default;

bool ParamBase::exists() const {
  const Ux::Ptr<EffectInstance> fx = effectOf(vob_, effect_);
  return fx && index_ < fx->paramValues(key_).size();
}

double ParamBase::getValue() const {
  const Ux::Ptr<EffectInstance> fx = effectOf(vob_, effect_);
  if (!fx) return 0;
  const std::vector<double> values = fx->paramValues(key_);
  return index_ < values.size() ? values[index_] : 0;
}

bool ParamBase::requestValueChange(double value) {
  const Ux::Ptr<EffectInstance> fx = effectOf(vob_, effect_);
  if (!fx || !std::isfinite(value)) return false;
  std::vector<double> values = fx->paramValues(key_);
  if (index_ >= values.size()) return false;
  if (vob_->isReadOnly()) {
    Diagnostics::tellUser(resourceStrW(13029));
    return false;
  }
  const EditPtr edit = vob_->getEdit();
  {
    EasyBackup undoStep(edit);
    values[index_] = value;
    fx->setParam(key_, values);
    edit->setDirty(true);
  }
  if (vob_->getStateFlag()) TransitStatus::manager().notifyChange(vob_);
  fx->notifyChanged(EffectModification(EffectModification::eParams, fx->getId()));
  edit->addModification({EditModification(EditModification::effectParams, fx->getId())}, true);
  return true;
}

} // namespace GenericParam
