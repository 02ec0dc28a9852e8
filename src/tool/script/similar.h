#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

// Texts that look for a similar one, by what their owner calls them.
struct Lonely {
  std::vector<std::size_t> numbers;
  std::vector<std::string> texts;
  void add(std::size_t number, std::string_view text) {
    numbers.push_back(number);
    texts.emplace_back(text);
  }
};

struct SimilarPair {
  std::size_t a, b;  // their numbers
  bool sameWords;    // equal but for marks, blanks and the case of ASCII letters
};

// Pairs of similar texts, ascending in both lists. Between long lists only texts at the same distance are compared.
std::vector<SimilarPair> pairSimilarTexts(const Lonely& a, const Lonely& b);

// How many of their words two texts share, from 0 to 1.
double likenessOf(std::string_view a, std::string_view b);

}  // namespace dravenna
