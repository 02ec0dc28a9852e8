#include "app/principal.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint32_t kCyan = 0xFFFF00;
constexpr std::int16_t kAdvanced = 2;

bool wrappedInBrackets(TextView text) { return !text.empty() && text.front() == u'[' && text.back() == u']'; }

}  // namespace

void Principal::Seleccionar(bool ShowContextWarning, bool SetEdt, bool Focus) {
  if (!ScriptLoaded) return;
  if (isTextColor(N.SelColor())) {
    const std::int32_t before = Ini;
    Ini = previousQuote(N.Text(), N.SelStart() + 1);
    Fin = nextQuote(N.Text(), Ini);
    selectCurrent(false);
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
    selectCurrent(false);
    if (SetEdt) {
      selectEditBox();
      showEditBox(N.SelLength() > 0);
    }
  }
  colorEditBox();
  if (EDT.Visible && Focus) SetFocus(Control::EDT);
}

void Principal::selectCurrent(bool titlesOnly) {
  N.setSelStart(Ini);
  N.setSelLength(Fin - Ini - 1);
  if (wrappedInBrackets(N.SelText()) && (!titlesOnly || N.SelColor() == clrTitle)) {
    N.setSelStart(Ini + 1);
    N.setSelLength(Fin - Ini - 3);
  }
  currentStart_ = N.SelStart();
  currentLength_ = N.SelLength();
}

void Principal::backToCurrentText() {
  if (N.SelStart() == currentStart_ && N.SelLength() == currentLength_) return;
  N.setSelStart(currentStart_);
  N.setSelLength(currentLength_);
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
