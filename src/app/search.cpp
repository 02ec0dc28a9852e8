#include "app/principal.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {

void Principal::mnu_Search_Click() {
  std::int16_t KeyCode = kKeyF;
  Form_KeyDown(KeyCode, kCtrl);
}

void Principal::openSearch() {
  xIni = Ini;
  if (!frmSearch) frmSearch = std::make_unique<FrmSearch>(*this);
  platform_.windowing.showSearchBox(*frmSearch);
  if (!frmSearch) return;
  frmSearch->txtSearch.setText(LastSearch);
  frmSearch->txtSearch.selectAll();
}

void Principal::closeSearch() {
  const std::unique_ptr<FrmSearch> box = std::move(frmSearch);
  if (box) platform_.windowing.unloadSearchBox(*box);
}

void Principal::ReturnFromSearch() {
  closeSearch();
  if (EDT.Visible) SetFocus(Control::EDT);
}

void Principal::Buscar(std::u16string_view Texto, bool bForward) {
  if (findIgnoringCase(N.Text(), Texto) == TextView::npos) {
    platform_.windowing.beep();
    return;
  }
  const std::int32_t start = xIni;
  setScreenMousePointer(kHourglass);
  N.Visible = false;
  LastSearch = Texto;
  const std::int32_t hit = nextHit(N, start, bForward, admission(0), Texto);
  if (hit == 0) {
    platform_.windowing.beep();
    setScreenMousePointer(0);
    N.setSelStart(0);  // on no text, so that the selection goes back to the current one and EDT keeps what it holds
    Seleccionar(false, true, false);
    N.Visible = true;
    xIni = start;
    return;
  }
  xIni = hit;
  Fin = nextQuote(N.Text(), xIni);
  Ini = xIni;
  Seleccionar(false, true, false);
  UndoText = EDT.Text();
  const std::size_t place = findIgnoringCase(EDT.Text(), Texto);
  EDT.setSelStart(place == TextView::npos ? 0 : static_cast<std::int32_t>(place));
  EDT.setSelLength(place == TextView::npos ? 0 : static_cast<std::int32_t>(Texto.size()));
  N.Visible = true;
  setScreenMousePointer(0);
}

FrmSearch::FrmSearch(Principal& owner) : owner_(owner) {
  Registry& registry = owner.registry();
  Caption = u" " + replaceAll(read(registry, words::mnuSearch), u"&", u"");
  btn_Search = {read(registry, words::btnNext), read(registry, words::btnPrev)};
  CancelButton = read(registry, words::btnClose);
}

void FrmSearch::btn_Search_Click(std::int16_t Index) { owner_.Buscar(std::u16string(txtSearch.Text()), Index == 0); }

void FrmSearch::CancelButton_Click() { owner_.ReturnFromSearch(); }

void FrmSearch::Form_KeyPress(std::int16_t& KeyAscii) {
  if (KeyAscii == 27) {
    KeyAscii = 0;
    CancelButton_Click();
  } else if (KeyAscii == 13) {
    KeyAscii = 0;
    if (!txtSearch.Text().empty()) btn_Search_Click(0);
  }
}

void FrmSearch::Form_LostFocus() { owner_.ReturnFromSearch(); }

}  // namespace dravenna
