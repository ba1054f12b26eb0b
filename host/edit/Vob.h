#pragma once
// Vobs: the players through which edits are seen, their clients, and the
// manager that opens and finds them.
//
// Map
//   Vob ........... an edit and a current time; undo through its edit;
//                   tells its clients of modifications and time changes
//   VobClient ..... a follower of one vob
//   VobManager .... vobs by name, number and edit cookie
//   EasyBackup .... one scoped undo step
#include <memory>
#include <vector>

#include "host/FxHostApi.h"
#include "host/edit/Edit.h"
#include "host/edit/EditModification.h"
#include "host/notify/Notifier.h"

class VobClient;

class FXHOST_API Vob {
public:
  explicit Vob(const EditPtr& edit, LightweightString<char> name = {}, unsigned number = 0);
  ~Vob();
  Vob(const Vob&) = delete;
  Vob& operator=(const Vob&) = delete;

  const EditPtr& getEdit() const noexcept { return edit_; }
  // Shows another edit; clients hear of it (editReplaced).
  void setEdit(const EditPtr& edit);
  const LightweightString<char>& getName() const noexcept { return name_; }
  unsigned getNumber() const noexcept { return number_; }

  // Accuracy 1 rounds to the edit's whole frame; 0 is the exact time.
  double getCurrentTime(int accuracy = 1) const;
  // Moves the time and tells the clients (timeChanged).
  void setCurrentTime(double t);
  // Sets the time without telling anyone (restoring a saved state).
  void storeCurrentTime(double t) noexcept { time_ = t; }

  // Undo steps of the edit shown.
  void makeBackup();
  bool undo();
  bool redo();
  // The requests of the host's undo and redo commands.
  bool undoRequest() { return undo(); }
  bool redoRequest() { return redo(); }
  bool canUndo() const;
  bool canRedo() const;

  bool isReadOnly() const noexcept { return readOnly_; }
  void setReadOnly(bool on) noexcept { readOnly_ = on; }
  // Set while the vob is busy with a transfer (recording); committed changes
  // then tell the transit status manager.
  bool getStateFlag() const noexcept { return stateFlag_; }
  void setStateFlag(bool on) noexcept { stateFlag_ = on; }

  // The host's current player and its recorder, or null.
  static Vob* getPlayMachine();
  static void setPlayMachine(Vob* vob);
  static Vob* getRecordMachine();
  static void setRecordMachine(Vob* vob);

  VobClient* findClient(const LightweightString<char>& idString) const;
  std::size_t clientCount() const noexcept { return clients_.size(); }

private:
  friend class VobClient;
  void attach(VobClient* client);
  void detach(VobClient* client);
  void tell(const EditModifications& mods, const VobModification& vobMod);
  void follow(const EditPtr& edit);

  EditPtr edit_;
  LightweightString<char> name_;
  unsigned number_;
  double time_ = 0;
  bool readOnly_ = false;
  bool stateFlag_ = false;
  std::vector<VobClient*> clients_; // highest priority first
  SubscriptionHandle editSubscription_;
};

// A follower of one vob: hears of its edit's modifications and of changes of
// the vob itself. Clients of higher priority hear first.
class FXHOST_API VobClient {
public:
  explicit VobClient(Vob* vob = nullptr, int priority = 0, int details = 0);
  VobClient(const VobClient&) = delete;
  VobClient& operator=(const VobClient&) = delete;
  virtual ~VobClient();

  // Follows another vob (null: none).
  void attachTo(Vob* vob);
  Vob* getVob() const noexcept { return vob_; }
  int getPriority() const noexcept { return priority_; }
  // The name of the vob group followed; empty when none.
  LightweightString<char> getGroupName() const;

  virtual void handleModifications(const EditModifications&, const VobModification&) {}
  // Identifies the kind of client for Vob::findClient.
  virtual LightweightString<char> vobClientId() const { return {}; }

private:
  friend class Vob;
  Vob* vob_ = nullptr;
  int priority_;
};

// Opens, makes and finds vobs. Vobs it makes are its own until closeAll().
class FXHOST_API VobManager {
public:
  static Vob* open(VobClient* client, const LightweightString<char>& name);
  static Vob* open(VobClient* client, unsigned number);
  // A new vob on the live edit with that cookie; null when there is none.
  static Vob* create(VobClient* client, const Cookie& edit, const LightweightString<char>& name);
  static Vob* create(VobClient* client, const Cookie& edit, unsigned number);
  static Vob* getVobWithCookie(const Cookie& edit);
  static std::vector<Vob*> all();
  static void closeAll();
};

// One undo step: the edit as it is now is kept for undo when the step opens.
class FXHOST_API EasyBackup {
public:
  explicit EasyBackup(const EditPtr& edit);
  explicit EasyBackup(Vob* vob);
  ~EasyBackup();
  EasyBackup(const EasyBackup&) = delete;
  EasyBackup& operator=(const EasyBackup&) = delete;

private:
  EditPtr edit_;
};
