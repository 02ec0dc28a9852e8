#include "app/principal.h"

namespace dravenna {

namespace {

// The box's ground: it equals the selection of N, or there is something to commit.
constexpr std::uint32_t kBlack = 0x000000;
constexpr std::uint32_t kDarkRed = 0x000080;

}  // namespace

void Principal::commit() {
  if (Ini == 0 || Fin == 0) return;
  const bool wasElsewhere = backToCurrentText();
  const std::u16string typed = committed(EDT.Text());
  // A black box holds what was selected when it took it: nobody has typed, though other brackets may be selected now.
  if (typed != N.SelText() && (wasElsewhere || EDT.BackColor != kBlack)) {
    const std::u16string_view text = neverEmpty(typed);
    const bool title = N.SelColor() == clrTitle;
    noteChange(text, title);
    if (title) {
      ReplaceTitle(text);
    } else {
      UndoText = N.SelText();
      writeOver(N, text);
      Fin = nextQuote(N.Text(), Ini);
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
    selectCurrent(Brackets::OfTitles);
    EDT.setText(N.SelText());
  }
  selectEditBox();
  colorEditBox();
  if (EDT.Visible) SetFocus(Control::EDT);
  UndoText = N.SelText();
  N.Visible = true;
  setMousePointer(0);
}

void Principal::ReplaceTitle(std::u16string_view Text) {
  const std::u16string oldTitle(N.SelText());
  N.Visible = false;
  setMousePointer(kHourglass);
  // All places are found before the first one changes: a new title may match the old one but for its letter case.
  N.replaceEach(placesOfTitle(N.Text(), oldTitle), static_cast<std::int32_t>(oldTitle.size()), Text);
  Ini = firstPlaceOfTitle(N.Text(), Text);
  ShowCurrentText();
}

void Principal::EDT_Change() { EDT.BackColor = EDT.Text() == N.SelText() ? kBlack : kDarkRed; }

void Principal::EDT_GotFocus() { closeSearch(); }

}  // namespace dravenna
