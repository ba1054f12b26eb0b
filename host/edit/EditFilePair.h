#pragma once
#include <optional>
#include <string>

#include "host/FxHostApi.h"

// An edit file and its objects files as they are on disk before a save
// replaces them. The edit names the objects saved with it by their stamp;
// the objects lie beside the file the edit's path finally names (through
// symbolic links), as EDIT.objects, and, while a save is under way or after
// one that could not finish, as EDIT.objects.prev. Which of those files are
// the program's own is told by their stamps, never by their names alone: a
// file of the user's that happens to bear one of the names is left alone.
class FXHOST_API EditFilePair {
public:
  // What the edit file names of its objects, read from its top-level
  // "objects" record alone (the rest of a large edit is not parsed).
  struct Named {
    std::string stamp;    // the objects saved with the edit; empty for none
    std::string replaced; // the objects that save replaced; empty for none
  };
  static Named namedBy(const std::string& editPath);

  // The objects file of the edit at `editPath`: beside the edit the path
  // finally names, so an edit opened through a link keeps its pair together.
  static std::string objectsPath(const std::string& editPath);

  // Reads the pair as it stands.
  explicit EditFilePair(const std::string& editPath);

  // How a save is to treat the files there now.
  struct SavePlan {
    // The objects file in place stays as ".prev" until the new edit is in
    // place (the files' writer keeps and removes that link).
    bool keepObjects = false;
    // The stamp of the objects this save supersedes, for the new edit to
    // name, so that a backup the save could not remove is known as ours.
    std::string replaced;
    // The ".prev" holds the objects the edit on disk names and goes only
    // once the new edit is in place.
    bool dropBackupAfter = false;
  };
  // Decides the plan, and clears a stale backup of the program's own from
  // the ".prev" name so that the objects in place can be kept there.
  SavePlan planSave();
  // After a save that put the new edit in place: removes the backup that
  // the plan said goes once the new edit is in place.
  void finishSave(const SavePlan& plan) const;

  const std::string& objects() const noexcept { return objects_; }
  const std::string& backup() const noexcept { return backup_; }

private:
  std::string objects_, backup_;
  Named named_;
  // The stamps of the files there now; empty when absent, unreadable or
  // not a file.
  std::optional<std::string> objectsStamp_, backupStamp_;
  bool backupThere_ = false;
};
