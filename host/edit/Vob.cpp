#include "host/edit/Vob.h"

#include <algorithm>
#include <cmath>
#include <mutex>

namespace {
struct Registry {
  std::vector<Vob*> vobs;                 // every live vob
  std::vector<std::unique_ptr<Vob>> made; // those VobManager made
  Vob* play = nullptr;
  Vob* record = nullptr;
};
// Never destroyed: vobs that live until the process ends still find it.
Registry& registry() {
  static Registry* r = new Registry;
  return *r;
}
} // namespace

Vob::Vob(const EditPtr& edit, LightweightString<char> name, unsigned number) : name_(std::move(name)), number_(number) {
  registry().vobs.push_back(this);
  follow(edit);
}

Vob::~Vob() {
  tell({}, VobModification{VobModification::closing});
  for (VobClient* c : clients_) c->vob_ = nullptr;
  Registry& r = registry();
  std::erase(r.vobs, this);
  if (r.play == this) r.play = nullptr;
  if (r.record == this) r.record = nullptr;
}

void Vob::follow(const EditPtr& edit) {
  edit_ = edit;
  editSubscription_.reset();
  if (!edit_) return;
  editSubscription_ = edit_->modificationNotifier().registerInternal([this](const NotifierEvent<EditModifications>& e) {
    if (e.type != NotifyMsgTypeDictionary::objectDestroyedMsgType()) tell(e.value, VobModification{});
    return 0;
  });
}

void Vob::setEdit(const EditPtr& edit) {
  follow(edit);
  tell({}, VobModification{VobModification::editReplaced});
}

double Vob::getCurrentTime(int accuracy) const { return accuracy == 1 && edit_ ? edit_->wholeFrame(time_) : time_; }

void Vob::setCurrentTime(double t) {
  if (t == time_) return;
  time_ = t;
  tell({}, VobModification{VobModification::timeChanged});
}

void Vob::makeBackup() {
  if (edit_) edit_->makeBackup();
}

bool Vob::undo() { return edit_ && edit_->undo(); }

bool Vob::redo() { return edit_ && edit_->redo(); }

bool Vob::canUndo() const { return edit_ && edit_->canUndo(); }

bool Vob::canRedo() const { return edit_ && edit_->canRedo(); }

Vob* Vob::getPlayMachine() { return registry().play; }
void Vob::setPlayMachine(Vob* vob) { registry().play = vob; }
Vob* Vob::getRecordMachine() { return registry().record; }
void Vob::setRecordMachine(Vob* vob) { registry().record = vob; }

VobClient* Vob::findClient(const LightweightString<char>& idString) const {
  for (VobClient* c : clients_)
    if (c->vobClientId() == idString) return c;
  return nullptr;
}

void Vob::attach(VobClient* client) {
  auto at = std::find_if(clients_.begin(), clients_.end(),
                         [client](const VobClient* c) { return c->getPriority() < client->getPriority(); });
  clients_.insert(at, client);
}

void Vob::detach(VobClient* client) { std::erase(clients_, client); }

void Vob::tell(const EditModifications& mods, const VobModification& vobMod) {
  // A client may come or go while hearing: each is checked before it hears.
  const std::vector<VobClient*> hearing = clients_;
  for (VobClient* c : hearing)
    if (std::find(clients_.begin(), clients_.end(), c) != clients_.end()) c->handleModifications(mods, vobMod);
}

VobClient::VobClient(Vob* vob, int priority, int) : priority_(priority) { attachTo(vob); }

VobClient::~VobClient() { attachTo(nullptr); }

void VobClient::attachTo(Vob* vob) {
  if (vob == vob_) return;
  if (vob_) vob_->detach(this);
  vob_ = vob;
  if (vob_) vob_->attach(this);
}

LightweightString<char> VobClient::getGroupName() const {
  return vob_ ? vob_->getName() : LightweightString<char>(std::string());
}

Vob* VobManager::open(VobClient* client, const LightweightString<char>& name) {
  if (name.empty()) return nullptr;
  for (Vob* v : registry().vobs)
    if (v->getName() == name) {
      if (client) client->attachTo(v);
      return v;
    }
  return nullptr;
}

Vob* VobManager::open(VobClient* client, unsigned number) {
  if (number == 0) return nullptr;
  for (Vob* v : registry().vobs)
    if (v->getNumber() == number) {
      if (client) client->attachTo(v);
      return v;
    }
  return nullptr;
}

namespace {
Vob* make(VobClient* client, const Cookie& cookie, LightweightString<char> name, unsigned number) {
  EditPtr edit;
  if (!edit.i_open(cookie)) return nullptr;
  auto vob = std::make_unique<Vob>(edit, std::move(name), number);
  Vob* v = vob.get();
  registry().made.push_back(std::move(vob));
  if (client) client->attachTo(v);
  return v;
}
} // namespace

Vob* VobManager::create(VobClient* client, const Cookie& edit, const LightweightString<char>& name) {
  return make(client, edit, name, 0);
}

Vob* VobManager::create(VobClient* client, const Cookie& edit, unsigned number) {
  return make(client, edit, {}, number);
}

Vob* VobManager::getVobWithCookie(const Cookie& edit) {
  for (Vob* v : registry().vobs)
    if (v->getEdit() && v->getEdit()->getCookie() == edit) return v;
  return nullptr;
}

std::vector<Vob*> VobManager::all() { return registry().vobs; }

void VobManager::closeAll() {
  auto made = std::move(registry().made);
  registry().made.clear();
  made.clear();
}

EasyBackup::EasyBackup(const EditPtr& edit) : edit_(edit) {
  if (edit_) edit_->makeBackup();
}

EasyBackup::EasyBackup(Vob* vob) : EasyBackup(vob ? vob->getEdit() : EditPtr()) {}

EasyBackup::~EasyBackup() = default;
