#include "host/edit/ManagedCel.h"

#include "host/edit/Edit.h"

ManagedCel::ManagedCel(const Edit& edit) {
  for (int i = 0; i < edit.getNumChans(); ++i)
    if (edit.getChan(i).type == TrackType::video) {
      id_ = edit.getChan(i).id;
      return;
    }
}
