#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/script/breaks.h"
#include "tool/script/codec.h"
#include "tool/script/outline.h"
#include "tool/script/tokens.h"

// What is wrong with a translation: pure work over two texts, for scripts, exchange files and whoever types one.
namespace dravenna {

// A text, its translation, and what their place says of them; texts are work bytes.
struct TextPair {
  std::string_view before;
  std::string_view now;
  bool record = false;     // the text is one that an exchange file holds
  bool inMenu = false;     // each `:` parts two choices
  bool afterPlus = false;  // a `+` joins it to what stands in front of it, or behind it
  bool beforePlus = false;
  bool countsCodes = false;         // colour codes are compared, text by text
  const char* source = "original";  // what messages call the one that `before` is from
};

// What does not fit, of each kind the first; kinds are those of the findings of `check`. What breaks the script's line
// is breaksOf's to tell (breaks.h).
std::vector<Break> checkTranslation(const Codec& codec, const TextPair& pair);

// Whether a `+` of the code stands in front of a text or behind it, blanks and line ends aside.
void findPlus(std::string_view work, const OutlineText& text, TextPair& pair);

// A text for a message: escaped, in quotes, long ones cut.
std::string quotedText(const Codec& codec, std::string_view work);

}  // namespace dravenna
