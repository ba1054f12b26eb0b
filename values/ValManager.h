#pragma once
#include <algorithm>
#include <vector>

#include "values/ValServer.h"

// A value manager owned by (and a base of) `Owner`: each managed server has a
// member operation of the owner that judges its changes.
template <class T, class Owner>
class ValManager : public ValManagerBase<T> {
public:
  using Judge = bool (Owner::*)(ValServer<T>* server, T& value);

  ValManager() = default;
  ValManager(const ValManager&) = delete;
  ValManager& operator=(const ValManager&) = delete;
  ~ValManager() override {
    for (const Record& r : records_)
      if (r.server->getManager() == this) r.server->setManager(nullptr);
  }

  // Puts the server under this manager with its judge.
  void manageServer(ValServer<T>* server, Judge judge) {
    // A server has one manager: its previous one forgets it.
    if (ValManagerBase<T>* previous = server->getManager(); previous && previous != this)
      previous->releaseServer(server);
    releaseServer(server);
    records_.push_back({server, judge});
    server->setManager(this);
  }

  bool requestValChange(ValServer<T>* server, T& value) override {
    Owner* owner = dynamic_cast<Owner*>(this);
    if (!owner) return true;
    for (const Record& r : records_)
      if (r.server == server) return (owner->*r.judge)(server, value);
    return true;
  }

  void releaseServer(ValServer<T>* server) override {
    const auto gone = std::erase_if(records_, [server](const Record& r) { return r.server == server; });
    if (gone && server->getManager() == this) server->setManager(nullptr);
  }
  std::size_t managedCount() const noexcept { return records_.size(); }

private:
  struct Record {
    ValServer<T>* server;
    Judge judge;
    // Two records are equal when their servers are.
    bool operator==(const Record& o) const noexcept { return server == o.server; }
  };
  std::vector<Record> records_;
};
