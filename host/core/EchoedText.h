#pragma once
// Text from a file or a command line, shown back in a message: in quotes,
// cut after 80 characters, whole UTF-8 characters as they are and anything
// else (control characters, broken sequences) as \xNN, so that a message
// stays one line whatever it quotes.
#include <string>
#include <string_view>

#include "host/FxHostApi.h"

FXHOST_API std::string echoedText(std::string_view text);
