#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// Small helpers over UTF-16 text. Offsets count code units from 0.
namespace dravenna {

using Text = std::u16string;
using TextView = std::u16string_view;

// Widens an ASCII string (each byte one code unit).
Text fromAscii(std::string_view ascii);

// Decimal form of a number.
Text decimal(std::int64_t number);

// UTF-8 to UTF-16 and back. A byte that is no UTF-8 becomes the lone low surrogate 0xDC00 + byte and comes back as
// that byte; any other lone surrogate becomes U+FFFD on the way out.
Text fromUtf8(std::string_view bytes);
std::string toUtf8(TextView text);

void appendFromUtf8(std::string_view bytes, Text& out);

// The code point at the front of `bytes` (not empty) and its length in bytes; length 0 for what is no UTF-8.
struct Utf8Char {
  std::uint32_t code;
  int length;
};
Utf8Char readUtf8(std::string_view bytes);
void appendUtf8(std::uint32_t code, std::string& out);

constexpr bool isHighSurrogate(char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
constexpr bool isLowSurrogate(char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; }

// Low surrogates that end no pair: bytes that a code page has no character for.
std::size_t countLoneLow(TextView text);

// The code point at `at` and how many units it has; a surrogate without its partner stands for itself.
struct Utf16Char {
  std::uint32_t code;
  std::size_t length;
};
constexpr Utf16Char readUtf16(TextView text, std::size_t at) {
  const std::uint32_t unit = text[at];
  if (!isHighSurrogate(text[at]) || at + 1 >= text.size() || !isLowSurrogate(text[at + 1])) return {unit, 1};
  return {0x10000 + ((unit - 0xD800) << 10) + (text[at + 1] - 0xDC00u), 2};
}

// `text` with every occurrence of `what` replaced by `with`, from left to right. An empty `what` changes nothing.
Text replaceAll(TextView text, TextView what, TextView with);

// `text` without the blanks (U+0020 only) at both ends.
TextView trimBlanks(TextView text);

}  // namespace dravenna
