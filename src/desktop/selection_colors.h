#pragma once

#include <QtGui/QColor>

namespace dravenna {

// What is selected looks the same under every theme: this ground stands out from the white one of the script and from
// the black and the dark red one of the box, and the white and the cyan of the box can be read and told apart on it.
constexpr QColor kSelectionGround(0x21, 0x5F, 0xB8);
constexpr QColor kSelectionText(0xFF, 0xFF, 0xFF);

}  // namespace dravenna
