#include "editing/text_count.h"

#include <algorithm>

namespace dravenna {

TextCount::Place TextCount::place(const RichTextBox& N, const Admission& admitted, std::int32_t Ini) {
  if (!walked_ || revision_ != N.revision() || admitted_ != admitted) {
    walked_ = true;
    revision_ = N.revision();
    admitted_ = admitted;
    walk(N);
  }
  Place place;
  place.count = positions_.size();
  const auto found = std::lower_bound(positions_.begin(), positions_.end(), Ini);
  if (found != positions_.end() && *found == Ini) {
    place.number = static_cast<std::size_t>(found - positions_.begin()) + 1;
  }
  // From the line of the last time to this one.
  const auto caret = static_cast<std::size_t>(N.SelStart());
  const char16_t* const text = N.Text().data();
  const auto lines = static_cast<std::size_t>(
      std::count(text + std::min(caret, lineOffset_), text + std::max(caret, lineOffset_), u'\n'));
  line_ = caret < lineOffset_ ? line_ - lines : line_ + lines;
  lineOffset_ = caret;
  place.line = line_;
  return place;
}

void TextCount::walk(const RichTextBox& N) {
  positions_.clear();
  lineOffset_ = 0;
  line_ = 1;
  for (std::int32_t at = nextQuote(N.Text(), 0); at != 0; at = nextQuote(N.Text(), at)) {
    if (admitted_.admits(colorBehind(N, at))) positions_.push_back(at);
  }
}

}  // namespace dravenna
