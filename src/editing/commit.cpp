#include "app/principal.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {

void Principal::commit() {
  if (Ini == 0 || Fin == 0) return;
  backToCurrentText();
  std::u16string text = replaceAll(EDT.Text(), u"\"", u"'");
  // The first place of a title may be a comment or code: that can be current, but is not written over.
  if (text != N.SelText() && isTextColor(N.SelColor())) {
    if (text.empty()) text = u" ";  // a text without a character would have lost its colour
    if (N.SelColor() == clrTitle) {
      ReplaceTitle(text);
    } else {
      UndoText = N.SelText();
      if (N.SelLength() == 0) {
        // Between two brackets nothing is replaced that could hand its colour on.
        N.setSelColor(N.SelColor());
        N.setSelBold(true);
        N.setSelItalic(false);
        N.setSelStrikeThru(false);
      }
      N.setSelText(text);
    }
    Modified = true;
  }
  Seleccionar(false, true, true);
}

void Principal::cancel() {
  if (Ini == 0 || Fin == 0) return;
  EDT.setText(UndoText);
  selectEditBox();
}

void Principal::ShowCurrentText() {
  N.setSelStart(Ini);
  if (Ini > 0) {
    Fin = nextQuote(N.Text(), Ini);
    selectCurrent(true);
    EDT.setText(N.SelText());
  }
  selectEditBox();
  colorEditBox();
  if (EDT.Visible) setFocus(Control::EDT);
  UndoText = N.SelText();
  N.Visible = true;
  setMousePointer(0);
}

void Principal::ReplaceTitle(std::u16string_view text) {
  const auto quoted = [](TextView title) { return std::u16string(u"\"[").append(title).append(u"]\""); };
  const std::u16string oldTitle = quoted(N.SelText());
  const std::u16string newTitle = quoted(text);
  N.Visible = false;
  setMousePointer(kHourglass);
  // All places are found before the first one changes: a new title may match the old one but for its letter case.
  std::vector<std::int32_t> starts;
  std::size_t at = findIgnoringCase(N.Text(), oldTitle);
  while (at != TextView::npos) {
    starts.push_back(static_cast<std::int32_t>(at) + 2);
    at = findIgnoringCase(N.Text(), oldTitle, at + oldTitle.size() - 1);  // two may share a quote mark
  }
  N.replaceEach(starts, static_cast<std::int32_t>(oldTitle.size()) - 4, text);
  at = findIgnoringCase(N.Text(), newTitle);
  Ini = at == TextView::npos ? 0 : static_cast<std::int32_t>(at) + 1;
  ShowCurrentText();
}

void Principal::EDT_Change() { EDT.BackColor = EDT.Text() == N.SelText() ? 0x000000 : 0x000080; }

void Principal::EDT_GotFocus() { closeSearch(); }

}  // namespace dravenna
