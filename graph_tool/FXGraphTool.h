#pragma once
// The effect graph tool panel: one graph view of a vob's edit, the templates
// list down its left, and a row of controls along its bottom edge.
//
// Map
//   creation and registry ..... show, createPanelFor, findPanelFor, make, allPanels_
//   construction .............. init, postInit
//   size and layout ........... calcSize, getUserArea, calcMainViewSize, resize
//   commands .................. handleMessageEvent, setAutoPosition, handleZoom
//   saved state ............... dump, load
#include <memory>

#include "GrphToolApi.h"
#include "graph_tool/DDVideoEffectsList.h"
#include "graph_view/FXGraphView.h"
#include "graph_view/ViewHost.h"
#include "host/config/configb.h"
#include "host/core/DLList.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/Vob.h"
#include "host/ui/StandardPanel.h"

class Checkbox;
class DropDownMenuButton;
class ImageButton;
class PanelStatus;
class PushButton;
class UnsavedChanges;

class GRPHTOOL_API FXGraphTool : public StandardPanel, public VobClient, public DLListRec, public ViewHost {
public:
  struct GRPHTOOL_API InitArgs : StandardPanel::InitArgs {
    explicit InitArgs(Vob* vob_ = nullptr) : vob(vob_) {}
    Vob* vob; // the player the panel follows; not owned
  };

  // What popOutItem opens for a graph position.
  enum PopOutItem { tiledViewer = 0, logPanel = 1 };

  // Every live panel, in order of creation (not owning).
  static DLList allPanels_;

  // The host's command that toggles the tool, for the current play machine.
  static void show();
  // Toggles the panel of a vob: closes an open one, else opens one at the
  // vob's current time.
  static void createPanelFor(Vob* vob);
  // Opens or raises the panel of a vob for a graph position, moving the vob's
  // time into the position's segment when it lies outside.
  static void createPanelFor(Vob* vob, EditGraphIterator& at);
  static FXGraphTool* findPanelFor(const Vob* vob);
  // Builds a panel from a saved layout record.
  static FXGraphTool* make(GlobCreationInfo* info);
  // The node box size, in pixels, for drag images over a glob that is a panel.
  static XY<int> getNodeSize(Glob* glob);
  static XY<int> calcSize();

  explicit FXGraphTool(const InitArgs& args);
  FXGraphTool(const configb& config, double width, double height);
  ~FXGraphTool() override;

  FXGraphView* getView() const noexcept { return view_; }
  DDVideoEffectsList* getTemplatesList() const noexcept { return templatesList_; }
  bool templatesVisible() const noexcept { return templatesVisible_; }
  PushButton* tidyButton() const noexcept { return tidyButton_; }
  ImageButton* undoButton() const noexcept { return undoButton_; }
  ImageButton* redoButton() const noexcept { return redoButton_; }
  DropDownMenuButton* orientationMenu() const noexcept { return orientationMenu_; }
  Checkbox* autoPosCheckbox() const noexcept { return autoPosCheckbox_; }
  ImageButton* toggleTemplatesButton() const noexcept { return toggleTemplatesButton_; }
  PanelStatus* status() const noexcept { return status_; }
  UnsavedChanges& unsavedChanges() const noexcept { return *unsaved_; }
  bool isDocked() const noexcept { return isChildGlob(); }
  // Closing asked for (the close box, the window's): closes now when
  // nothing would be lost, else asks first. True while it asks.
  bool requestClose();

  PixelBox getUserArea() const override;
  XY<int> calcMainViewSize() const;
  void resize(double w, double h) override;
  // Brings the title in line with the edit's name; true when it changed.
  bool updateTitleStr();

  bool handleMessageEvent(const LightweightString<char>& msg, Glob* sender) override;
  bool handleDataMessageEvent(const LightweightString<char>& msg, Glob* sender, const void* data) override;
  bool handleKeyEvent(const Event& e) override;
  bool handleTimerEvent(const Event& e) override;
  void handleModifications(const EditModifications& mods, const VobModification& vobMod) override;

  // What the view asks of its panel (ViewHost): graph-item commands run as
  // the panel's menus run them, and the video templates.
  bool runItemCommand(const LightweightString<char>& message) override;
  const TemplateMatcher& searchMatcher() const override;

  void setAutoPosition(bool on);
  // The person turned it on or off (check box, message): turning it on is
  // an undo step.
  void autoPositionAsked(bool on);
  void updateTidyButton();
  // One multiplicative zoom step: in for zero and positive directions.
  bool handleZoom(int direction);
  // Undo (or, forward, redo) of the edit, with the screen drawn once after it.
  void stepThroughHistory(bool forward);

  VobClient* popOutItem(EditGraphIterator& at, PopOutItem kind);
  VobClient* popOutItem(const EditPtr& edit, int channel, double time, PopOutItem kind);

  void dump(configb& record) const override;
  void load(const configb& record);

  static LightweightString<char> getUITypeString() { return "FXGraphTool"; }
  LightweightString<char> idstring() const override { return getUITypeString(); }
  LightweightString<char> vobClientId() const override { return getUITypeString(); }

  // The class-wide zoom the next view starts from, and the centre that the
  // last restored layout named (kept, never applied).
  static double initialZoom() noexcept { return initialZoom_; }
  static XY<double> restoredCentre() noexcept { return restoredCentre_; }

private:
  void init();
  void postInit();
  void initTemplatesListUI();
  void toggleTemplates();
  int templatesListWidth() const;
  int statusWidth() const;

  FXGraphView* view_ = nullptr;
  DDVideoEffectsList* templatesList_ = nullptr;
  PushButton* tidyButton_ = nullptr;
  ImageButton* undoButton_ = nullptr;
  ImageButton* redoButton_ = nullptr;
  DropDownMenuButton* orientationMenu_ = nullptr;
  Checkbox* autoPosCheckbox_ = nullptr;
  ImageButton* toggleTemplatesButton_ = nullptr;
  PanelStatus* status_ = nullptr;
  std::unique_ptr<UnsavedChanges> unsaved_;
  bool templatesVisible_ = true;

  static double initialZoom_;
  static XY<double> restoredCentre_;
};
