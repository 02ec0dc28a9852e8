#pragma once

#include <string_view>

#include "tool/script/codec.h"

namespace dravenna {

// Whether a translation of `before` can be one of `now`, too: the same numbers, codes and placeholders, and no other
// difference than letter case, marks and blanks, or at most two characters in a text of ten times as many. In a menu
// the colons count. Texts are work bytes.
bool isSmallChange(const Codec& codec, std::string_view before, std::string_view now, bool menu);

}  // namespace dravenna
