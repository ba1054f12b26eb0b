#include "host/edit/TransitionsEditor.h"

#include "host/edit/CelEventPair.h"
#include "host/edit/EffectInstance.h"
#include "host/edit/FXEditor.h"

bool TransitionsEditor::removeVideoTransition(int channel, double time) {
  if (!vob_ || !vob_->getEdit()) return false;
  const EditPtr& edit = vob_->getEdit();
  if (channel < 0 || channel >= edit->getNumChans() || edit->getChan(channel).type != TrackType::video) return false;
  CelEventPair cel(edit, channel, time);
  if (!cel.isEffect()) return false;
  auto head = edit->openObject<EffectInstance>(cel.getEffectHandle().id());
  if (!head || head->getNumInputs() != 2) return false;
  const LightweightString<char> tag = head->tagTypeId();
  if (tag != "mix" && tag != "wipe") return false;
  FXEditor editor(edit);
  if (!editor.destroyNode(EditGraphIterator::atChannel(edit, time, edit->getChanId(channel)), true)) return false;
  edit->addModification({EditModification(EditModification::structure)}, true);
  return true;
}
