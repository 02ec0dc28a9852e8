#pragma once

#include <cstdint>

#include "platform/controls.h"

// The picture of the colour field: 256 by 255 pixels, hue down the rows, brightness along the columns, a grey strip in
// the columns 0 to 15. X and Y from 0.
namespace dravenna {

constexpr std::int32_t kFieldWidth = 256;
constexpr std::int32_t kFieldHeight = 255;

std::int16_t fieldHue(std::int32_t y);
std::uint8_t fieldGrey(std::int32_t y);
std::uint32_t fieldPixel(std::int32_t x, std::int32_t y);

// The drawing area of the picker's field: 257 by 254 pixels, so the picture's last row is cut off and column 256 shows
// the control's background.
PictureBox makeColorField();

}  // namespace dravenna
