#pragma once

#include <string>
#include <string_view>

namespace dravenna {

// `word` without every `,` `[` `]` `+` tab `-` (and `;` if told so), then without the blanks at both ends.
std::u16string CleanWord(std::u16string_view word, bool dropSemicolon);

// The same into a buffer that is used again.
template <class Char>
void cleanWordInto(std::basic_string_view<Char> word, bool dropSemicolon, std::basic_string<Char>& out);

// Whether CleanWord(word, false) ends in `;`.
template <class Char>
bool endsStatement(std::basic_string_view<Char> word);

}  // namespace dravenna
