#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace dravenna {

// Runs between blanks that hold a letter or a digit, colour codes aside. `buffer` is used again.
std::size_t countWords(std::string_view text, std::string& buffer);

}  // namespace dravenna
