#pragma once

#include "app/principal.h"

class QKeyEvent;

namespace dravenna {

// A key press as the handlers take it: virtual key code, modifiers, and the character that it yields. The character of
// a key with Ctrl is computed, since the event's text differs from system to system. `focus` is left to the caller.
// Alt without Ctrl yields none; AltGr is another key, or both together.
KeyEvent keyEventOf(const QKeyEvent& event);

// Alt is held, without Ctrl: the key is for menus and buttons, not for a box.
bool isAltKey(const QKeyEvent& event);

}  // namespace dravenna
