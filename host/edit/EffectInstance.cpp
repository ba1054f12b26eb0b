#include "host/edit/EffectInstance.h"

#include "host/edit/GraphNodeKinds.h"

EffectInstance_opu4h5a4j::EffectInstance_opu4h5a4j(const IdStamp& id, LightweightString<wchar_t> name,
                                                   LightweightString<char> tagTypeId, TrackType type)
    : FXGraphNodeBase(id, std::move(name), type), tagTypeId_(std::move(tagTypeId)) {}

EffectInstance_opu4h5a4j::~EffectInstance_opu4h5a4j() = default;

bool EffectInstance_opu4h5a4j::setInputTrackId(unsigned i, const IdStamp& id, bool notify) {
  if (i >= inputs_.size()) return false;
  inputs_[i] = id;
  countChange();
  if (notify) notifyChanged(EffectModification(EffectModification::eConnections, getId()));
  return true;
}

LightweightString<wchar_t> EffectInstance_opu4h5a4j::getInputName(unsigned i) const {
  if (i < inputNames_.size() && !inputNames_[i].empty()) return inputNames_[i];
  // Unnamed inputs are lettered, as editors label them.
  const wchar_t letter[2] = {static_cast<wchar_t>(L'A' + static_cast<wchar_t>(i % 26)), 0};
  return LightweightString<wchar_t>(letter);
}

void EffectInstance_opu4h5a4j::setNumInputs(unsigned n) {
  inputs_.resize(n);
  if (inputNames_.size() > n) inputNames_.resize(n);
  countChange();
}

void EffectInstance_opu4h5a4j::setInputName(unsigned i, const LightweightString<wchar_t>& name) {
  if (i >= inputs_.size()) return;
  if (inputNames_.size() <= i) inputNames_.resize(i + 1);
  inputNames_[i] = name;
}

double EffectInstance_opu4h5a4j::param(const std::string& key, double fallback) const {
  auto it = params_.find(key);
  return it == params_.end() || it->second.empty() ? fallback : it->second.front();
}

std::vector<double> EffectInstance_opu4h5a4j::paramValues(const std::string& key) const {
  auto it = params_.find(key);
  return it == params_.end() ? std::vector<double>() : it->second;
}

Ux::Ptr<FXGraphNodeBase> EffectInstance_opu4h5a4j::cloneNode() const {
  return Ux::Ptr<FXGraphNodeBase>(new EffectInstance_opu4h5a4j(*this));
}

MaterialUsageNode::MaterialUsageNode(const IdStamp& id, LightweightString<wchar_t> name, Media media,
                                     LightweightString<char> source, TrackType type)
    : FXGraphNodeBase(id, std::move(name), type), media_(media), source_(std::move(source)) {}

MaterialUsageNode::~MaterialUsageNode() = default;

Ux::Ptr<FXGraphNodeBase> MaterialUsageNode::cloneNode() const {
  return Ux::Ptr<FXGraphNodeBase>(new MaterialUsageNode(*this));
}

ImageImportEffect::ImageImportEffect(const IdStamp& id, LightweightString<wchar_t> name, LightweightString<char> file)
    : EffectInstance_opu4h5a4j(id, std::move(name), "ImageImport"), file_(std::move(file)) {}

ImageImportEffect::~ImageImportEffect() = default;

Ux::Ptr<FXGraphNodeBase> ImageImportEffect::cloneNode() const {
  return Ux::Ptr<FXGraphNodeBase>(new ImageImportEffect(*this));
}

AliasedInputEffect::AliasedInputEffect(const IdStamp& id, LightweightString<wchar_t> name)
    : EffectInstance_opu4h5a4j(id, std::move(name), "AliasedInput") {
  setNumInputs(1);
}

AliasedInputEffect::~AliasedInputEffect() = default;

Ux::Ptr<FXGraphNodeBase> AliasedInputEffect::cloneNode() const {
  return Ux::Ptr<FXGraphNodeBase>(new AliasedInputEffect(*this));
}

ComplexBackgroundEffect::ComplexBackgroundEffect(const IdStamp& id, LightweightString<wchar_t> name, Mode mode,
                                                 Colour first, Colour second)
    : EffectInstance_opu4h5a4j(id, std::move(name), mode == Mode::flat ? flatTag : gradientTag),
      mode_(mode), colours_{first, second} {}

ComplexBackgroundEffect::~ComplexBackgroundEffect() = default;

Colour ComplexBackgroundEffect::getColour(double, int index) const { return colours_[index == 1 ? 1 : 0]; }

void ComplexBackgroundEffect::setColour(int index, const Colour& c) {
  colours_[index == 1 ? 1 : 0] = c;
  countChange();
}

Ux::Ptr<FXGraphNodeBase> ComplexBackgroundEffect::cloneNode() const {
  return Ux::Ptr<FXGraphNodeBase>(new ComplexBackgroundEffect(*this));
}

GraphNodeKind nodeKindOf(const FXGraphNodeBase* node) noexcept {
  if (!node) return GraphNodeKind::none;
  if (dynamic_cast<const MaterialUsageNode*>(node)) return GraphNodeKind::material;
  if (dynamic_cast<const ImageImportEffect*>(node)) return GraphNodeKind::image;
  if (dynamic_cast<const AliasedInputEffect*>(node)) return GraphNodeKind::alias;
  if (dynamic_cast<const ComplexBackgroundEffect*>(node)) return GraphNodeKind::background;
  if (dynamic_cast<const EffectInstance_opu4h5a4j*>(node)) return GraphNodeKind::effect;
  return GraphNodeKind::none;
}
