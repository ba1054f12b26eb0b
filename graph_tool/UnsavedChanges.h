#pragma once
#include <functional>

#include "GrphToolApi.h"
#include "host/core/Palette.h"

class QuestionPanel;
class Vob;

// Saving from the panel and the question before closing it: ctrl+S saves
// the edit where it belongs (the host's EditSaving); closing with changes
// not saved asks Save, Discard or Cancel.
class GRPHTOOL_API UnsavedChanges {
public:
  // `vob` tells which vob the panel follows now.
  UnsavedChanges(std::function<Vob*()> vob, const Palette& palette);
  ~UnsavedChanges();
  UnsavedChanges(const UnsavedChanges&) = delete;
  UnsavedChanges& operator=(const UnsavedChanges&) = delete;

  // Saves now; a failure is told to the user. True when saved.
  bool save();
  // Closing asked for: `close` runs now when nothing would be lost (or the
  // host cannot save), else after the answer Save (once saved) or Discard.
  // False when it closed at once; true when it waits for the answer.
  bool closeWhenSafe(std::function<void()> close);
  bool asking() const noexcept { return question_ != nullptr; }
  QuestionPanel* question() const noexcept { return question_; }

private:
  std::function<Vob*()> vob_;
  Palette palette_;
  QuestionPanel* question_ = nullptr;
};
