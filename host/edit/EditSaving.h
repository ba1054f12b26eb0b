#pragma once
#include <functional>
#include <string>

#include "host/FxHostApi.h"
#include "host/edit/Edit.h"

// How an edit is saved where it belongs (its file and its objects), for the
// tools that offer to save: the host application installs it, knowing which
// file each edit came from. Without one, nothing can be saved from a tool.
class FXHOST_API EditSaving {
public:
  // Saves the edit; false with the reason (said in words for the user).
  using Saver = std::function<bool(const EditPtr& edit, std::string& why)>;

  // Installs the saver; an empty one takes it away.
  static void install(Saver saver);
  static bool available();
  static bool save(const EditPtr& edit, std::string& why);
};
