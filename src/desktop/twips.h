#pragma once

#include <QtGui/QColor>
#include <cstdint>

namespace dravenna {

// Device-independent pixels of a length in twips, and back. Positions round down, so that neighbours do not gape.
constexpr int kTwipsPerPixel = 15;
constexpr int pixels(std::int32_t twips) { return twips / kTwipsPerPixel; }
constexpr int wholePixels(std::int32_t twips) { return (twips + kTwipsPerPixel - 1) / kTwipsPerPixel; }  // no less
constexpr std::int32_t twips(int pixels) { return pixels * kTwipsPerPixel; }

// A colour number 0x00BBGGRR.
inline QColor toQt(std::uint32_t color) {
  return {static_cast<int>(color & 0xFF), static_cast<int>(color >> 8 & 0xFF), static_cast<int>(color >> 16 & 0xFF)};
}

}  // namespace dravenna
