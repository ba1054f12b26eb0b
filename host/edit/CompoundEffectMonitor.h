#pragma once
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/Vob.h"

// What changed in a compound effect, as its monitor tells its clients.
struct ChangeDescription {
  bool structural = false; // channels or chains changed
  IdStamp oldTrack;
  IdStamp newTrack;
};

class FXHOST_API CompoundEffectMonitorClient {
public:
  virtual ~CompoundEffectMonitorClient();
  virtual void handleCompoundEffectChanges(const ChangeDescription& change) = 0;
};

// Follows the compound effect a vob shows (here the vob's edit), its current
// track, and which kinds it has; tells its clients of changes.
class FXHOST_API CompoundEffectMonitor : public VobClient {
public:
  static constexpr const char* IDString = "CompoundEffectMonitor";
  enum Kinds { hasVideo = 1, hasAudio = 2 };
  // What getNumComponents counts: 3, the effects of the current track's chain.
  enum Components { chainEffects = 3 };

  explicit CompoundEffectMonitor(Vob* vob);
  ~CompoundEffectMonitor() override;
  LightweightString<char> vobClientId() const override { return IDString; }

  EditPtr getEdit() const;
  int getKinds() const;
  const IdStamp& getTrackID() const noexcept { return track_; }
  // Makes another track current; clients hear of it.
  void setTrackID(const IdStamp& track);

  // The effects of the current track's chain at the vob's time, head first,
  // followed through input 0.
  int getNumComponents(int what) const;
  Ux::Ptr<EffectInstance> getEffect(int row) const;

  void registerForChangeNotifications(CompoundEffectMonitorClient* client, bool add);
  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;

private:
  std::vector<Ux::Ptr<EffectInstance>> chain() const;
  void tell(const ChangeDescription& change);

  IdStamp track_;
  std::vector<CompoundEffectMonitorClient*> clients_;
};
