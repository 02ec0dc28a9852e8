#include "desktop/key_codes.h"

#include <QtGui/QKeyEvent>
#include <algorithm>
#include <iterator>

namespace dravenna {

namespace {

struct Code {
  Qt::Key key;
  std::int16_t code;
};

constexpr Code kCodes[] = {
    {Qt::Key_Escape, kKeyEsc},   {Qt::Key_Tab, 9},           {Qt::Key_Backtab, 9}, {Qt::Key_Backspace, 8},
    {Qt::Key_Return, kKeyEnter}, {Qt::Key_Enter, kKeyEnter}, {Qt::Key_Insert, 45}, {Qt::Key_Delete, 46},
    {Qt::Key_Home, 36},          {Qt::Key_End, 35},          {Qt::Key_Left, 37},   {Qt::Key_Up, kKeyUp},
    {Qt::Key_Right, 39},         {Qt::Key_Down, kKeyDown},   {Qt::Key_PageUp, 33}, {Qt::Key_PageDown, 34},
    {Qt::Key_Shift, 16},         {Qt::Key_Control, 17},      {Qt::Key_Alt, 18},    {Qt::Key_Menu, 93},
};

std::int16_t virtualKey(int key) {
  if ((key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z) || key == Qt::Key_Space) {
    return static_cast<std::int16_t>(key);
  }
  if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return static_cast<std::int16_t>(kKeyF1 + key - Qt::Key_F1);
  const auto* found = std::find_if(std::begin(kCodes), std::end(kCodes), [key](Code c) { return c.key == key; });
  return found == std::end(kCodes) ? std::int16_t{0} : found->code;
}

std::int16_t character(const QKeyEvent& event, bool ctrlAlone) {
  switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return ctrlAlone ? 10 : 13;
    case Qt::Key_Escape:
      return 27;
    case Qt::Key_Backspace:
      return ctrlAlone ? 127 : 8;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
      return 9;
    case Qt::Key_Delete:
      return 0;
    default:
      break;
  }
  if (ctrlAlone) {
    const bool hasControlCode = event.key() >= Qt::Key_A && event.key() <= Qt::Key_Underscore;
    return hasControlCode ? static_cast<std::int16_t>(event.key() & 0x1F) : std::int16_t{0};
  }
  const QString text = event.text();
  return text.isEmpty() || text.at(0).unicode() < 0x20 ? std::int16_t{0}
                                                       : static_cast<std::int16_t>(text.at(0).unicode());
}

}  // namespace

bool isAltKey(const QKeyEvent& event) {
  return (event.modifiers() & (Qt::AltModifier | Qt::ControlModifier)) == Qt::AltModifier;
}

KeyEvent keyEventOf(const QKeyEvent& event) {
  const Qt::KeyboardModifiers modifiers = event.modifiers();
  KeyEvent key;
  key.KeyCode = virtualKey(event.key());
  if (modifiers.testFlag(Qt::ShiftModifier)) key.Shift |= kShift;
  if (modifiers.testFlag(Qt::ControlModifier)) key.Shift |= kCtrl;
  if (modifiers.testFlag(Qt::AltModifier)) key.Shift |= kAlt;
  if (!isAltKey(event)) key.KeyAscii = character(event, (key.Shift & (kCtrl | kAlt)) == kCtrl);
  return key;
}

}  // namespace dravenna
