#include "support/scripted_platform.h"

namespace dravenna {

namespace {

class FailingReader : public TextReader {
 public:
  FailingReader(FailingTextFiles& files, std::unique_ptr<TextReader> reader)
      : files_(files), reader_(std::move(reader)) {}

  bool AtEndOfStream() override { return reader_->AtEndOfStream(); }
  std::u16string_view ReadLine() override {
    files_.check(FileOperation::Read);
    return reader_->ReadLine();
  }
  std::u16string ReadAll() override {
    files_.check(FileOperation::Read);
    return reader_->ReadAll();
  }
  void Close() override {
    files_.check(FileOperation::Close);
    reader_->Close();
  }

 private:
  FailingTextFiles& files_;
  std::unique_ptr<TextReader> reader_;
};

class FailingWriter : public TextWriter {
 public:
  FailingWriter(FailingTextFiles& files, std::unique_ptr<TextWriter> writer)
      : files_(files), writer_(std::move(writer)) {}

  void Write(std::u16string_view text) override {
    files_.check(FileOperation::Write);
    writer_->Write(text);
  }
  void WriteLine(std::u16string_view text) override {
    files_.check(FileOperation::Write);
    writer_->WriteLine(text);
  }
  void Close() override {
    files_.check(FileOperation::Close);
    writer_->Close();
  }

 private:
  FailingTextFiles& files_;
  std::unique_ptr<TextWriter> writer_;
};

}  // namespace

Answer Stage::answerFor(int flags) {
  std::vector<Answer> buttons = {Answer::Ok};
  if ((flags & 7) == 1) buttons = {Answer::Ok, Answer::Cancel};
  if ((flags & 7) == 3) buttons = {Answer::Yes, Answer::No, Answer::Cancel};
  if ((flags & 7) == 4) buttons = {Answer::Yes, Answer::No};
  if (!answers.empty()) {
    const Answer answer = answers.front();
    for (const Answer button : buttons) {
      if (button != answer) continue;
      answers.pop_front();
      return answer;
    }
  }
  return buttons[static_cast<std::size_t>(flags / 256)];
}

std::optional<std::u16string> Stage::nextPick() {
  if (picks.empty()) return std::nullopt;
  std::optional<std::u16string> pick = std::move(picks.front());
  picks.pop_front();
  return pick;
}

std::unique_ptr<TextReader> FailingTextFiles::OpenTextFile(std::u16string_view path) {
  return std::make_unique<FailingReader>(*this, files_->OpenTextFile(path));
}

std::unique_ptr<TextWriter> FailingTextFiles::CreateTextFile(std::u16string_view path, Writing writing) {
  check(FileOperation::Create);
  return std::make_unique<FailingWriter>(*this, files_->CreateTextFile(path, writing));
}

void FailingTextFiles::check(FileOperation operation) {
  std::deque<std::u16string>& faults = faults_[operation];
  if (faults.empty()) return;
  const Failure failure(faults.front());
  faults.pop_front();
  throw failure;
}

}  // namespace dravenna
