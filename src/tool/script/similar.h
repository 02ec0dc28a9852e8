#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

struct SimilarPair {
  std::size_t a;
  std::size_t b;
  bool sameWords;  // equal but for marks, blanks and the case of ASCII letters
};

// Pairs of similar texts, ascending in both lists. Between long lists only texts at the same distance are compared.
std::vector<SimilarPair> pairSimilarTexts(const std::vector<std::string>& a, const std::vector<std::string>& b);

// How many of their words two texts share, from 0 to 1.
double likenessOf(std::string_view a, std::string_view b);

}  // namespace dravenna
