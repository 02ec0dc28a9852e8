#include "color/color_field.h"

#include <cmath>

#include "color/color_model.h"

namespace dravenna {

namespace {

constexpr std::int32_t kStripWidth = 16;
constexpr std::uint32_t kControlBackground = 0xF0F0F0;

// The rows of a band run from its base over 254 steps of hue.
struct Band {
  std::int32_t firstRow;
  std::int32_t rows;
};
constexpr Band kBands[] = {{0, 42}, {42, 43}, {85, 42}, {127, 43}, {170, 42}, {212, 43}};

// Rows whose grey is fixed; between two of them the levels lie on a straight line.
struct GreyPoint {
  std::int32_t row;
  std::int32_t level;
};
constexpr GreyPoint kGreyPoints[] = {{0, 0},     {66, 0},    {67, 2},    {68, 4},    {100, 62},  {120, 99},
                                     {136, 128}, {137, 131}, {160, 187}, {187, 253}, {188, 255}, {254, 255}};

}  // namespace

std::int16_t fieldHue(std::int32_t y) {
  std::int16_t base = 0;
  for (const Band& band : kBands) {
    const std::int32_t row = y - band.firstRow;
    if (row < band.rows) return static_cast<std::int16_t>(base + std::nearbyint(row * 254.0 / (band.rows - 1)));
    base = static_cast<std::int16_t>(base + 255);
  }
  return base;
}

std::uint8_t fieldGrey(std::int32_t y) {
  for (std::size_t i = 1; i < std::size(kGreyPoints); ++i) {
    const GreyPoint& from = kGreyPoints[i - 1];
    const GreyPoint& to = kGreyPoints[i];
    if (y > to.row) continue;
    const double way = static_cast<double>(y - from.row) / (to.row - from.row);
    return static_cast<std::uint8_t>(std::nearbyint(from.level + way * (to.level - from.level)));
  }
  return 255;
}

std::uint32_t fieldPixel(std::int32_t x, std::int32_t y) {
  if (x < kStripWidth) return fieldGrey(y) * 0x010101u;
  return HSLToRGB(fieldHue(y), 255, x);
}

PictureBox makeColorField() {
  PictureBox field(kFieldWidth + 1, kFieldHeight - 1, kControlBackground);
  for (std::int32_t y = 0; y < field.height(); ++y) {
    for (std::int32_t x = 0; x < kFieldWidth; ++x) field.PSet(x, y, fieldPixel(x, y));
  }
  return field;
}

}  // namespace dravenna
