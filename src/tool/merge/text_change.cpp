#include "tool/merge/text_change.h"

#include <algorithm>
#include <string>
#include <vector>

#include "text/ascii.h"
#include "text/case_fold.h"
#include "tool/script/tokens.h"

namespace dravenna {

namespace {

bool isAsciiLetter(char16_t c) { return lowerAscii(c) >= 'a' && lowerAscii(c) <= 'z'; }

// Marks beyond ASCII: Latin-1, general and wide ones.
bool isMark(char16_t c) {
  return c < 0xC0 || c == 0xD7 || c == 0xF7 || (c >= 0x2000 && c <= 0x206F) || (c >= 0x3000 && c <= 0x303F) ||
         (c >= 0xFF00 && c <= 0xFF20);
}

// A text cut in two: what must stay, and its letters in one case.
struct Parts {
  std::string fixed;
  std::u16string letters;
};

Parts partsOf(const Codec& codec, std::string_view text, bool menu) {
  Parts parts;
  const auto addLetters = [&](std::string_view between) {
    for (const char16_t c : codec.decode(between)) {
      if (c == ':' && menu) parts.fixed += ':';
      if (isAsciiLetter(c) || !isMark(c)) parts.letters.push_back(foldCase(c));
    }
  };
  std::size_t at = 0;
  for (const Token& token : tokensOf(text)) {
    addLetters(text.substr(at, token.begin - at));
    parts.fixed.append(token.text).push_back('\0');
    at = token.end;
  }
  addLetters(text.substr(at));
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

bool isSmallChange(const Codec& codec, std::string_view before, std::string_view now, bool menu) {
  constexpr std::size_t kMostCharacters = 2;
  const Parts was = partsOf(codec, before, menu);
  const Parts is = partsOf(codec, now, menu);
  if (was.fixed != is.fixed) return false;
  if (was.letters == is.letters) return true;
  const std::u16string wasText = codec.decode(before);
  const std::u16string isText = codec.decode(now);
  const std::size_t most = std::min(kMostCharacters, wasText.size() / 10);
  if (std::max(wasText.size(), isText.size()) - std::min(wasText.size(), isText.size()) > most) return false;
  return editDistance(wasText, isText) <= most;
}

}  // namespace dravenna
