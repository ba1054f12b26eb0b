#pragma once
#include "GrphToolApi.h"
#include "host/core/LightweightString.h"

class TemplateMatcher;

// What the view asks of the panel that holds it, so that the view needs
// nothing of the panel's layer: a graph-item command run as a host menu
// sends it ("fxutr params fxgs1:..."), and the filter of the templates that
// search to add offers. The panel implements it and hands itself down, as
// the view hands NodeUIPosSource down to the layout.
class GRPHTOOL_API ViewHost {
public:
  virtual ~ViewHost() = default;
  // True when the command was handled.
  virtual bool runItemCommand(const LightweightString<char>& message) = 0;
  virtual const TemplateMatcher& searchMatcher() const = 0;
};
