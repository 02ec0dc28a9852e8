#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

// What a translation must not change, in the order of the text.
struct Token {
  const char* kind;  // color-code, item-code, tag, placeholder, number
  std::size_t begin, end;
  std::string text;  // of a number only its digits
};
std::vector<Token> tokensOf(std::string_view text);
// Whether such a token may stand in another text of the dialogue page, since translators re-flow sentences.
bool mayMove(std::string_view kind);

}  // namespace dravenna
