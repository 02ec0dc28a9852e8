#include "tool/merge/match.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "tool/script/align.h"
#include "tool/script/similar.h"

namespace dravenna {

namespace {

constexpr std::size_t kMostCells = 1U << 12;  // of the table that weighs every pair of two stretches

struct Stretch {
  std::size_t aBegin, aEnd, bBegin, bEnd;
};

class LineMatcher {
 public:
  LineMatcher(const Document& a, const Document& b) : a_(a), b_(b) {}

  std::vector<LinePair> run(const Stretch& all) {
    eachStretchBetween(all, &DocumentLine::whole, [&](const Stretch& between) { matchChanged(between); });
    return std::move(pairs_);
  }

 private:
  using Number = std::uint64_t DocumentLine::*;

  static std::vector<std::uint64_t> numbers(const Document& document, std::size_t begin, std::size_t end,
                                            Number number) {
    std::vector<std::uint64_t> list;
    list.reserve(end - begin);
    for (std::size_t i = begin; i < end; ++i) list.push_back(document.lines[i].*number);
    return list;
  }

  // Pairs the lines of one number; what stands between goes to between(stretch), in order.
  template <class Between>
  void eachStretchBetween(Stretch rest, Number number, Between&& between) {
    const std::size_t a = rest.aBegin;
    const std::size_t b = rest.bBegin;
    const auto ahead = [&](std::size_t aEnd, std::size_t bEnd) {
      if (rest.aBegin < aEnd && rest.bBegin < bEnd) between(Stretch{rest.aBegin, aEnd, rest.bBegin, bEnd});
    };
    for (const EqualRun& run :
         alignSequences(numbers(a_, rest.aBegin, rest.aEnd, number), numbers(b_, rest.bBegin, rest.bEnd, number))) {
      ahead(a + run.a, b + run.b);
      for (std::size_t i = 0; i < run.length; ++i) pairs_.push_back({a + run.a + i, b + run.b + i});
      rest.aBegin = a + run.a + run.length;
      rest.bBegin = b + run.b + run.length;
    }
    ahead(rest.aEnd, rest.bEnd);
  }

  bool sameCode(std::size_t i, std::size_t j) const { return a_.lines[i].code == b_.lines[j].code; }

  // No line of one is wholly a line of the other, in order.
  void matchChanged(const Stretch& s) {
    const std::size_t n = s.aEnd - s.aBegin;
    const std::size_t m = s.bEnd - s.bBegin;
    bool parallel = n == m;
    for (std::size_t i = 0; i < n && parallel; ++i) parallel = sameCode(s.aBegin + i, s.bBegin + i);
    if (parallel || n > kMostCells / m) {
      eachStretchBetween(s, &DocumentLine::code, [](const Stretch&) {});
    } else {
      weigh(s, n, m);
    }
  }

  void weigh(const Stretch& s, std::size_t n, std::size_t m) {
    constexpr std::uint32_t kPair = 1U << 20;  // more than all likenesses together
    constexpr double kLikeness = 1000;
    std::vector<std::uint32_t> best((n + 1) * (m + 1));
    const auto at = [&](std::size_t i, std::size_t j) -> std::uint32_t& { return best[i * (m + 1) + j]; };
    std::vector<std::uint32_t> own(n * m);
    for (std::size_t i = n; i-- > 0;) {
      for (std::size_t j = m; j-- > 0;) {
        std::uint32_t& value = own[i * m + j];
        if (sameCode(s.aBegin + i, s.bBegin + j)) {
          const double alike = likenessOf(a_.lines[s.aBegin + i].text, b_.lines[s.bBegin + j].text);
          value = kPair + static_cast<std::uint32_t>(kLikeness * alike);
        }
        at(i, j) = std::max({at(i + 1, j), at(i, j + 1), value == 0 ? 0 : value + at(i + 1, j + 1)});
      }
    }
    for (std::size_t i = 0, j = 0; i < n && j < m;) {
      const std::uint32_t value = own[i * m + j];
      if (value != 0 && at(i, j) == value + at(i + 1, j + 1)) {
        pairs_.push_back({s.aBegin + i++, s.bBegin + j++});
      } else if (at(i, j) == at(i + 1, j)) {
        ++i;
      } else {
        ++j;
      }
    }
  }

  const Document& a_;
  const Document& b_;
  std::vector<LinePair> pairs_;
};

class VersionMatcher {
 public:
  VersionMatcher(const Document& base, const Document& version) : base_(base), version_(version) {
    match_.lineOf.assign(base.lines.size(), kNone);
    match_.baseLineOf.assign(version.lines.size(), kNone);
    match_.textOf.assign(base.texts.size(), kNone);
    match_.baseTextOf.assign(version.texts.size(), kNone);
  }

  Match run(bool followMoved) {
    std::size_t baseAt = 0;
    std::size_t versionAt = 0;
    for (const LinePair& pair : matchLines(base_, 0, base_.lines.size(), version_, 0, version_.lines.size())) {
      matchTextsOfHunk(baseAt, pair.a, versionAt, pair.b);
      match_.lineOf[pair.a] = pair.b;
      match_.baseLineOf[pair.b] = pair.a;
      const DocumentLine& line = base_.lines[pair.a];
      const std::size_t first = version_.lines[pair.b].firstText;
      for (std::size_t i = line.firstText; i < line.endText; ++i) pairTexts(i, first + (i - line.firstText));
      baseAt = pair.a + 1;
      versionAt = pair.b + 1;
    }
    matchTextsOfHunk(baseAt, base_.lines.size(), versionAt, version_.lines.size());
    if (followMoved) matchMoved();
    return std::move(match_);
  }

 private:
  void pairTexts(std::size_t baseText, std::size_t text) {
    match_.textOf[baseText] = text;
    match_.baseTextOf[text] = baseText;
  }

  // Texts, from and to, of lines.
  static std::pair<std::size_t, std::size_t> textsOf(const Document& document, std::size_t begin, std::size_t end) {
    if (begin >= end) return {0, 0};
    return {document.lines[begin].firstText, document.lines[end - 1].endText};
  }

  // Lines that are not matched: first the equal texts, then the similar ones, then the rest where it is as many.
  void matchTextsOfHunk(std::size_t baseBegin, std::size_t baseEnd, std::size_t begin, std::size_t end) {
    const auto [baseFrom, baseTo] = textsOf(base_, baseBegin, baseEnd);
    const auto [from, to] = textsOf(version_, begin, end);
    if (baseFrom == baseTo || from == to) return;
    std::vector<std::uint64_t> baseHashes;
    std::vector<std::uint64_t> hashes;
    for (std::size_t i = baseFrom; i < baseTo; ++i) baseHashes.push_back(hashOf(base_.texts[i].text));
    for (std::size_t i = from; i < to; ++i) hashes.push_back(hashOf(version_.texts[i].text));
    for (const EqualRun& run : alignSequences(baseHashes, hashes)) {
      for (std::size_t i = 0; i < run.length; ++i) pairTexts(baseFrom + run.a + i, from + run.b + i);
    }
    const auto left = [](const Document& document, const std::vector<std::size_t>& partners, std::size_t first,
                         std::size_t last, std::vector<std::size_t>& indices) {
      std::vector<std::string> texts;
      indices.clear();
      for (std::size_t i = first; i < last; ++i) {
        if (partners[i] != kNone) continue;
        indices.push_back(i);
        texts.emplace_back(document.texts[i].text);
      }
      return texts;
    };
    std::vector<std::size_t> baseLeft;
    std::vector<std::size_t> versionLeft;
    const std::vector<std::string> baseTexts = left(base_, match_.textOf, baseFrom, baseTo, baseLeft);
    const std::vector<std::string> texts = left(version_, match_.baseTextOf, from, to, versionLeft);
    for (const SimilarPair& pair : pairSimilarTexts(baseTexts, texts)) {
      pairTexts(baseLeft[pair.a], versionLeft[pair.b]);
    }
    left(base_, match_.textOf, baseFrom, baseTo, baseLeft);
    left(version_, match_.baseTextOf, from, to, versionLeft);
    if (baseLeft.size() != versionLeft.size()) return;
    for (std::size_t i = 0; i < baseLeft.size(); ++i) pairTexts(baseLeft[i], versionLeft[i]);
  }

  // A text that stood elsewhere in the base and is not there any more, if that can be only one.
  void matchMoved() {
    std::unordered_map<std::string_view, std::size_t> gone;  // kNone: several
    for (std::size_t i = 0; i < base_.texts.size(); ++i) {
      const std::size_t now = match_.textOf[i];
      const std::string_view text = base_.texts[i].text;
      if (!base_.texts[i].toTranslate || (now != kNone && version_.texts[now].text == text)) continue;
      const auto [found, fresh] = gone.emplace(text, i);
      if (!fresh) found->second = kNone;
    }
    for (std::size_t i = 0; i < version_.texts.size() && !gone.empty(); ++i) {
      const std::size_t before = match_.baseTextOf[i];
      if (before != kNone && base_.texts[before].text == version_.texts[i].text) continue;
      const auto found = gone.find(version_.texts[i].text);
      if (found == gone.end() || found->second == kNone) continue;
      if (before != kNone && match_.textOf[before] == i) match_.textOf[before] = kNone;
      if (const std::size_t now = match_.textOf[found->second]; now != kNone) match_.baseTextOf[now] = kNone;
      pairTexts(found->second, i);
      found->second = kNone;
    }
  }

  const Document& base_;
  const Document& version_;
  Match match_;
};

}  // namespace

std::vector<LinePair> matchLines(const Document& a, std::size_t aBegin, std::size_t aEnd, const Document& b,
                                 std::size_t bBegin, std::size_t bEnd) {
  return LineMatcher(a, b).run({aBegin, aEnd, bBegin, bEnd});
}

Match matchVersions(const Document& base, const Document& version, bool followMoved) {
  return VersionMatcher(base, version).run(followMoved);
}

}  // namespace dravenna
