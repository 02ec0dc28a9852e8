#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "editing/commit_journal.h"

// A commit remembered by the number of its opening quote mark in the script, which no commit changes: it leads back to
// the text after any others.
namespace dravenna {

struct TextChange {
  std::size_t quote = 0;  // from 1
  JournalledCommit commit;
};

// The number of the quote mark at a position (from 1), and the position of a number; 0 if there are fewer.
std::size_t quoteNumber(std::u16string_view text, std::int32_t position);
std::int32_t quotePosition(std::u16string_view text, std::size_t number);

}  // namespace dravenna
