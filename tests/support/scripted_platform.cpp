#include "support/scripted_platform.h"

#include <algorithm>

namespace dravenna {

namespace {

// Passes all on to the one stream that it has.
class FailingStream : public TextReader, public TextWriter {
 public:
  FailingStream(FailingTextFiles& files, std::unique_ptr<TextReader> reader, std::unique_ptr<TextWriter> writer)
      : files_(files), reader_(std::move(reader)), writer_(std::move(writer)) {}

  bool AtEndOfStream() override { return reader_->AtEndOfStream(); }
  std::u16string_view ReadLine() override { return files_.check(FileOperation::Read), reader_->ReadLine(); }
  std::u16string ReadAll() override { return files_.check(FileOperation::Read), reader_->ReadAll(); }
  void Write(std::u16string_view text) override { files_.check(FileOperation::Write), writer_->Write(text); }
  void WriteLine(std::u16string_view text) override { files_.check(FileOperation::Write), writer_->WriteLine(text); }
  void Close() override {
    files_.check(FileOperation::Close);
    reader_ ? reader_->Close() : writer_->Close();
  }

 private:
  FailingTextFiles& files_;
  std::unique_ptr<TextReader> reader_;
  std::unique_ptr<TextWriter> writer_;
};

}  // namespace

Answer Stage::answerFor(int flags) {
  static const std::map<int, std::vector<Answer>> kButtons = {{0, {Answer::Ok}},
                                                              {1, {Answer::Ok, Answer::Cancel}},
                                                              {3, {Answer::Yes, Answer::No, Answer::Cancel}},
                                                              {4, {Answer::Yes, Answer::No}}};
  const std::vector<Answer>& buttons = kButtons.at(flags & 7);
  if (answers.empty() || std::find(buttons.begin(), buttons.end(), answers.front()) == buttons.end()) {
    return buttons[static_cast<std::size_t>(flags / 256)];
  }
  const Answer answer = answers.front();
  answers.pop_front();
  return answer;
}

std::optional<std::u16string> Stage::nextPick() {
  if (picks.empty()) return std::nullopt;
  std::optional<std::u16string> pick = std::move(picks.front());
  picks.pop_front();
  return pick;
}

std::unique_ptr<TextReader> FailingTextFiles::OpenTextFile(std::u16string_view path) {
  return reading(files_->OpenTextFile(path));
}

std::unique_ptr<TextReader> FailingTextFiles::openScript(std::u16string_view path) {
  return reading(files_->openScript(path));
}

// Where nothing is to fail, nothing stands in between: benchmarks run on this as well.
std::unique_ptr<TextReader> FailingTextFiles::reading(std::unique_ptr<TextReader> stream) {
  if (faults_.empty()) return stream;
  return std::make_unique<FailingStream>(*this, std::move(stream), nullptr);
}

std::unique_ptr<TextWriter> FailingTextFiles::CreateTextFile(std::u16string_view path, Writing writing) {
  check(FileOperation::Create);
  std::unique_ptr<TextWriter> stream = files_->CreateTextFile(path, writing);
  if (faults_.empty()) return stream;
  return std::make_unique<FailingStream>(*this, nullptr, std::move(stream));
}

void FailingTextFiles::check(FileOperation operation) {
  const auto planned = faults_.find(operation);
  if (planned == faults_.end()) return;
  const std::u16string fault = planned->second.front();
  planned->second.pop_front();
  if (planned->second.empty()) faults_.erase(planned);
  throw Failure(fault);
}

}  // namespace dravenna
