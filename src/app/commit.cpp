#include "app/principal.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {

void Principal::commit() {
  if (Ini == 0 || Fin == 0) return;
  backToCurrentText();
  std::u16string text = replaceAll(EDT.Text(), u"\"", u"'");
  const bool title = N.SelColor() == clrTitle;
  // A message wrapped in brackets may stand in the box with them or without.
  const TextView whole =
      TextView(N.Text()).substr(static_cast<std::size_t>(Ini), static_cast<std::size_t>(Fin - Ini - 1));
  const bool same = text == N.SelText() || (!title && text == whole);
  if (!same && !isTextColor(N.SelColor())) {
    // The first place of a title may be a comment or code: it can be current, but is not written over.
    platform_.windowing.beep();
  } else if (!same) {
    if (text.empty()) text = u" ";  // a text without a character would have lost its colour
    if (title) {
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
  if (EDT.Visible) SetFocus(Control::EDT);
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
