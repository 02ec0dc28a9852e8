#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace dravenna {

constexpr std::size_t kNone = static_cast<std::size_t>(-1);  // the index of what has no partner

// A run of equal items in two sequences.
struct EqualRun {
  std::size_t a;
  std::size_t b;
  std::size_t length;
};

// Runs of equal items, in ascending order in both sequences: what was kept between two versions. Items that occur once
// on both sides are the anchors; between them the longest common subsequence where that is cheap. Never takes more
// than about n log n time, at the price of fewer matches between very different sequences.
std::vector<EqualRun> alignSequences(const std::vector<std::uint64_t>& a, const std::vector<std::uint64_t>& b);

// A number for a string; two strings with the same number are taken as equal.
std::uint64_t hashOf(std::string_view text);

}  // namespace dravenna
