#pragma once
#include "host/FxHostApi.h"
#include "host/core/Palette.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/GraphNodeKinds.h"

class Vob;

// Imports the render of a graph position as a new material of its edit.
struct FXHOST_API UtrImporter {
  // Renders the picture of the position at the edit's picture size, writes it
  // as a PNG file of a fresh name in the edit's folder, enters the shot in the
  // project database and, as one undo step, adds a file material that shows
  // it to the edit (not on any cel: it stands alone in the graph until used),
  // then tells the edit (modification kind 5). Returns the new material.
  //
  // `vob`, when it shows the position's edit, decides whether the edit may be
  // changed (not when read-only) and is reported to the transit status
  // manager while it is transferring. On failure (an invalid position, a
  // read-only edit, an edit without a folder, a file that cannot be written)
  // nothing is added, the user is told in a message box of the palette, and
  // the result is null.
  static Ux::Ptr<MaterialUsageNode> createImporter(Vob* vob, EditGraphIterator& at, const Palette& palette);
};
