#include "platform/controls.h"

#include <algorithm>
#include <bit>

namespace dravenna {

namespace {

std::int32_t lengthOf(std::u16string_view text) { return static_cast<std::int32_t>(text.size()); }

std::uint32_t swapBytes(std::uint32_t value) {
  return value >> 24 | (value >> 8 & 0xFF00) | (value << 8 & 0xFF0000) | value << 24;
}

// Between a colour number and a pixel whose bytes in memory are red, green, blue, 0xFF.
std::uint32_t pixelOf(std::uint32_t color) {
  const std::uint32_t pixel = (color & 0xFFFFFF) | 0xFF000000;
  return std::endian::native == std::endian::little ? pixel : swapBytes(pixel);
}

std::uint32_t colorOf(std::uint32_t pixel) {
  return (std::endian::native == std::endian::little ? pixel : swapBytes(pixel)) & 0xFFFFFF;
}

}  // namespace

std::u16string_view TextBox::SelText() const {
  return std::u16string_view(text_).substr(static_cast<std::size_t>(selStart_), static_cast<std::size_t>(selLength_));
}

void TextBox::setText(std::u16string_view text) {
  text_ = std::u16string(text);
  selStart_ = 0;
  selLength_ = 0;
  if (onChange) onChange();
}

void TextBox::setSelStart(std::int32_t offset) {
  selStart_ = std::clamp(offset, 0, lengthOf(text_));
  selLength_ = 0;
}

void TextBox::setSelLength(std::int32_t length) { selLength_ = std::clamp(length, 0, lengthOf(text_) - selStart_); }

void TextBox::setSelText(std::u16string_view text) {
  const std::u16string inserted(text);  // `text` may be a part of text_
  text_.replace(static_cast<std::size_t>(selStart_), static_cast<std::size_t>(selLength_), inserted);
  selStart_ += lengthOf(inserted);
  selLength_ = 0;
  if (onChange) onChange();
}

void TextBox::selectAll() {
  selStart_ = 0;
  selLength_ = lengthOf(text_);
}

void TextBox::userEdited(std::u16string_view text, std::int32_t selStart, std::int32_t selLength) {
  const bool changed = text_ != text;
  if (changed) text_ = std::u16string(text);
  setSelStart(selStart);
  setSelLength(selLength);
  if (changed && onChange) onChange();
}

PictureBox::PictureBox(std::int32_t width, std::int32_t height, std::uint32_t background)
    : width_(std::max(width, 0)),
      height_(std::max(height, 0)),
      pixels_(static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), pixelOf(background)) {}

std::int32_t PictureBox::Point(std::int32_t x, std::int32_t y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return -1;
  return static_cast<std::int32_t>(
      colorOf(pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)]));
}

void PictureBox::PSet(std::int32_t x, std::int32_t y, std::uint32_t color) {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) return;
  pixels_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) + static_cast<std::size_t>(x)] =
      pixelOf(color);
}

// Midpoint circle: one octant is walked, the other seven mirror it.
void PictureBox::Circle(std::int32_t x, std::int32_t y, std::int32_t radius, std::uint32_t color) {
  std::int32_t across = radius;
  std::int32_t down = 0;
  std::int32_t error = 1 - radius;
  while (across >= down) {
    for (const std::int32_t signX : {-1, 1}) {
      for (const std::int32_t signY : {-1, 1}) {
        PSet(x + signX * across, y + signY * down, color);
        PSet(x + signX * down, y + signY * across, color);
      }
    }
    ++down;
    if (error < 0) {
      error += 2 * down + 1;
    } else {
      --across;
      error += 2 * (down - across) + 1;
    }
  }
}

}  // namespace dravenna
