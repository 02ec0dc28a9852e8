#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Plain models of the controls on the forms. Offsets count code units from 0. Colours are 0x00BBGGRR.
// Positions and sizes are in twips (15 are one pixel at 96 dpi).
namespace dravenna {

enum class Control { None, N, EDT, txtSearch };

// A single-line text box.
class TextBox {
 public:
  std::function<void()> onChange;  // after each setText and setSelText and each edit by the user, equal text or not

  bool Visible = true;
  std::uint32_t ForeColor = 0;
  std::uint32_t BackColor = 0xFFFFFF;
  std::int32_t Top = 0;
  std::int32_t Width = 0;
  std::int32_t Height = 0;

  const std::u16string& Text() const { return text_; }
  std::int32_t SelStart() const { return selStart_; }
  std::int32_t SelLength() const { return selLength_; }
  std::u16string_view SelText() const;

  void setText(std::u16string_view text);  // caret to 0
  void setSelStart(std::int32_t offset);   // clamped; empties the selection
  void setSelLength(std::int32_t length);  // clamped to the end
  void setSelText(std::u16string_view text);
  void selectAll();

  // What the user did in the box: the text only if it differs, then the selection.
  void userEdited(std::u16string_view text, std::int32_t selStart, std::int32_t selLength);

 private:
  std::u16string text_;
  std::int32_t selStart_ = 0;
  std::int32_t selLength_ = 0;
};

struct MenuEntry {
  const char16_t* name;
  std::u16string Caption;  // "-" is a separator, "&" marks the access key
  bool Enabled = true;
  bool Checked = false;
};

// A flag of the file dialog: it asks before an existing file is picked.
constexpr std::int32_t kAskBeforeOverwrite = 2;

// The common file dialog.
struct CommonDialog {
  std::u16string FileName;
  std::u16string DialogTitle;
  std::u16string Filter;  // pairs of name and pattern, all parted by "|"
  std::u16string InitDir;
  std::int32_t Flags = 0;
  bool CancelError = false;
};

// A form's own properties. Width and Height are the outer size, the Scale ones the inner.
struct FormState {
  std::u16string Caption;
  std::int32_t Width = 0;
  std::int32_t Height = 0;
  std::int32_t ScaleWidth = 0;
  std::int32_t ScaleHeight = 0;
  std::int32_t WindowState = 0;   // 1 is minimized
  std::int32_t MousePointer = 0;  // 11 is the hourglass
};

// A drawing surface with per-pixel access. X from the left and Y from the top, in pixels from 0.
class PictureBox {
 public:
  PictureBox(std::int32_t width, std::int32_t height, std::uint32_t background);

  std::int32_t width() const { return width_; }
  std::int32_t height() const { return height_; }

  std::int32_t Point(std::int32_t x, std::int32_t y) const;        // -1 outside
  void PSet(std::int32_t x, std::int32_t y, std::uint32_t color);  // no effect outside
  // The outline of a circle, one pixel wide; what lies outside is not drawn.
  void Circle(std::int32_t x, std::int32_t y, std::int32_t radius, std::uint32_t color);

  // Rows from the top, width() pixels each; in memory red, green, blue, 0xFF.
  const std::vector<std::uint32_t>& pixels() const { return pixels_; }

 private:
  std::int32_t width_;
  std::int32_t height_;
  std::vector<std::uint32_t> pixels_;
};

}  // namespace dravenna
