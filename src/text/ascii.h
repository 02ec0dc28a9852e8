#pragma once

#include <string>
#include <string_view>

namespace dravenna {

// `c` in lower case if it is an ASCII letter.
template <class Char>
constexpr Char lowerAscii(Char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<Char>(c + 32) : c;
}

inline std::string lowerAsciiOf(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = lowerAscii(c);
  return lower;
}

}  // namespace dravenna
