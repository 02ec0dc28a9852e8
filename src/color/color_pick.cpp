#include "color/color_pick.h"

#include <algorithm>
#include <cstdlib>

#include "color/color_field.h"
#include "color/color_model.h"

namespace dravenna {

namespace {

constexpr std::int32_t kLastColumn = 255;
constexpr std::int32_t kBlock = 11;  // the square that the marker can touch
constexpr std::int32_t kBlockReach = 5;
constexpr std::int32_t kMarkerRadius = 3;
constexpr std::uint32_t kMarkerColor = 0xFFFFFF;
constexpr std::int16_t kEnter = 13;
constexpr std::int16_t kEsc = 27;

std::int32_t clamped(std::int32_t position) { return std::clamp(position, 0, kLastColumn); }

// A position outside the field counts as the colour number 1.
std::uint32_t shownColor(const PictureBox& field, std::int32_t x, std::int32_t y) {
  return static_cast<std::uint32_t>(std::abs(field.Point(x, y)));
}

}  // namespace

ColorPick::ColorPick(TextBox& EDT) : picBigBox(makeColorField()), EDT_(EDT) {
  HT.Visible = false;
  txtHexColor.Visible = false;
}

void ColorPick::Form_Load() {
  preview_ = splitForPreview(EDT_.Text(), EDT_.SelStart(), EDT_.SelLength());
  ShowPreviewText(0);
  picBigBox_MouseDown(0, 0);
}

void ColorPick::ShowPreviewText(std::uint32_t color) {
  RFF.clear();
  AddPreviewPiece(preview_.strLeftText, 0);
  AddPreviewPiece(preview_.strSelText, color);
  AddPreviewPiece(preview_.strRightText, 0);
  RFF.SelAlignment = 2;
}

void ColorPick::AddPreviewPiece(std::u16string_view text, std::uint32_t color) {
  RFF.setSelColor(color);
  RFF.setSelText(text);
}

void ColorPick::picBigBox_MouseMove(std::int32_t X, std::int32_t Y) {
  iPreview.BackColor = shownColor(picBigBox, clamped(X), clamped(Y));
  bteSaturation = SaturationOf(iPreview.BackColor);
}

void ColorPick::picBigBox_MouseDown(std::int32_t X, std::int32_t Y) {
  if (blnMarkerShown) EraseMarker();
  // The digits are those of the pixel that the user sees: its own hue, saturation and strongest channel.
  const std::uint32_t color = shownColor(picBigBox, clamped(X), clamped(Y));
  const std::uint32_t strongest = std::max({color & 0xFF, color >> 8 & 0xFF, color >> 16 & 0xFF});
  HT.setText(sixDigits(HSLToRGB(hueOf(color), SaturationOf(color), static_cast<std::int32_t>(strongest))));
  picBigBox_MouseMove(X, Y);
  blnMarkerShown = true;
}

void ColorPick::picBigBox_MouseUp(std::int32_t X, std::int32_t Y) {
  const std::int32_t x = clamped(X);
  const std::int32_t y = clamped(Y);
  intMarkerX = static_cast<std::int16_t>(x);
  intMarkerY = static_cast<std::int16_t>(y);
  ShowPreviewText(shownColor(picBigBox, x, y));
  txtHexColor.setText(HT.Text());
  SampleMarkerBackground();
  PaintMarker(x, y);
}

void ColorPick::EraseMarker() {
  for (std::int32_t r = 0; r < kBlock; ++r) {
    for (std::int32_t c = 0; c < kBlock; ++c) {
      picBigBox.PSet(
          intMarkerX - kBlockReach + c, intMarkerY - kBlockReach + r,
          static_cast<std::uint32_t>(lngMarkerBackground[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)]));
    }
  }
}

void ColorPick::SampleMarkerBackground() {
  if (!blnMarkerShown) return;
  for (std::int32_t r = 0; r < kBlock; ++r) {
    for (std::int32_t c = 0; c < kBlock; ++c) {
      lngMarkerBackground[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)] =
          picBigBox.Point(intMarkerX - kBlockReach + c, intMarkerY - kBlockReach + r);
    }
  }
}

void ColorPick::PaintMarker(std::int32_t X, std::int32_t Y) { picBigBox.Circle(X, Y, kMarkerRadius, kMarkerColor); }

void ColorPick::Form_KeyDown(std::int16_t& KeyCode) {
  if (KeyCode == kEnter) {
    KeyCode = 0;
    Command1_Click();
  } else if (KeyCode == kEsc) {
    KeyCode = 0;
    HidePicker();
  }
}

void ColorPick::Command1_Click() {
  if (!txtHexColor.Text().empty()) EDT_.setSelText(coloredText(preview_, txtHexColor.Text()));
  Hide();
}

}  // namespace dravenna
