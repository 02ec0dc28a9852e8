#include "app/principal.h"

namespace dravenna {

Admission Principal::admission(std::int16_t Shift) const { return {NavMode, HasMessages, HasCode, Shift}; }

void Principal::GoNextText(std::int16_t Shift) {
  if (ScriptLoaded) MoveToText(true, Shift);
}

void Principal::GoPrevText(std::int16_t Shift) {
  if (ScriptLoaded) MoveToText(false, Shift);
}

void Principal::MoveToText(bool Forward, std::int16_t Shift) {
  N.Visible = false;
  setMousePointer(kHourglass);
  const Admission admitted = admission(Shift);
  const std::int32_t start = Ini;
  for (;;) {
    const std::int32_t last = Ini;
    Ini = stepQuote(N.Text(), Ini, Forward);
    if (Ini == last || Ini == start) {  // once around: Ini is the start again
      ShowCurrentText();
      return;
    }
    if (admitted.admits(colorBehind(N, Ini))) break;
  }
  ShowCurrentText();
  xIni = Ini;
}

}  // namespace dravenna
