#include "tool/merge/text_change.h"

#include <algorithm>
#include <string>
#include <vector>

#include "color/color_codes.h"
#include "text/ascii.h"
#include "text/case_fold.h"

namespace dravenna {

namespace {

bool isDigit(char16_t c) { return c >= '0' && c <= '9'; }

bool isAsciiLetter(char16_t c) { return lowerAscii(c) >= 'a' && lowerAscii(c) <= 'z'; }

// Marks beyond ASCII: Latin-1, general and wide ones.
bool isMark(char16_t c) {
  return c < 0xC0 || c == 0xD7 || c == 0xF7 || (c >= 0x2000 && c <= 0x206F) || (c >= 0x3000 && c <= 0x303F) ||
         (c >= 0xFF00 && c <= 0xFF20);
}

// A text cut in two: what must stay, and its letters in one case.
struct Parts {
  std::u16string fixed;
  std::u16string letters;
};

// The end of what must stay at `at`: a colour or another code, a placeholder, a tag, a number; `at` where nothing is.
std::size_t endOfFixed(std::u16string_view text, std::size_t at, bool menu) {
  const auto skip = [&](std::size_t from, auto&& is) {
    while (from < text.size() && is(text[from])) ++from;
    return from;
  };
  const auto isWord = [](char16_t c) { return isDigit(c) || isAsciiLetter(c); };
  const char16_t c = text[at];
  if (c == '^') return isColorCode(text, at) ? at + 7 : skip(at + 1, isWord);
  if (c == '%') {
    const std::size_t letter = skip(at + 1, isDigit);
    return letter < text.size() && isAsciiLetter(text[letter]) ? letter + 1 : at + 1;
  }
  if (c == '<') {
    const std::size_t close = text.find('>', at);
    return close == std::u16string_view::npos ? at : close + 1;
  }
  if (c == ':' && menu) return at + 1;
  return skip(at, isDigit);
}

Parts partsOf(std::u16string_view text, bool menu) {
  Parts parts;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = endOfFixed(text, at, menu);
    if (end > at) {
      parts.fixed.append(text.substr(at, end - at)).push_back(0);
      at = end;
      continue;
    }
    if (isAsciiLetter(text[at]) || !isMark(text[at])) parts.letters.push_back(foldCase(text[at]));
    ++at;
  }
  return parts;
}

std::size_t editDistance(std::u16string_view a, std::u16string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row.back();
}

}  // namespace

bool isSmallChange(std::u16string_view before, std::u16string_view now, bool menu) {
  constexpr std::size_t kMostCharacters = 2;
  const Parts was = partsOf(before, menu);
  const Parts is = partsOf(now, menu);
  if (was.fixed != is.fixed) return false;
  if (was.letters == is.letters) return true;
  const std::size_t most = std::min(kMostCharacters, before.size() / 10);
  if (std::max(before.size(), now.size()) - std::min(before.size(), now.size()) > most) return false;
  return editDistance(before, now) <= most;
}

}  // namespace dravenna
