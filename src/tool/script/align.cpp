#include "tool/script/align.h"

#include <algorithm>

#include "tool/script/best_pairs.h"
#include "tool/script/by_hash.h"

namespace dravenna {

namespace {

using Sequence = std::vector<std::uint64_t>;

constexpr std::size_t kMostCells = 1U << 20;  // of a table of the longest common subsequence

struct Range {
  std::size_t aBegin, aEnd, bBegin, bEnd;
};

class Aligner {
 public:
  Aligner(const Sequence& a, const Sequence& b) : a_(a), b_(b), partnerOf_(a.size(), kNone) {}

  std::vector<EqualRun> run() {
    std::vector<Range> open{{0, a_.size(), 0, b_.size()}};
    while (!open.empty()) {
      Range range = open.back();
      open.pop_back();
      trim(range);
      if (range.aBegin == range.aEnd || range.bBegin == range.bEnd) continue;
      if (!splitAtAnchors(range, open)) longestCommon(range);
    }
    std::vector<EqualRun> runs;
    for (std::size_t a = 0; a < partnerOf_.size(); ++a) {
      const std::size_t b = partnerOf_[a];
      if (b == kNone) continue;
      if (!runs.empty() && runs.back().a + runs.back().length == a && runs.back().b + runs.back().length == b) {
        ++runs.back().length;
      } else {
        runs.push_back({a, b, 1});
      }
    }
    return runs;
  }

 private:
  void pair(std::size_t a, std::size_t b) { partnerOf_[a] = b; }

  void trim(Range& range) {
    while (range.aBegin < range.aEnd && range.bBegin < range.bEnd && a_[range.aBegin] == b_[range.bBegin]) {
      pair(range.aBegin++, range.bBegin++);
    }
    while (range.aBegin < range.aEnd && range.bBegin < range.bEnd && a_[range.aEnd - 1] == b_[range.bEnd - 1]) {
      pair(--range.aEnd, --range.bEnd);
    }
  }

  // Cuts at the items that occur once on each side, as many of them as stand in the same order.
  bool splitAtAnchors(const Range& range, std::vector<Range>& open) {
    struct Seen {
      std::uint32_t aCount = 0, bCount = 0;
      std::size_t a = 0;
    };
    ByHash<Seen> seen(range.aEnd - range.aBegin + range.bEnd - range.bBegin);
    for (std::size_t i = range.aBegin; i < range.aEnd; ++i) {
      Seen& item = seen[a_[i]];
      ++item.aCount;
      item.a = i;
    }
    for (std::size_t i = range.bBegin; i < range.bEnd; ++i) ++seen[b_[i]].bCount;
    std::vector<std::pair<std::size_t, std::size_t>> unique;  // (b, a), ascending in b
    for (std::size_t i = range.bBegin; i < range.bEnd; ++i) {
      const Seen& item = seen[b_[i]];
      if (item.aCount == 1 && item.bCount == 1) unique.emplace_back(i, item.a);
    }
    if (unique.empty()) return false;

    // Longest ascending subsequence in a.
    std::vector<std::size_t> tails;
    std::vector<std::size_t> before(unique.size());
    for (std::size_t i = 0; i < unique.size(); ++i) {
      const auto place = std::lower_bound(tails.begin(), tails.end(), unique[i].second,
                                          [&](std::size_t tail, std::size_t a) { return unique[tail].second < a; });
      before[i] = place == tails.begin() ? unique.size() : *(place - 1);
      if (place == tails.end()) {
        tails.push_back(i);
      } else {
        *place = i;
      }
    }
    std::size_t aEnd = range.aEnd;
    std::size_t bEnd = range.bEnd;
    for (std::size_t i = tails.back(); i != unique.size(); i = before[i]) {
      const auto [b, a] = unique[i];
      pair(a, b);
      open.push_back({a + 1, aEnd, b + 1, bEnd});
      aEnd = a;
      bEnd = b;
    }
    open.push_back({range.aBegin, aEnd, range.bBegin, bEnd});
    return true;
  }

  void longestCommon(const Range& range) {
    const std::size_t n = range.aEnd - range.aBegin;
    const std::size_t m = range.bEnd - range.bBegin;
    if (n > kMostCells / m) return;
    pairBest<std::uint32_t>(
        n, m, [&](std::size_t i, std::size_t j) { return a_[range.aBegin + i] == b_[range.bBegin + j] ? 1U : 0U; },
        [&](std::size_t i, std::size_t j) { pair(range.aBegin + i, range.bBegin + j); });
  }

  const Sequence& a_;
  const Sequence& b_;
  std::vector<std::size_t> partnerOf_;  // for each item of a
};

}  // namespace

std::vector<EqualRun> alignSequences(const std::vector<std::uint64_t>& a, const std::vector<std::uint64_t>& b) {
  return Aligner(a, b).run();
}

std::uint64_t hashOf(std::string_view text) { return std::hash<std::string_view>{}(text); }

}  // namespace dravenna
