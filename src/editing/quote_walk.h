#pragma once

#include <cstdint>
#include <string_view>

#include "scan/rich_text_box.h"

// The walk from quote mark to quote mark that stepping and search are made of. Positions count from 1; 0 is "none".
namespace dravenna {

// First quote mark behind a position; 0 if there is none.
std::int32_t nextQuote(std::u16string_view text, std::int32_t position);

// Last quote mark in front of a position; from position 0 it searches from the last character. 0 if there is none.
std::int32_t previousQuote(std::u16string_view text, std::int32_t position);

// The next stop of a walk in either direction.
inline std::int32_t stepQuote(std::u16string_view text, std::int32_t position, bool forward) {
  return forward ? nextQuote(text, position) : previousQuote(text, position);
}

// Colour of the character behind a position; kNoColor behind the end.
std::uint32_t colorBehind(const RichTextBox& N, std::int32_t position);

// Which texts a walk stops at.
struct Admission {
  std::int16_t NavMode = 0;
  bool HasMessages = false;
  bool HasCode = false;
  std::int16_t Shift = 0;  // 1 widens to titles, 2 to code
  bool admits(std::uint32_t color) const;
  bool operator==(const Admission&) const = default;
};

// The next text of a step from a position, around the ends; `from` itself when there is no other.
std::int32_t nextAdmitted(const RichTextBox& N, std::int32_t from, bool forward, const Admission& admitted);

// The next text with a word in it, letter case ignored, brackets of titles left out; not around the ends. The selection
// of N wanders; on a hit it covers the text. 0 without a hit.
std::int32_t nextHit(RichTextBox& N, std::int32_t from, bool forward, const Admission& admitted,
                     std::u16string_view word);

}  // namespace dravenna
