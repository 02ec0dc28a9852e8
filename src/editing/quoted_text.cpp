#include "editing/quoted_text.h"

#include "editing/quote_walk.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {

namespace {

std::u16string inBrackets(TextView title) { return std::u16string(u"\"[").append(title).append(u"]\""); }

}  // namespace

QuoteMarks quoteMarksAround(const RichTextBox& N) {
  const std::int32_t Ini = previousQuote(N.Text(), N.SelStart() + 1);
  return {Ini, nextQuote(N.Text(), Ini)};
}

void selectBetween(RichTextBox& N, const QuoteMarks& marks, Brackets brackets) {
  N.setSelStart(marks.Ini);
  N.setSelLength(marks.Fin - marks.Ini - 1);
  const TextView text = N.SelText();
  if (text.empty() || text.front() != u'[' || text.back() != u']') return;
  if (brackets == Brackets::OfTitles && N.SelColor() != clrTitle) return;
  N.setSelStart(marks.Ini + 1);
  N.setSelLength(marks.Fin - marks.Ini - 3);
}

std::u16string committed(std::u16string_view typed) { return replaceAll(typed, u"\"", u"'"); }

void writeOver(RichTextBox& N, std::u16string_view text) {
  if (N.SelLength() == 0 && N.SelStart() > 0) {
    const CharStyle bracket = N.style(N.styleAt(static_cast<std::size_t>(N.SelStart()) - 1));
    N.setSelColor(bracket.color);
    N.setSelBold(bracket.bold);
    N.setSelItalic(bracket.italic);
    N.setSelStrikeThru(bracket.strikeThru);
  }
  N.setSelText(text);
}

std::vector<std::int32_t> placesOfTitle(std::u16string_view text, std::u16string_view title) {
  const std::u16string quoted = inBrackets(title);
  std::vector<std::int32_t> places;
  std::size_t at = findIgnoringCase(text, quoted);
  while (at != TextView::npos) {
    places.push_back(static_cast<std::int32_t>(at) + 2);
    at = findIgnoringCase(text, quoted, at + quoted.size() - 1);
  }
  return places;
}

std::int32_t firstPlaceOfTitle(std::u16string_view text, std::u16string_view title) {
  const std::size_t at = findIgnoringCase(text, inBrackets(title));
  return at == TextView::npos ? 0 : static_cast<std::int32_t>(at) + 1;
}

}  // namespace dravenna
