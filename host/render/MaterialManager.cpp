#include "host/render/MaterialManager.h"

#include "host/edit/Edit.h"
#include "host/edit/GraphNodeKinds.h"

std::string MaterialManager::findFileForImageClip(const ImageImportEffect& clip, const Edit& edit) {
  const std::string file = clip.getFile().str();
  if (file.empty() || file.front() == '/') return file;
  return edit.getFolder().empty() ? file : edit.getFolder() + "/" + file;
}
