#pragma once

#include <cstdint>
#include <string>

// Hue 0 to 1530 (six sectors of 255), Saturation and Luminance 0 to 255. Colours are 0x00BBGGRR.
namespace dravenna {

// A hue out of range gives black.
std::uint32_t HSLToRGB(std::int16_t intLocalColorAngle, std::int32_t Saturation, std::int32_t Luminance);

std::uint8_t SaturationOf(std::uint32_t color);

// The hue of a colour as HSLToRGB takes it; 0 for a grey.
std::int16_t hueOf(std::uint32_t color);

// Six upper-case digits, RRGGBB.
std::u16string sixDigits(std::uint32_t color);

}  // namespace dravenna
