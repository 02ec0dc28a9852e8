#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace dravenna {

// Pairs items of two lists, ascending in both, so that the sum of value(i, j) is the largest; of several such pairings
// the first. What has the value 0 is no pair. Takes n times m steps and that much memory.
template <class Value, class ValueOf, class Pair>
void pairBest(std::size_t n, std::size_t m, ValueOf&& value, Pair&& pair) {
  std::vector<Value> best((n + 1) * (m + 1));  // of what begins there
  const auto at = [&](std::size_t i, std::size_t j) -> Value& { return best[i * (m + 1) + j]; };
  for (std::size_t i = n; i-- > 0;) {
    for (std::size_t j = m; j-- > 0;) {
      at(i, j) = std::max({at(i + 1, j), at(i, j + 1), static_cast<Value>(value(i, j) + at(i + 1, j + 1))});
    }
  }
  for (std::size_t i = 0, j = 0; i < n && j < m;) {
    const Value own = value(i, j);
    if (own > 0 && at(i, j) == own + at(i + 1, j + 1)) {
      pair(i++, j++);
    } else if (at(i, j) == at(i + 1, j)) {
      ++i;
    } else {
      ++j;
    }
  }
}

}  // namespace dravenna
