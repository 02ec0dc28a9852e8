#pragma once

#include <string>
#include <vector>

namespace dravenna {

struct SimilarPair {
  std::size_t a;
  std::size_t b;
  bool sameWords;  // equal but for marks, blanks and the case of ASCII letters
};

// Pairs of similar texts, ascending in both lists. Between long lists only texts at the same distance are compared.
std::vector<SimilarPair> pairSimilarTexts(const std::vector<std::string>& a, const std::vector<std::string>& b);

}  // namespace dravenna
