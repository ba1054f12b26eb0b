#include "host/edit/TransitStatus.h"

#include "host/edit/Vob.h"

TransitStatus& TransitStatus::manager() {
  static TransitStatus status;
  return status;
}

void TransitStatus::notifyChange(Vob*) { ++changes_; }

void TransitStatus::standDown(Vob* vob) {
  if (vob) vob->setStateFlag(false);
}
