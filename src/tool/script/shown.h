#pragma once

#include <string>
#include <string_view>

// Words and names as messages show them: UTF-8 in which no control character is left.
namespace dravenna {

std::string shown(std::u16string_view text);
// A name of a file or an argument: UTF-8 by custom.
std::string shownName(std::string_view name);

// "1 script", "2 scripts".
std::string counted(std::size_t count, std::string_view noun);

}  // namespace dravenna
