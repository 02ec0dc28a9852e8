#include "app/principal.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kCyan = 0xFFFF00;
constexpr std::int16_t kAdvanced = 2;

}  // namespace

void Principal::Seleccionar(bool ShowContextWarning, bool SetEdt, bool Focus) {
  if (!ScriptLoaded) return;
  if (isTextColor(N.SelColor())) {
    const std::int32_t before = Ini;
    const QuoteMarks marks = quoteMarksAround(N);
    Ini = marks.Ini;
    Fin = marks.Fin;
    selectCurrent(Brackets::OfAnyText);
    if (SetEdt) {
      EDT.setText(N.SelText());
      selectEditBox();
    }
    if (Ini != before) UndoText = EDT.Text();
    if (ShowContextWarning && NavMode < kAdvanced && N.SelColor() == clrCode) {
      say(words::LogicalContextWarning, kInformation);
    }
  } else {
    if (N.SelColor() == clrError) say(words::LineWithErrors, kInformation);
    if (Ini + Fin == 0) return;
    selectCurrent(Brackets::OfAnyText);
    if (SetEdt) {
      selectEditBox();
      showEditBox(N.SelLength() > 0);
    }
  }
  colorEditBox();
  if (EDT.Visible && Focus) SetFocus(Control::EDT);
}

void Principal::selectCurrent(Brackets brackets) {
  selectBetween(N, {Ini, Fin}, brackets);
  currentStart_ = N.SelStart();
  currentLength_ = N.SelLength();
}

bool Principal::backToCurrentText() {
  if (N.SelStart() == currentStart_ && N.SelLength() == currentLength_) return false;
  N.setSelStart(currentStart_);
  N.setSelLength(currentLength_);
  return true;
}

void Principal::showEditBox(bool visible) {
  if (visible == EDT.Visible) return;
  EDT.Visible = visible;
  ArrangeEditBox();
}

void Principal::selectEditBox() {
  EDT.selectAll();
  showEditBox(!EDT.Text().empty());
}

void Principal::colorEditBox() { EDT.ForeColor = N.SelColor() == clrMessage ? kWhite : kCyan; }

}  // namespace dravenna
