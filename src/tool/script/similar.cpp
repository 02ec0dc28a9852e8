#include "tool/script/similar.h"

#include <algorithm>

#include "text/ascii.h"
#include "tool/script/align.h"

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

std::vector<SimilarPair> pairSimilarTexts(const std::vector<std::string>& a, const std::vector<std::string>& b) {
  std::vector<Words> aWords;
  std::vector<Words> bWords;
  aWords.reserve(a.size());
  bWords.reserve(b.size());
  for (const std::string& text : a) aWords.push_back(wordsOf(text));
  for (const std::string& text : b) bWords.push_back(wordsOf(text));
  std::vector<SimilarPair> pairs;
  const auto add = [&](std::size_t i, std::size_t j) { pairs.push_back({i, j, aWords[i] == bWords[j]}); };
  if (a.empty() || b.empty()) return pairs;
  if (a.size() > kMostWordCells / b.size()) {
    for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
      if (similarityOf(aWords[i], bWords[i]) >= kSimilarEnough) add(i, i);
    }
    return pairs;
  }
  // The pairs of the largest sum of similarities that keep the order.
  const std::size_t width = b.size() + 1;
  std::vector<double> own(a.size() * b.size());
  std::vector<double> best((a.size() + 1) * width);
  for (std::size_t i = a.size(); i-- > 0;) {
    for (std::size_t j = b.size(); j-- > 0;) {
      const double value = similarityOf(aWords[i], bWords[j]);
      own[i * b.size() + j] = value >= kSimilarEnough ? value : 0;
      best[i * width + j] = std::max(
          {best[(i + 1) * width + j], best[i * width + j + 1], own[i * b.size() + j] + best[(i + 1) * width + j + 1]});
    }
  }
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    const double value = own[i * b.size() + j];
    if (value > 0 && best[i * width + j] == value + best[(i + 1) * width + j + 1]) {
      add(i++, j++);
    } else if (best[i * width + j] == best[(i + 1) * width + j]) {
      ++i;
    } else {
      ++j;
    }
  }
  return pairs;
}

}  // namespace dravenna
