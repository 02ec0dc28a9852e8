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
  const std::int32_t start = Ini;
  Ini = nextAdmitted(N, start, Forward, admission(Shift));
  ShowCurrentText();
  if (Ini != start) xIni = Ini;
}

}  // namespace dravenna
