#pragma once
#include "host/FxHostApi.h"
#include "host/draw/UxImage.h"
#include "host/ui/Button.h"

// A square button showing an icon; a click sends its message to the parent.
// The icon is a PNG file, usually found through getIconPath(name); files are
// read once per process and shared by every button that shows them. A file
// that cannot be read shows as a crossed box (and is noted in the host log).
class FXHOST_API ImageButton : public Button {
public:
  ImageButton(const LightweightString<char>& iconPath, const LightweightString<char>& message, int side);

  const LightweightString<char>& getIconFile() const noexcept { return iconPath_; }
  // The picture shown; null when the file could not be read.
  const Ux::Ptr<UxImage>& getImage() const noexcept { return image_; }

  void draw() override;
  LightweightString<char> idstring() const override { return "ImageButton"; }

  // The picture of an icon file, from the process-wide icon cache.
  static Ux::Ptr<UxImage> loadIcon(const LightweightString<char>& path);

private:
  LightweightString<char> iconPath_;
  Ux::Ptr<UxImage> image_;
};
