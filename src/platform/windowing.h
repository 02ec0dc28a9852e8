#pragma once

#include <cstdint>
#include <string_view>

#include "platform/controls.h"

namespace dravenna {

class ColorPick;
class FrmSearch;

enum class Answer { Ok = 1, Cancel = 2, Yes = 6, No = 7 };

// Message box flags.
constexpr int kCritical = 16;
constexpr int kWarning = 48;
constexpr int kInformation = 64;
constexpr int kQuestionOkCancel = 33;
constexpr int kQuestionYesNo = 36;
constexpr int kQuestionYesNoCancel = 547;  // Cancel is the default button

// What the forms ask of the windowing system. The models are the truth: an implementation mirrors them to the screen
// when a handler has returned, before each modal call and before SetFocus.
class Windowing {
 public:
  virtual ~Windowing() = default;

  // Modal. An empty title is the platform's default one.
  virtual Answer messageBox(std::u16string_view text, int flags, std::u16string_view title) = 0;

  // Modal; put the picked path into FileName. When cancelled: throw Failure if CancelError, else leave FileName empty.
  virtual void ShowOpen(CommonDialog& dialog) = 0;
  virtual void ShowSave(CommonDialog& dialog) = 0;

  virtual void beep() = 0;

  // MousePointer of the main form or of the screen has changed: show it at once.
  virtual void pointerChanged() = 0;

  // Gives a visible control the keyboard focus; runs its got-focus handler if it did not have it.
  virtual void SetFocus(Control control) = 0;

  // Shows the box over the main window, not modal; one that is open comes forward. The focus goes to txtSearch.
  virtual void showSearchBox(FrmSearch& box) = 0;
  // Takes the box from the screen. It is destroyed when the call has returned.
  virtual void unloadSearchBox(FrmSearch& box) = 0;

  // Modal: returns when the picker has hidden itself.
  virtual void showColorPick(ColorPick& picker) = 0;

  // Closes the main form, as if the user had closed it: Form_Unload runs, then the program ends.
  virtual void unloadMainForm() = 0;
};

}  // namespace dravenna
