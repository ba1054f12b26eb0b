#pragma once
#include <string>

#include "host/FxHostApi.h"

class Edit;
class ImageImportEffect;

struct FXHOST_API MaterialManager {
  // The path of an imported image's file: as written when absolute,
  // otherwise in the edit's folder.
  static std::string findFileForImageClip(const ImageImportEffect& clip, const Edit& edit);
};
