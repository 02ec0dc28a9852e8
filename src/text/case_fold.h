#pragma once

#include <string>
#include <string_view>

// Tests that ignore letter case. Folding is one code unit to one code unit, so offsets never move.
namespace dravenna {

// The folded form of a code unit: equal for all case forms of a letter, in every script of the Basic Multilingual
// Plane. The dotted and the dotless i of Turkish fold to `i`, as their other case forms do; the tests below tell the
// two apart all the same: `I` is a form of both.
char16_t foldCase(char16_t c);

std::u16string foldCase(std::u16string_view text);

bool equalIgnoringCase(std::u16string_view a, std::u16string_view b);

// Offset of the first occurrence of `needle` in `text` at or behind `from`, letter case ignored; npos if there is
// none. An empty needle is found at `from` when `from` is not behind the end.
std::size_t findIgnoringCase(std::u16string_view text, std::u16string_view needle, std::size_t from = 0);

}  // namespace dravenna
