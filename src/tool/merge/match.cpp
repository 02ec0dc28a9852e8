#include "tool/merge/match.h"

#include <algorithm>
#include <string>
#include <unordered_map>

#include "tool/script/align.h"
#include "tool/script/best_pairs.h"
#include "tool/script/by_hash.h"
#include "tool/script/similar.h"

namespace dravenna {

namespace {

// Of the table that weighs every pair of two stretches, and of one in which their words are compared.
constexpr std::size_t kMostCells = 1U << 18;
constexpr std::size_t kMostLikened = 1U << 12;

struct Stretch {
  std::size_t aBegin, aEnd, bBegin, bEnd;
};

class LineMatcher {
 public:
  LineMatcher(const Document& a, const Document& b) : a_(a), b_(b) {}

  std::vector<LinePair> run(const Stretch& all) {
    begin_ = all.aBegin;
    partnerOf_.assign(all.aEnd - all.aBegin, kNone);
    std::vector<Stretch> open{all};
    while (!open.empty()) {
      Stretch s = open.back();
      open.pop_back();
      trim(s);
      if (s.aBegin == s.aEnd || s.bBegin == s.bEnd || pairParallel(s) || splitAtUnique(s, open)) continue;
      const std::size_t n = s.aEnd - s.aBegin;
      const std::size_t m = s.bEnd - s.bBegin;
      if (n <= kMostCells / m) {
        weigh(s, n, m);
      } else {
        const auto code = [](const DocumentLine& line) { return line.code; };
        pairRuns(s, alignSequences(numbers(a_, s.aBegin, s.aEnd, code), numbers(b_, s.bBegin, s.bEnd, code)), nullptr);
      }
    }
    std::vector<LinePair> pairs;
    pairs.reserve(partnerOf_.size());
    for (std::size_t i = 0; i < partnerOf_.size(); ++i) {
      if (partnerOf_[i] != kNone) pairs.push_back({begin_ + i, partnerOf_[i]});
    }
    return pairs;
  }

 private:
  template <class Number>
  static std::vector<std::uint64_t> numbers(const Document& document, std::size_t begin, std::size_t end,
                                            Number&& number) {
    std::vector<std::uint64_t> list;
    list.reserve(end - begin);
    for (std::size_t i = begin; i < end; ++i) list.push_back(number(document.lines[i]));
    return list;
  }

  void pair(std::size_t a, std::size_t b) { partnerOf_[a - begin_] = b; }

  void trim(Stretch& s) {
    const auto same = [&](std::size_t i, std::size_t j) { return a_.lines[i].whole == b_.lines[j].whole; };
    while (s.aBegin < s.aEnd && s.bBegin < s.bEnd && same(s.aBegin, s.bBegin)) pair(s.aBegin++, s.bBegin++);
    while (s.aBegin < s.aEnd && s.bBegin < s.bEnd && same(s.aEnd - 1, s.bEnd - 1)) pair(--s.aEnd, --s.bEnd);
  }

  // The same code, line by line.
  bool pairParallel(const Stretch& s) {
    const std::size_t n = s.aEnd - s.aBegin;
    if (n != s.bEnd - s.bBegin) return false;
    for (std::size_t i = 0; i < n; ++i) {
      if (a_.lines[s.aBegin + i].code != b_.lines[s.bBegin + i].code) return false;
    }
    for (std::size_t i = 0; i < n; ++i) pair(s.aBegin + i, s.bBegin + i);
    return true;
  }

  // Pairs runs of equal items; what stands between them is put into `open`.
  void pairRuns(const Stretch& s, const std::vector<EqualRun>& runs, std::vector<Stretch>* open) {
    std::size_t a = s.aBegin;
    std::size_t b = s.bBegin;
    for (const EqualRun& run : runs) {
      for (std::size_t i = 0; i < run.length; ++i) pair(s.aBegin + run.a + i, s.bBegin + run.b + i);
      if (open != nullptr) open->push_back({a, s.aBegin + run.a, b, s.bBegin + run.b});
      a = s.aBegin + run.a + run.length;
      b = s.bBegin + run.b + run.length;
    }
    if (open != nullptr) open->push_back({a, s.aEnd, b, s.bEnd});
  }

  // Cuts at lines that are the only one of their code, or of their code and texts, on each side.
  bool splitAtUnique(const Stretch& s, std::vector<Stretch>& open) {
    struct Counts {
      std::uint32_t a = 0, b = 0;
    };
    const std::size_t most = s.aEnd - s.aBegin + s.bEnd - s.bBegin;
    ByHash<Counts> codes(most);
    ByHash<Counts> wholes(most);
    const auto count = [&](const DocumentLine& line, std::uint32_t Counts::*side) {
      ++(codes[line.code].*side);
      if (line.whole != line.code) ++(wholes[line.whole].*side);
    };
    for (std::size_t i = s.aBegin; i < s.aEnd; ++i) count(a_.lines[i], &Counts::a);
    for (std::size_t i = s.bBegin; i < s.bEnd; ++i) count(b_.lines[i], &Counts::b);
    const auto unique = [](const Counts& counts) { return counts.a == 1 && counts.b == 1; };
    std::uint64_t none = 0;  // never the same again
    const auto number = [&](const DocumentLine& line) {
      return unique(codes[line.code])                                ? line.code
             : line.whole != line.code && unique(wholes[line.whole]) ? line.whole
                                                                     : ++none;
    };
    const auto aNumbers = numbers(a_, s.aBegin, s.aEnd, number);
    const std::vector<EqualRun> runs = alignSequences(aNumbers, numbers(b_, s.bBegin, s.bEnd, number));
    if (!runs.empty()) pairRuns(s, runs, &open);
    return !runs.empty();
  }

  void weigh(const Stretch& s, std::size_t n, std::size_t m) {
    constexpr std::uint64_t kPair = 1U << 20;  // more than all likenesses together
    constexpr double kLikeness = 1000;
    const auto value = [&](std::size_t i, std::size_t j) -> std::uint64_t {
      const DocumentLine& one = a_.lines[s.aBegin + i];
      const DocumentLine& other = b_.lines[s.bBegin + j];
      if (one.code != other.code) return 0;
      const double alike = one.whole == other.whole ? 1 : n * m <= kMostLikened ? likenessOf(one.text, other.text) : 0;
      return kPair + static_cast<std::uint64_t>(kLikeness * alike);
    };
    pairBest<std::uint64_t>(n, m, value, [&](std::size_t i, std::size_t j) { pair(s.aBegin + i, s.bBegin + j); });
  }

  const Document& a_;
  const Document& b_;
  std::size_t begin_ = 0;
  std::vector<std::size_t> partnerOf_;  // for each line of a from begin_ on
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

  struct Texts {
    std::size_t begin, end;
  };
  static Texts textsOf(const Document& document, std::size_t beginLine, std::size_t endLine) {
    if (beginLine >= endLine) return {0, 0};
    return {document.lines[beginLine].firstText, document.lines[endLine - 1].endText};
  }

  // Lines that are not matched: first the equal texts, then the similar ones, then the rest where it is as many.
  void matchTextsOfHunk(std::size_t baseBegin, std::size_t baseEnd, std::size_t begin, std::size_t end) {
    const Texts before = textsOf(base_, baseBegin, baseEnd);
    const Texts now = textsOf(version_, begin, end);
    if (before.begin == before.end || now.begin == now.end) return;
    const auto hashes = [](const Document& document, const Texts& texts) {
      std::vector<std::uint64_t> list;
      for (std::size_t i = texts.begin; i < texts.end; ++i) list.push_back(hashOf(document.texts[i].text));
      return list;
    };
    for (const EqualRun& run : alignSequences(hashes(base_, before), hashes(version_, now))) {
      for (std::size_t i = 0; i < run.length; ++i) pairTexts(before.begin + run.a + i, now.begin + run.b + i);
    }
    const auto left = [](const Document& document, const Texts& texts, const std::vector<std::size_t>& partners) {
      Lonely lonely;
      for (std::size_t i = texts.begin; i < texts.end; ++i) {
        if (partners[i] == kNone) lonely.add(i, document.texts[i].text);
      }
      return lonely;
    };
    const auto baseLeft = [&] { return left(base_, before, match_.textOf); };
    const auto versionLeft = [&] { return left(version_, now, match_.baseTextOf); };
    for (const SimilarPair& pair : pairSimilarTexts(baseLeft(), versionLeft())) pairTexts(pair.a, pair.b);
    const std::vector<std::size_t> baseRest = baseLeft().numbers;
    const std::vector<std::size_t> rest = versionLeft().numbers;
    if (baseRest.size() != rest.size()) return;
    for (std::size_t i = 0; i < rest.size(); ++i) pairTexts(baseRest[i], rest[i]);
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
