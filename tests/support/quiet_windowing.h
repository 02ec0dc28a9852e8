#pragma once

#include "platform/process.h"
#include "platform/windowing.h"

namespace dravenna {

// A user who sees nothing: questions have one answer, file dialogs take the path that was set, or, without one, the
// name that they offer.
class QuietWindowing : public Windowing {
 public:
  Answer yesOrNo = Answer::Yes;
  std::u16string pick;

  Answer messageBox(std::u16string_view, int flags, std::u16string_view) override {
    return (flags & 4) != 0 ? yesOrNo : Answer::Ok;
  }
  void ShowOpen(CommonDialog& dialog) override {
    if (!pick.empty()) dialog.FileName = pick;
  }
  void ShowSave(CommonDialog& dialog) override { ShowOpen(dialog); }
  void beep() override {}
  void pointerChanged() override {}
  void SetFocus(Control) override {}
  void showSearchBox(FrmSearch&) override {}
  void unloadSearchBox(FrmSearch&) override {}
  void showColorPick(ColorPick&) override {}
  void unloadMainForm() override {}
};

class QuietProcess : public Process {
 public:
  std::u16string line;

  std::u16string commandLine() override { return line; }
  std::u16string programFolder() override { return u"/opt/dravenna"; }
  char16_t pathSeparator() override { return u'/'; }
  std::u16string programName() override { return u"/dravenna"; }
  void shellVerbChanged(bool) override {}
};

}  // namespace dravenna
