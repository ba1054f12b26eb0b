#include "host/ui/Event.h"

#include <cmath>

#include "host/ui/GlobManager.h"
#include "host/ui/UifStd.h"

bool mouse_left_event(const Event& e) { return e.isMouse() && e.button == Event::left; }
bool mouse_right_event(const Event& e) { return e.isMouse() && e.button == Event::right; }
bool mouse_up_event(const Event& e) { return e.type == Event::mouseUp; }
bool mouse_down_event(const Event& e) { return e.type == Event::mouseDown; }
bool mouse_move_event(const Event& e) { return e.type == Event::mouseMove; }
bool isMouseMoveSignificant(const Event& e) { return static_cast<int>(std::hypot(e.sinceDown.x, e.sinceDown.y)) > 2; }
int mouse_get_current_x() { return GlobManager::mousePosition().x; }
int mouse_get_current_y() { return GlobManager::mousePosition().y; }
unsigned keyboardModifiers() { return GlobManager::keyboardModifiers(); }
LightweightString<char> getDefaultFontName(int index) { return index == 0 ? "Sans" : "Sans Bold"; }
