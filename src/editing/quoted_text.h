#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "scan/rich_text_box.h"

// The quoted texts of the document: which one the caret stands in, what of it is selected, how one is written over, and
// where a title occurs. Positions count from 1; 0 is "none".
namespace dravenna {

// The quote marks around a text; Fin is 0 where the closing one is missing.
struct QuoteMarks {
  std::int32_t Ini = 0;
  std::int32_t Fin = 0;
};

// Those around the start of the selection of N.
QuoteMarks quoteMarksAround(const RichTextBox& N);

// Whose bracket pair stays outside the selection.
enum class Brackets { OfAnyText, OfTitles };

// Selects what stands between two quote marks, without its bracket pair.
void selectBetween(RichTextBox& N, const QuoteMarks& marks, Brackets brackets);

// What a typed text becomes in the script: quote marks become apostrophes. An empty one would leave no character to
// carry the colour: see neverEmpty.
std::u16string committed(std::u16string_view typed);
inline std::u16string_view neverEmpty(std::u16string_view text) { return text.empty() ? u" " : text; }

// Replaces the selection of N. Where it is empty, between two brackets, the new text looks like the bracket.
void writeOver(RichTextBox& N, std::u16string_view text);

// Offsets from 0 of every place of a title, letter case ignored, behind its quote mark and bracket; two places may
// share a quote mark.
std::vector<std::int32_t> placesOfTitle(std::u16string_view text, std::u16string_view title);
// Position of the opening quote mark of its first place, or 0.
std::int32_t firstPlaceOfTitle(std::u16string_view text, std::u16string_view title);

}  // namespace dravenna
