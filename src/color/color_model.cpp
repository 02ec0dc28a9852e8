#include "color/color_model.h"

#include <algorithm>
#include <cmath>

#include "color/color_codes.h"

namespace dravenna {

namespace {

constexpr int kSector = 255;

std::uint8_t red(std::uint32_t color) { return static_cast<std::uint8_t>(color & 0xFF); }
std::uint8_t green(std::uint32_t color) { return static_cast<std::uint8_t>(color >> 8 & 0xFF); }
std::uint8_t blue(std::uint32_t color) { return static_cast<std::uint8_t>(color >> 16 & 0xFF); }

// Ties go to the even number.
std::int32_t rounded(double value) { return static_cast<std::int32_t>(std::nearbyint(value)); }

}  // namespace

std::uint32_t HSLToRGB(std::int16_t intLocalColorAngle, std::int32_t Saturation, std::int32_t Luminance) {
  const std::int32_t h = intLocalColorAngle;
  if (h < 0 || h > 6 * kSector) return 0;
  const std::int32_t strongest = Luminance;
  const std::int32_t weakest = rounded((kSector - Saturation) * static_cast<double>(Luminance) / kSector);
  const float step = static_cast<float>(static_cast<double>(strongest - weakest) / kSector);

  const std::int32_t sector = h == 0 ? 0 : (h - 1) / kSector;
  const double way = (h - sector * kSector) * static_cast<double>(step);
  const std::int32_t rising = rounded(weakest + way);
  const std::int32_t falling = rounded(strongest - way);
  const auto color = [](std::int32_t r, std::int32_t g, std::int32_t b) {
    return static_cast<std::uint32_t>(r | g << 8 | b << 16);
  };
  switch (sector) {
    case 0:
      return color(strongest, rising, weakest);
    case 1:
      return color(falling, strongest, weakest);
    case 2:
      return color(weakest, strongest, rising);
    case 3:
      return color(weakest, falling, strongest);
    case 4:
      return color(rising, weakest, strongest);
    default:
      return color(strongest, weakest, falling);
  }
}

std::uint8_t SaturationOf(std::uint32_t color) {
  const auto [smallest, largest] = std::minmax({red(color), green(color), blue(color)});
  if (largest == 0) return 0;
  return static_cast<std::uint8_t>(rounded((largest - smallest) * 255.0 / largest));
}

std::int16_t hueOf(std::uint32_t color) {
  const int r = red(color);
  const int g = green(color);
  const int b = blue(color);
  const auto [smallest, largest] = std::minmax({r, g, b});
  if (largest == smallest) return 0;
  const double span = (largest - smallest) / static_cast<double>(kSector);
  const auto hue = [&](int sector, int way) {
    return static_cast<std::int16_t>(sector * kSector + rounded(way / span));
  };
  if (r == largest && b == smallest) return hue(0, g - smallest);
  if (g == largest && b == smallest) return hue(1, largest - r);
  if (g == largest && r == smallest) return hue(2, b - smallest);
  if (b == largest && r == smallest) return hue(3, largest - g);
  if (b == largest && g == smallest) return hue(4, r - smallest);
  return hue(5, largest - b);
}

std::u16string sixDigits(std::uint32_t color) { return RGB2HTMLColor(red(color), green(color), blue(color)).substr(1); }

}  // namespace dravenna
