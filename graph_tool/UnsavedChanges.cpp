#include "graph_tool/UnsavedChanges.h"

#include <string>

#include "host/edit/EditSaving.h"
#include "host/edit/Vob.h"
#include "host/ui/MessageBox.h"

UnsavedChanges::UnsavedChanges(std::function<Vob*()> vob, const Palette& palette)
    : vob_(std::move(vob)), palette_(palette) {}

UnsavedChanges::~UnsavedChanges() {
  // The question must not answer to a panel that is gone.
  if (question_) question_->withdraw();
}

bool UnsavedChanges::save() {
  Vob* vob = vob_();
  const EditPtr edit = vob ? vob->getEdit() : EditPtr();
  std::string why;
  if (EditSaving::save(edit, why)) return true;
  LightweightString<wchar_t> text = L"Could not save";
  if (edit) {
    text += L" \"";
    text += edit->getName();
    text += L"\"";
  }
  text += L": ";
  text += toWide(why);
  makeMessage(text, palette_);
  return false;
}

bool UnsavedChanges::closeWhenSafe(std::function<void()> close) {
  if (question_) return true;
  Vob* vob = vob_();
  const EditPtr edit = vob ? vob->getEdit() : EditPtr();
  if (!edit || !edit->isDirty() || !EditSaving::available()) {
    close();
    return false;
  }
  enum { saveAnswer, discardAnswer, cancelAnswer };
  LightweightString<wchar_t> text = L"Save the changes to \"";
  text += edit->getName();
  text += L"\" before closing?";
  question_ = askQuestion(
      text, {L"Save", L"Discard", L"Cancel"},
      [this, close](int answer) {
        question_ = nullptr;
        if (answer == discardAnswer || (answer == saveAnswer && save())) close();
      },
      palette_);
  // Without a screen to ask on, nothing is closed unasked either.
  return true;
}
