#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

// `*` any characters but `/`, `**` any characters, `?` one character but `/`, `[a-z]` and `[!a-z]` one of a set.
// Letter case counts.
bool matchesGlob(std::string_view pattern, std::string_view text);

// A pattern with a `/` is held against the whole relative path, one without against the last name.
bool matchesAny(const std::vector<std::string>& patterns, std::string_view relative);

}  // namespace dravenna
