#include "node_ui/NodeUIPosSource.h"

NodeUIPosSource::~NodeUIPosSource() = default;
