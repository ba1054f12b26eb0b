#include "host/ui/DragDrop.h"

DragDropItem::~DragDropItem() = default;

DragDropDestination::~DragDropDestination() = default;

void DragDropDestination::dragHover(const DragDropItem*, XY<int>) {}
