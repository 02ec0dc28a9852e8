#pragma once

#include <string>
#include <string_view>

namespace dravenna {

// `Word` without every `,` `[` `]` `+` tab `-` (and `;` if told so), then without the blanks at both ends. It is made
// at the front of `cleaned`, which grows as needed and serves from call to call.
template <class Char>
std::basic_string_view<Char> CleanWord(std::basic_string_view<Char> Word, bool DropSemicolon,
                                       std::basic_string<Char>& cleaned);

}  // namespace dravenna
