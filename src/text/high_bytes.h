#pragma once

#include <string_view>

namespace dravenna {

// What the bytes above 0x7F of a text are. One sequence alone may be chance: 8-bit text has such pairs.
enum class HighBytes {
  None,
  OneSequence,  // of UTF-8, and nothing else
  Utf8,         // two such sequences or more, and nothing else
  Other,
};

// Of two texts, one behind the other.
constexpr HighBytes both(HighBytes one, HighBytes other) {
  if (one == HighBytes::Other || other == HighBytes::Other) return HighBytes::Other;
  if (one == HighBytes::None) return other;
  return other == HighBytes::None ? one : HighBytes::Utf8;
}

// At the speed of memory where there are none; ends at the first byte that is no UTF-8.
HighBytes highBytesOf(std::string_view bytes);

// The one rule by which a script is taken for UTF-8 where nobody has named a code page.
inline bool looksUtf8(std::string_view bytes) { return highBytesOf(bytes) == HighBytes::Utf8; }

}  // namespace dravenna
