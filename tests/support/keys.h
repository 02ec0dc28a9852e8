#pragma once

#include <string_view>

#include "support/driver.h"

namespace dravenna {

// "Shift+Ctrl+Left" and the like. Throws ScenarioError.
KeyStroke keyNamed(std::u16string_view name);

// The key that types a character.
KeyStroke keyTyping(char16_t character);

}  // namespace dravenna
