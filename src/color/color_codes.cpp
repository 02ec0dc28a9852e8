#include "color/color_codes.h"

#include <algorithm>

namespace dravenna {

namespace {

constexpr std::size_t kDigits = 6;
constexpr char kCaretMark = 1;  // becomes a caret
constexpr std::int32_t kPreviewLength = 60;

template <class Char>
bool isDigit(Char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'H') || (c >= 'a' && c <= 'h');
}

std::u16string hexPair(std::uint8_t byte) {
  constexpr char16_t digits[] = u"0123456789ABCDEF";
  return {digits[byte >> 4], digits[byte & 15]};
}

}  // namespace

template <class Char>
bool isColorCode(std::basic_string_view<Char> text, std::size_t at) {
  if (text[at] != '^' || text.size() - at <= kDigits) return false;
  const auto digits = text.substr(at + 1, kDigits);
  return std::all_of(digits.begin(), digits.end(), isDigit<Char>);
}

template <class Char>
std::size_t countColorCodes(std::basic_string_view<Char> text) {
  std::size_t count = 0;
  for (std::size_t at = text.find(Char{'^'}); at != text.npos; at = text.find(Char{'^'}, at + 1)) {
    count += isColorCode(text, at) ? 1 : 0;
  }
  return count;
}

template <class Char>
void appendWithoutColor(std::basic_string_view<Char> text, std::basic_string<Char>& out) {
  std::size_t from = 0;  // appended in runs: most texts are one
  for (std::size_t at = 0;; ++at) {
    while (at < text.size() && text[at] != '^' && text[at] != kCaretMark) ++at;
    if (at == text.size()) break;
    const bool code = isColorCode(text, at);
    if (!code && text[at] != kCaretMark) continue;
    out.append(text.substr(from, at - from));
    if (code) {
      at += kDigits;
    } else {
      out.push_back(Char('^'));
    }
    from = at + 1;
  }
  out.append(text.substr(from));
}

template <class Char>
std::basic_string_view<Char> withoutColor(std::basic_string_view<Char> text, std::basic_string<Char>& buffer) {
  if (text.find(Char{'^'}) == text.npos && text.find(Char{kCaretMark}) == text.npos) return text;
  buffer.clear();
  appendWithoutColor(text, buffer);
  return buffer;
}

std::u16string RemoveColor(std::u16string_view text) {
  std::u16string out;
  out.reserve(text.size());
  appendWithoutColor(text, out);
  return out;
}

std::u16string RGB2HTMLColor(std::uint8_t r, std::uint8_t g, std::uint8_t b) {
  return u"^" + hexPair(r) + hexPair(g) + hexPair(b);
}

PreviewText splitForPreview(std::u16string_view text, std::int32_t selStart, std::int32_t selLength) {
  const auto start = static_cast<std::size_t>(selStart);
  const auto length = static_cast<std::size_t>(selLength);
  PreviewText preview{RemoveColor(text.substr(0, start)), RemoveColor(text.substr(start, length)),
                      RemoveColor(text.substr(start + length)), false};
  std::u16string& left = preview.strLeftText;
  std::u16string& right = preview.strRightText;
  const auto lastOf = [](std::u16string& side, std::size_t n) {
    side.erase(0, side.size() - std::min(n, side.size()));
  };
  const auto firstOf = [](std::u16string& side, std::size_t n) { side.resize(std::min(n, side.size())); };

  const std::int64_t share = (kPreviewLength - static_cast<std::int64_t>(preview.strSelText.size())) / 2;
  const auto n = static_cast<std::size_t>(std::max<std::int64_t>(share, 0));
  if (n == 0) {
    left.clear();
    right.clear();
  } else if (n >= kPreviewLength / 2) {
    preview = {u"abc 123", u" abc 123 ", u"abs 123", true};
  } else if (!left.empty() && !right.empty()) {
    lastOf(left, n);
    firstOf(right, n);
  } else {
    lastOf(left, 2 * n);
    firstOf(right, 2 * n);
  }
  return preview;
}

std::u16string coloredText(const PreviewText& preview, std::u16string_view digits) {
  std::u16string text = u"^";
  text += digits;
  if (!preview.blnSampleText) text += preview.strSelText + RGB2HTMLColor(0, 0, 0);
  return text;
}

template bool isColorCode<char>(std::string_view, std::size_t);
template bool isColorCode<char16_t>(std::u16string_view, std::size_t);
template std::size_t countColorCodes<char>(std::string_view);
template std::size_t countColorCodes<char16_t>(std::u16string_view);
template void appendWithoutColor<char>(std::string_view, std::string&);
template void appendWithoutColor<char16_t>(std::u16string_view, std::u16string&);
template std::string_view withoutColor<char>(std::string_view, std::string&);
template std::u16string_view withoutColor<char16_t>(std::u16string_view, std::u16string&);

}  // namespace dravenna
