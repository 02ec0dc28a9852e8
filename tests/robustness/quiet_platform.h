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
#include "support/quiet_windowing.h"

namespace dravenna {

// A main form over the real files and registry, but over system calls of the test's choice, and without a screen.
class QuietForm : private QuietWindowing {
 public:
  QuietForm(const CodePagePtr& page, posix::SystemCalls& calls, std::string registryPath)
      : files_(posix::makeTextFiles(page, calls)),
        registry_(posix::makeRegistryFile(std::move(registryPath), calls)),
        form_(std::make_unique<Principal>(Platform{*files_, *registry_, process_, *this})) {}

  Principal* operator->() { return form_.get(); }
  Principal& operator*() { return *form_; }

  std::vector<std::u16string> boxes;                  // the texts of all message boxes so far
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
    return Answer::Ok;
  }
  void SetFocus(Control control) override {
    if (control == Control::EDT && focus_ != control) form_->EDT_GotFocus();
    focus_ = control;
  }
  void showColorPick(ColorPick& picker) override {
    if (pickedAt.empty()) return;
    const auto [x, y] = pickedAt.back();
    pickedAt.pop_back();
    picker.picBigBox_MouseDown(x, y);
    picker.picBigBox_MouseUp(x, y);
    picker.Command1_Click();
  }

  std::unique_ptr<TextFiles> files_;
  std::unique_ptr<RegistryCalls> registry_;
  QuietProcess process_;
  std::unique_ptr<Principal> form_;
  Control focus_ = Control::None;
};

}  // namespace dravenna
