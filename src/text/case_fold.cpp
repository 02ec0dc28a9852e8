#include "text/case_fold.h"

#include <array>
#include <cstdint>
#include <memory>

#include "text/ascii.h"

namespace dravenna {

namespace {

struct FoldRange {
  std::uint16_t first;
  std::uint16_t last;
  std::uint16_t step;
  std::int32_t distance;
};

constexpr FoldRange kFoldRanges[] = {
// clang-format off
#include "text/case_fold_table.inc"
    // clang-format on
};

using FoldTable = std::array<char16_t, 0x10000>;

const FoldTable& foldTable() {
  static const std::unique_ptr<const FoldTable> table = [] {
    auto made = std::make_unique<FoldTable>();
    for (std::uint32_t c = 0; c < made->size(); ++c) {
      (*made)[c] = static_cast<char16_t>(lowerAscii(c));
    }
    for (const FoldRange& range : kFoldRanges) {
      for (std::uint32_t c = range.first; c <= range.last; c += range.step) {
        (*made)[c] = static_cast<char16_t>(static_cast<std::int32_t>(c) + range.distance);
      }
    }
    return made;
  }();
  return *table;
}

// Of the four forms of i, whether two are of different letters.
bool differByDot(char16_t a, char16_t b) {
  constexpr char16_t kDotless = 0x131;
  constexpr char16_t kCapitalWithDot = 0x130;
  const auto are = [&](char16_t x, char16_t y) { return (a == x && b == y) || (a == y && b == x); };
  return are(u'i', kDotless) || are(u'I', kCapitalWithDot) || are(kCapitalWithDot, kDotless);
}

}  // namespace

char16_t foldCase(char16_t c) {
  if (c < 0x80) return lowerAscii(c);
  return foldTable()[c];
}

std::u16string foldCase(std::u16string_view text) {
  std::u16string folded(text);
  for (char16_t& c : folded) c = foldCase(c);
  return folded;
}

bool equalIgnoringCase(std::u16string_view a, std::u16string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (foldCase(a[i]) != foldCase(b[i]) || differByDot(a[i], b[i])) return false;
  }
  return true;
}

std::size_t findIgnoringCase(std::u16string_view text, std::u16string_view needle, std::size_t from) {
  if (from > text.size() || needle.size() > text.size() - from) return std::u16string_view::npos;
  if (needle.empty()) return from;
  const FoldTable& fold = foldTable();
  const std::u16string wanted = foldCase(needle);
  const std::size_t last = text.size() - needle.size();
  const char16_t first = wanted[0];
  for (std::size_t at = from; at <= last; ++at) {
    if (fold[text[at]] != first) continue;
    std::size_t i = 1;
    while (i < wanted.size() && fold[text[at + i]] == wanted[i]) ++i;
    if (i == wanted.size() && equalIgnoringCase(text.substr(at, i), needle)) return at;
  }
  return std::u16string_view::npos;
}

}  // namespace dravenna
