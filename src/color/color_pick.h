#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "color/color_codes.h"
#include "platform/controls.h"
#include "scan/rich_text_box.h"

namespace dravenna {

// The colour picker: the state and the handlers of its form. Mouse positions are in pixels of picBigBox.
class ColorPick {
 public:
  // `EDT` is the box whose selection is coloured; it outlives the picker.
  explicit ColorPick(TextBox& EDT);

  PictureBox picBigBox;
  struct {
    std::uint32_t BackColor = 0;
  } iPreview;
  RichTextBox RFF;
  TextBox HT;
  TextBox txtHexColor;
  bool hidden = false;

  void Form_Load();
  void Form_KeyDown(std::int16_t& KeyCode);
  void Command1_Click();
  void HidePicker() { Hide(); }
  void Hide() { hidden = true; }  // ends the modal display
  void picBigBox_MouseDown(std::int32_t X, std::int32_t Y);
  void picBigBox_MouseMove(std::int32_t X, std::int32_t Y);
  void picBigBox_MouseUp(std::int32_t X, std::int32_t Y);

  void EraseMarker();
  void SampleMarkerBackground();
  void PaintMarker(std::int32_t X, std::int32_t Y);

  bool blnMarkerShown = false;
  std::int16_t intMarkerX = 0;
  std::int16_t intMarkerY = 0;
  std::array<std::array<std::int32_t, 12>, 12> lngMarkerBackground{};  // the pixels under the marker, row by row
  std::uint8_t bteSaturation = 0;

 private:
  void ShowPreviewText(std::uint32_t color);
  void AddPreviewPiece(std::u16string_view text, std::uint32_t color);

  TextBox& EDT_;
  PreviewText preview_;
};

}  // namespace dravenna
