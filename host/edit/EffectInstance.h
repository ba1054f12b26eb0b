#pragma once
#include <map>
#include <string>
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/FXGraphNodeBase.h"

// One effect in an edit's graph: its template's tag type id, a description,
// input slots with names, an active flag (false: bypassed, input 0 passes
// through), a flag saying whether its connections may be edited, and
// numeric parameters.
class FXHOST_API EffectInstance_opu4h5a4j : public FXGraphNodeBase {
public:
  using Params = std::map<std::string, std::vector<double>>;

  EffectInstance_opu4h5a4j(const IdStamp& id, LightweightString<wchar_t> name, LightweightString<char> tagTypeId,
                           TrackType type = TrackType::video);
  ~EffectInstance_opu4h5a4j() override;

  LightweightString<char> tagTypeId() const override { return tagTypeId_; }
  void setTagTypeId(const LightweightString<char>& tag) {
    tagTypeId_ = tag;
    countChange();
  }
  // What the effect is, for lists; its name when no description was given.
  LightweightString<wchar_t> getDescription() const { return description_.empty() ? getName() : description_; }
  void setDescription(const LightweightString<wchar_t>& d) { description_ = d; }

  bool isActive() const noexcept { return active_; }
  void setActive(bool on) {
    active_ = on;
    countChange();
  }
  bool isConnectionEditable() const noexcept { return connectionEditable_; }
  void setConnectionEditable(bool on) { connectionEditable_ = on; }

  unsigned getNumInputs() const override { return static_cast<unsigned>(inputs_.size()); }
  IdStamp getInputTrackId(unsigned i) const override { return i < inputs_.size() ? inputs_[i] : IdStamp(); }
  bool setInputTrackId(unsigned i, const IdStamp& id, bool notify) override;
  LightweightString<wchar_t> getInputName(unsigned i) const override;
  // Sets the number of input slots; new slots are free.
  void setNumInputs(unsigned n);
  void setInputName(unsigned i, const LightweightString<wchar_t>& name);

  const Params& params() const noexcept { return params_; }
  // The first value of a parameter, or the fallback.
  double param(const std::string& key, double fallback) const;
  std::vector<double> paramValues(const std::string& key) const;
  void setParam(const std::string& key, std::vector<double> values) {
    params_[key] = std::move(values);
    countChange();
  }

  Ux::Ptr<FXGraphNodeBase> cloneNode() const override;

protected:
  EffectInstance_opu4h5a4j(const EffectInstance_opu4h5a4j&) = default;

private:
  LightweightString<char> tagTypeId_;
  LightweightString<wchar_t> description_;
  bool active_ = true;
  bool connectionEditable_ = true;
  std::vector<IdStamp> inputs_;
  std::vector<LightweightString<wchar_t>> inputNames_;
  Params params_;
};

using EffectInstance = EffectInstance_opu4h5a4j;
