#pragma once

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include "app/principal.h"
#include "platform/posix/registry_file.h"
#include "platform/posix/text_files.h"
#include "platform/system.h"
#include "scan/command_list.h"

namespace dravenna {

// A main form over the real files and registry, but over system calls of the test's choice, and without a screen.
class QuietForm : private Windowing, private Process {
 public:
  QuietForm(const CodePagePtr& page, posix::SystemCalls& calls, std::string registryPath)
      : files_(posix::makeTextFiles(page, calls)),
        registry_(posix::makeRegistryFile(std::move(registryPath), calls)),
        form_(std::make_unique<Principal>(Platform{*files_, *registry_, *this, *this})) {}

  Principal* operator->() { return form_.get(); }
  Principal& operator*() { return *form_; }

  std::vector<std::u16string> boxes;                  // the texts of all message boxes so far
  Answer answer = Answer::Ok;                         // to each of them
  std::vector<std::array<std::int32_t, 2>> pickedAt;  // where the next colour pickers are clicked

  void open(std::u16string_view path) {
    boxes.clear();
    form_->AllowedCommands = kDefaultAllowedCommands;
    form_->ScriptPath = path;
    form_->LoadScript();
  }
  void typeAndCommit(std::u16string_view text) {
    form_->EDT.userEdited(text, 0, 0);
    form_->dispatchKey({kKeyEnter, 0, 0, Control::EDT});
  }
  bool said(std::u16string_view beginning) const {
    return std::any_of(boxes.begin(), boxes.end(), [&](const auto& box) { return box.starts_with(beginning); });
  }
  bool saidError() const { return said(u"Error: "); }

 private:
  Answer messageBox(std::u16string_view text, int, std::u16string_view) override {
    boxes.emplace_back(text);
    return answer;
  }
  void showOpen(CommonDialog&) override {}  // takes the name that is offered
  void showSave(CommonDialog&) override {}
  void beep() override {}
  void pointerChanged() override {}
  void setFocus(Control control) override {
    if (control == Control::EDT && focus_ != control) form_->EDT_GotFocus();
    focus_ = control;
  }
  void showSearchBox(FrmSearch&) override { focus_ = Control::txtSearch; }
  void unloadSearchBox(FrmSearch&) override { focus_ = Control::None; }
  void showColorPick(ColorPick& picker) override {
    if (pickedAt.empty()) return;
    picker.picBigBox_MouseDown(pickedAt.back()[0], pickedAt.back()[1]);
    picker.picBigBox_MouseUp(pickedAt.back()[0], pickedAt.back()[1]);
    pickedAt.pop_back();
    picker.Command1_Click();
  }
  void unloadMainForm() override { form_->Form_Unload(); }

  std::u16string commandLine() override { return {}; }
  std::u16string programFolder() override { return u"/opt/dravenna"; }
  char16_t pathSeparator() override { return u'/'; }
  std::u16string programName() override { return u"/dravenna"; }
  void shellVerbChanged(bool) override {}

  std::unique_ptr<TextFiles> files_;
  std::unique_ptr<RegistryCalls> registry_;
  std::unique_ptr<Principal> form_;
  Control focus_ = Control::None;
};

}  // namespace dravenna
