#include "editing/quote_walk.h"

#include "editing/quoted_text.h"
#include "text/case_fold.h"

namespace dravenna {

namespace {

// From an offset from 0, or npos, to a position from 1, or 0.
std::int32_t toPosition(std::size_t offset) {
  return offset == std::u16string_view::npos ? 0 : static_cast<std::int32_t>(offset) + 1;
}

}  // namespace

std::int32_t nextQuote(std::u16string_view text, std::int32_t position) {
  return toPosition(text.find(u'"', static_cast<std::size_t>(position)));
}

std::int32_t previousQuote(std::u16string_view text, std::int32_t position) {
  if (position == 1) return 0;
  return toPosition(
      text.rfind(u'"', position == 0 ? std::u16string_view::npos : static_cast<std::size_t>(position) - 2));
}

std::uint32_t colorBehind(const RichTextBox& N, std::int32_t position) {
  const auto offset = static_cast<std::size_t>(position);
  return offset < N.Text().size() ? N.colorAt(offset) : kNoColor;
}

bool Admission::admits(std::uint32_t color) const {
  const bool onlyInternal = !HasMessages && HasCode;
  if (color == clrMessage) return true;
  if (color == clrTitle) return NavMode > 0 || Shift == 1 || onlyInternal;
  if (color == clrCode) return NavMode == 2 || Shift == 2 || onlyInternal;
  return false;
}

std::int32_t nextAdmitted(const RichTextBox& N, std::int32_t from, bool forward, const Admission& admitted) {
  std::int32_t at = from;
  for (;;) {
    const std::int32_t last = at;
    at = stepQuote(N.Text(), at, forward);
    if (at == last || at == from) return from;  // once around
    if (admitted.admits(colorBehind(N, at))) return at;
  }
}

std::int32_t nextHit(RichTextBox& N, std::int32_t from, bool forward, const Admission& admitted,
                     std::u16string_view word) {
  for (std::int32_t at = from;;) {
    const std::int32_t last = at;
    at = stepQuote(N.Text(), at, forward);
    if (forward ? at <= from : at >= from || last == 0) return 0;
    if (!admitted.admits(colorBehind(N, at))) continue;
    selectBetween(N, {at, nextQuote(N.Text(), at)}, Brackets::OfTitles);
    if (findIgnoringCase(N.SelText(), word) != std::u16string_view::npos) return at;
  }
}

}  // namespace dravenna
