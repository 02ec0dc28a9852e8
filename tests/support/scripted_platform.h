#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platform/system.h"

// The surroundings that a scenario sets up: answers that wait, and a record of what the program has shown.
namespace dravenna {

struct ShownBox {
  std::u16string text;
  int flags = 0;
  std::u16string title;
};

struct ShownDialog {
  bool save = false;
  CommonDialog properties;  // as they were when it was shown
};

struct Stage {
  std::deque<Answer> answers;
  std::deque<std::optional<std::u16string>> picks;  // nothing is a cancelled dialog
  std::deque<ShownBox> boxes;                       // not expected yet
  std::optional<ShownDialog> dialog;                // the last one
  int beeps = 0;
  bool takesOffers = false;  // where no pick waits, a file dialog's own name is taken

  // The answer to a box with these flags: the queued one if the box has that button, else the default button.
  Answer answerFor(int flags);
  // Takes the next pick; nothing if the dialog is to be cancelled.
  std::optional<std::u16string> nextPick();
};

enum class FileOperation { Create, Write, Close, Read };

// Text files whose operations fail on demand.
class FailingTextFiles : public TextFiles {
 public:
  explicit FailingTextFiles(std::unique_ptr<TextFiles> files) : files_(std::move(files)) {}

  void use(std::unique_ptr<TextFiles> files) { files_ = std::move(files); }
  void failNext(FileOperation operation, const std::u16string& description) {
    faults_[operation].push_back(description);
  }

  std::unique_ptr<TextReader> OpenTextFile(std::u16string_view path) override;
  std::unique_ptr<TextReader> openScript(std::u16string_view path) override;
  std::unique_ptr<TextWriter> CreateTextFile(std::u16string_view path, Writing writing) override;
  bool fileExists(std::u16string_view path) override { return files_->fileExists(path); }

  void check(FileOperation operation);

 private:
  std::unique_ptr<TextReader> reading(std::unique_ptr<TextReader> stream);

  std::unique_ptr<TextFiles> files_;
  std::map<FileOperation, std::deque<std::u16string>> faults_;
};

// The real process, but for its command line, its folder and the shell, which is not told of the verb.
class ScriptedProcess : public Process {
 public:
  explicit ScriptedProcess(std::u16string folder) : folder_(std::move(folder)) {}

  std::u16string line;
  std::vector<std::u16string> opened;

  std::u16string commandLine() override { return line; }
  std::u16string programFolder() override { return folder_; }
  char16_t pathSeparator() override { return real_->pathSeparator(); }
  std::u16string programName() override { return real_->programName(); }
  void shellVerbChanged(bool) override {}
  void documentOpened(std::u16string_view path) override { opened.emplace_back(path); }

 private:
  std::u16string folder_;
  std::unique_ptr<Process> real_ = makeProcess({});
};

}  // namespace dravenna
