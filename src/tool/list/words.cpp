#include "tool/list/words.h"

#include <array>

#include "color/color_codes.h"
#include "text/ascii.h"

namespace dravenna {

namespace {

// Bit 0: the byte may begin a word; bit 1: it may stand within one.
constexpr auto kLetters = [] {
  std::array<unsigned char, 256> letters{};
  for (unsigned byte = 0; byte < letters.size(); ++byte) {
    const char folded = lowerAscii(static_cast<char>(byte));
    const bool solid = byte >= 0x80 || (folded >= 'a' && folded <= 'z') || (byte >= '0' && byte <= '9');
    letters[byte] = solid ? 3 : byte == ' ' || byte == '\t' ? 0 : 2;
  }
  return letters;
}();

}  // namespace

// Without a branch a byte: texts are long, and their blanks come as they like.
std::size_t countWords(std::string_view text, std::string& buffer) {
  std::size_t words = 0;
  unsigned within = 0;
  for (const char c : withoutColor(text, buffer)) {
    const unsigned letter = kLetters[static_cast<unsigned char>(c)];
    const unsigned now = (letter | within) & (letter >> 1) & 1U;
    words += now & ~within;
    within = now;
  }
  return words;
}

}  // namespace dravenna
