#pragma once
#include "GrphToolApi.h"
#include "host/core/Palette.h"
#include "host/edit/EditGraphIterator.h"
#include "host/edit/Vob.h"

// The commands that menus and buttons attached to graph items send: a
// command prefix ("fxutr", "render_effect", "popOut"), a sub-command written
// directly after it, one blank, then the text form of a graph position
// (EditGraphIteratorState). A message without a blank gives an empty
// sub-command and the whole text as the state.
namespace GraphItemCommands {

// What to pop out for a graph position: 0 a tiled edit viewer of the item,
// 1 a floating log/metadata panel of it.
enum PopOutItem { tiledViewer = 0, logPanel = 1 };

// Splits a message after its prefix into the sub-command and the state text.
GRPHTOOL_API void split(const LightweightString<char>& msg, std::size_t prefixLength, LightweightString<char>& sub,
                        LightweightString<char>& state);

// Handles "fxutr", "render_effect" and "popOut" messages for the vob; false
// for any other message. An invalid position does nothing, handled all the same.
GRPHTOOL_API bool handle(Vob* vob, const LightweightString<char>& msg, const Palette& palette);

GRPHTOOL_API VobClient* popOutItem(EditGraphIterator& at, PopOutItem kind, const Palette& palette);
GRPHTOOL_API VobClient* popOutItem(const EditPtr& edit, int channel, double time, PopOutItem kind,
                                   const Palette& palette);

} // namespace GraphItemCommands
