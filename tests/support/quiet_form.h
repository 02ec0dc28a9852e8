#pragma once

#include <algorithm>
#include <array>

#ifndef _WIN32
#include "platform/posix/registry_file.h"
#include "platform/posix/text_files.h"
#endif
#include "support/driver.h"

namespace dravenna {

// A main form over files and settings of the test's choice, started with a command line, before a user who sees
// nothing: boxes get their default answer, file dialogs the name that waits in the stage or the one that they offer.
class QuietForm {
 public:
  QuietForm(std::unique_ptr<TextFiles> files, std::unique_ptr<RegistryCalls> registry, std::u16string_view line = {},
            CommitLog& commits = CommitLog::none())
      : files_(std::move(files)), registry_(std::move(registry)), commits_(commits) {
    stage.takesOffers = true;
    driver_->start(line);
  }
#ifndef _WIN32
  QuietForm(const CodePagePtr& page, posix::SystemCalls& calls, std::string registryPath)
      : QuietForm(posix::makeTextFiles(page, calls), posix::makeRegistryFile(std::move(registryPath), calls)) {}
#endif

  Principal* operator->() { return driver_->form(); }
  Principal& operator*() { return *driver_->form(); }

  Stage stage;
  std::deque<ShownBox>& boxes = stage.boxes;          // all so far
  std::vector<std::array<std::int32_t, 2>> pickedAt;  // where the next colour pickers are clicked

  void open(std::u16string_view path) {
    boxes.clear();
    driver_->form()->ScriptPath = path;
    driver_->form()->LoadScript();
  }
  void typeAndCommit(std::u16string_view text) {
    driver_->form()->EDT.userEdited(text, 0, 0);
    driver_->form()->dispatchKey({kKeyEnter, 0, 0, Control::EDT});
  }
  bool said(std::u16string_view beginning) const {
    return std::any_of(boxes.begin(), boxes.end(), [&](const auto& box) { return box.text.starts_with(beginning); });
  }
  bool saidError() const { return said(u"Error: "); }

 private:
  void click(ColorPick& picker) {
    if (pickedAt.empty()) return;
    const auto [x, y] = pickedAt.back();
    pickedAt.pop_back();
    picker.picBigBox_MouseDown(x, y);
    picker.picBigBox_MouseUp(x, y);
    picker.Command1_Click();
  }

  FailingTextFiles files_;
  std::unique_ptr<RegistryCalls> registry_;
  CommitLog& commits_;
  ScriptedProcess process_{u"/opt/dravenna"};
  std::unique_ptr<Driver> driver_ =
      makeCoreDriver({files_, *registry_, process_, stage, [this](ColorPick& picker) { click(picker); }, commits_});
};

}  // namespace dravenna
