#include "host/config/StripColours.h"

Colour StripColourManager::getTypeColour(StripType type) {
  switch (type) {
  case effect:
    return Colour(0.42, 0.52, 0.74);
  case material:
    return Colour(0.36, 0.62, 0.45);
  case image:
    return Colour(0.62, 0.50, 0.72);
  case alias:
    return Colour(0.70, 0.70, 0.66);
  case matte:
    return Colour(0.74, 0.58, 0.36);
  case audio:
    return Colour(0.30, 0.58, 0.66);
  }
  return Colour(0.6, 0.6, 0.6);
}

Colour nodeTextColour() { return Colour(0.06, 0.06, 0.08); }
