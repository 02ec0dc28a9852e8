#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Colour codes in texts: `^` and six digits, RRGGBB. A reader takes 0 to 9 and A to H in either case.
namespace dravenna {

// `text` without its colour codes. A character 0x01 comes out as `^`.
std::u16string RemoveColor(std::u16string_view text);

// Whether a colour code begins at `at` (the `^` itself).
template <class Char>
bool isColorCode(std::basic_string_view<Char> text, std::size_t at);

template <class Char>
std::size_t countColorCodes(std::basic_string_view<Char> text);

// RemoveColor appended to `out`, for characters and for bytes.
template <class Char>
void appendWithoutColor(std::basic_string_view<Char> text, std::basic_string<Char>& out);

// The same as a view: of the text itself where nothing is taken out, else of `buffer`, which is used again.
template <class Char>
std::basic_string_view<Char> withoutColor(std::basic_string_view<Char> text, std::basic_string<Char>& buffer);

// "^" and six digits, each 0 to 9 or A to F: two for red, two for green, two for blue.
std::u16string RGB2HTMLColor(std::uint8_t r, std::uint8_t g, std::uint8_t b);

// What the picker shows of the text around a selection: 60 characters at most, without codes.
struct PreviewText {
  std::u16string strLeftText;
  std::u16string strSelText;
  std::u16string strRightText;
  bool blnSampleText = false;  // the selection held no text: the three strings are the sample
};

// `selStart` counts from 0.
PreviewText splitForPreview(std::u16string_view text, std::int32_t selStart, std::int32_t selLength);

// What takes the place of the selection for six digits.
std::u16string coloredText(const PreviewText& preview, std::u16string_view digits);

}  // namespace dravenna
