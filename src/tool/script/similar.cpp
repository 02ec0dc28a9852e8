#include "tool/script/similar.h"

#include <algorithm>

#include "text/ascii.h"
#include "tool/script/align.h"
#include "tool/script/best_pairs.h"

namespace dravenna {

namespace {

constexpr double kSimilarEnough = 0.5;
constexpr std::size_t kMostWordCells = 4096;

// The words of a text as numbers, letter case and marks aside.
std::vector<std::uint64_t> wordsOf(std::string_view text) {
  std::vector<std::uint64_t> words;
  std::string word;
  const auto end = [&] {
    if (!word.empty()) words.push_back(hashOf(word));
    word.clear();
  };
  for (const char c : text) {
    const char folded = lowerAscii(c);
    if (static_cast<unsigned char>(c) >= 0x80 || (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9')) {
      word.push_back(folded);
    } else if (c != '\'') {
      end();
    }
  }
  end();
  return words;
}

using Words = std::vector<std::uint64_t>;

double similarityOf(Words a, Words b) {
  if (a.empty() || b.empty()) return 0;
  std::sort(a.begin(), a.end());
  std::sort(b.begin(), b.end());
  Words common;
  std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(common));
  return 2.0 * static_cast<double>(common.size()) / static_cast<double>(a.size() + b.size());
}

}  // namespace

double likenessOf(std::string_view a, std::string_view b) { return similarityOf(wordsOf(a), wordsOf(b)); }

std::vector<SimilarPair> pairSimilarTexts(const Lonely& a, const Lonely& b) {
  const std::size_t n = a.texts.size();
  const std::size_t m = b.texts.size();
  std::vector<SimilarPair> pairs;
  if (n == 0 || m == 0) return pairs;
  std::vector<Words> aWords;
  std::vector<Words> bWords;
  std::transform(a.texts.begin(), a.texts.end(), std::back_inserter(aWords), wordsOf);
  std::transform(b.texts.begin(), b.texts.end(), std::back_inserter(bWords), wordsOf);
  const auto value = [&](std::size_t i, std::size_t j) {
    const double similarity = similarityOf(aWords[i], bWords[j]);
    return similarity >= kSimilarEnough ? similarity : 0;
  };
  const auto add = [&](std::size_t i, std::size_t j) {
    pairs.push_back({a.numbers[i], b.numbers[j], aWords[i] == bWords[j]});
  };
  if (n <= kMostWordCells / m) {
    pairBest<double>(n, m, value, add);
  } else {
    for (std::size_t i = 0; i < std::min(n, m); ++i) {
      if (value(i, i) > 0) add(i, i);
    }
  }
  return pairs;
}

}  // namespace dravenna
