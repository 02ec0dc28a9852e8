#include "editing/text_change.h"

#include <algorithm>

#include "editing/quote_walk.h"

namespace dravenna {

std::size_t quoteNumber(std::u16string_view text, std::int32_t position) {
  return static_cast<std::size_t>(std::count(text.begin(), text.begin() + position, u'"'));
}

std::int32_t quotePosition(std::u16string_view text, std::size_t number) {
  std::int32_t at = nextQuote(text, 0);
  while (at != 0 && --number > 0) at = nextQuote(text, at);
  return at;
}

}  // namespace dravenna
