#include "host/render/RenderCounters.h"

namespace Render {

Counters& counters() {
  // Never destroyed: stills workers may count while the process ends.
  static Counters* all = new Counters;
  return *all;
}

} // namespace Render
