#pragma once
#include <memory>

#include "host/FxHostApi.h"
#include "host/edit/Vob.h"
#include "host/ui/StandardPanel.h"

// A viewer tile: a panel with a vob of its own on an edit, showing the
// edit's picture at the vob's time (the first video channel with something
// to show) and the time under it. The vob lives and goes with the viewer.
class FXHOST_API EditViewer : public StandardPanel, public VobClient {
public:
  ~EditViewer() override;

  const LightweightString<char>& getKind() const noexcept { return kind_; }
  // Where the picture goes, in the viewer's pixels.
  PixelBox pictureBox() const;

  void draw() override;
  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;
  LightweightString<char> vobClientId() const override { return "EditViewer"; }
  LightweightString<char> idstring() const override { return "EditViewer"; }

private:
  friend FXHOST_API EditViewer* makeEditViewer(LightweightString<char>, Cookie, XY<int>, double,
                                               LightweightString<wchar_t>);
  EditViewer(const EditPtr& edit, LightweightString<char> kind, double time, const LightweightString<wchar_t>& name);

  LightweightString<char> kind_;
  std::unique_ptr<Vob> vob_;
};

// Opens a viewer of kind "tilev" (the tiled viewer, the one kind here) on the
// edit with that cookie at a time, its bottom-left corner at a screen
// position (moved onto the screen), titled by `name` or else the edit's name.
// The cookie may name an open edit or a shot: a shot is shown through an edit
// of its own holding just that material (found in an edit that a vob shows,
// or described by its project-database record), which lives while a viewer
// shows it. Null, with the reason in the host log, for another kind, a cookie
// that names neither, or no screen.
FXHOST_API EditViewer* makeEditViewer(LightweightString<char> kind, Cookie edit, XY<int> position, double time,
                                      LightweightString<wchar_t> name);

// Makes the viewer's vob the host's current player and raises the viewer.
// False for no viewer.
FXHOST_API bool set_it(EditViewer* viewer);
