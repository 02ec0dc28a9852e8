#include "app/principal.h"

namespace dravenna {

namespace {

constexpr std::int16_t kCharEnter = 13;
constexpr std::int16_t kCharEsc = 27;
constexpr std::int16_t kCharCtrlF = 6;

}  // namespace

KeyOutcome Principal::dispatchKey(const KeyEvent& key) {
  std::int16_t KeyCode = key.KeyCode;
  if (KeyCode != 0) Form_KeyDown(KeyCode, key.Shift);
  if (KeyCode != 0 && key.focus == Control::N) N_KeyDown(KeyCode, key.Shift);
  std::int16_t KeyAscii = key.KeyAscii;
  if (KeyAscii != 0) Form_KeyPress(KeyAscii);
  if (KeyAscii != 0 && key.focus == Control::EDT) EDT_KeyPress(KeyAscii);
  return {key.KeyCode == 0 || KeyCode != 0, KeyAscii != 0};
}

void Principal::Form_KeyDown(std::int16_t& KeyCode, std::int16_t Shift) {
  if (!ScriptLoaded) return;
  const auto press = [this](std::int16_t code, std::int16_t shift) { Form_KeyDown(code, shift); };
  switch (KeyCode) {
    case kKeyEnter:
      KeyCode = 0;
      commit();
      break;
    case kKeyEsc:
      KeyCode = 0;
      cancel();
      break;
    case kKeyUp:
    case kKeyDown: {
      const bool forward = KeyCode == kKeyDown;
      KeyCode = 0;
      if (EDT.Visible) press(kKeyEnter, 0);
      if (forward) {
        GoNextText(Shift);
      } else {
        GoPrevText(Shift);
      }
      break;
    }
    case kKeyF:
      if (Shift != kCtrl) break;
      KeyCode = 0;
      openSearch();
      break;
    case kKeyF1:
      KeyCode = 0;
      mnu_AcercaD_Click();
      break;
    case kKeyF3:
      KeyCode = 0;
      if (LastSearch.empty()) {
        press(kKeyF, kCtrl);
      } else {
        Buscar(std::u16string(LastSearch), Shift == 0);
      }
      break;
    case kKeyF5:
      openColorPick();
      KeyCode = 0;
      break;
    default:
      break;
  }
}

void Principal::N_KeyDown(std::int16_t& KeyCode, std::int16_t Shift) {
  switch (KeyCode) {
    case kKeyUp:
    case kKeyDown: {
      const bool forward = KeyCode == kKeyDown;
      KeyCode = 0;
      if (EDT.Visible) {
        Seleccionar(false, true, true);
        std::int16_t enter = kKeyEnter;
        Form_KeyDown(enter, 0);
      }
      if (forward) {
        GoNextText(Shift);
      } else {
        GoPrevText(Shift);
      }
      break;
    }
    case kKeyE:
    case kKeyG:
    case kKeyL:
    case kKeyR:
      if (Shift == kCtrl) {
        KeyCode = 0;
      } else if (EDT.Visible) {
        SetFocus(Control::EDT);
      }
      break;
    default:
      break;
  }
}

void Principal::Form_KeyPress(std::int16_t& KeyAscii) {
  if (KeyAscii == kCharEnter || KeyAscii == kCharEsc || KeyAscii == kCharCtrlF) KeyAscii = 0;
}

void Principal::EDT_KeyPress(std::int16_t& KeyAscii) {
  if (KeyAscii == kCharEnter || KeyAscii == kCharEsc) KeyAscii = 0;
}

void Principal::N_MouseUp() { Seleccionar(true, true, true); }

void Principal::openColorPick() {
  Seleccionar(false, false, false);
  ColorPick picker(EDT);
  picker.Form_Load();
  colorPick = &picker;
  platform_.windowing.showColorPick(picker);
  colorPick = nullptr;
}

}  // namespace dravenna
