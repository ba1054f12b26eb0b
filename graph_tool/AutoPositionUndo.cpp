#include "graph_tool/AutoPositionUndo.h"

#include "graph_tool/FXGraphTool.h"
#include "host/ui/Checkbox.h"

namespace {
bool onEdit(const FXGraphTool& panel, const Edit* edit) {
  return panel.getVob() && panel.getVob()->getEdit().get() == edit;
}
} // namespace

std::shared_ptr<const UndoExtra> AutoPositionUndo::of(const Edit* edit) {
  for (FXGraphTool* panel : FXGraphTool::allPanels_.as<FXGraphTool>())
    if (onEdit(*panel, edit) && panel->getView())
      return std::make_shared<AutoPositionUndo>(edit, !panel->getView()->manualPositioning());
  return std::make_shared<AutoPositionUndo>(edit, false);
}

void AutoPositionUndo::restore() const {
  for (FXGraphTool* panel : FXGraphTool::allPanels_.as<FXGraphTool>())
    if (onEdit(*panel, edit_)) {
      panel->setAutoPosition(on_);
      if (Checkbox* box = panel->autoPosCheckbox()) box->setState(on_, true);
    }
}
