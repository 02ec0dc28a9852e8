#include "app/disk_watch.h"

#include <functional>
#include <utility>

#include "platform/failure.h"

namespace dravenna {

class DiskWatch::Writer : public TextWriter {
 public:
  Writer(DiskWatch& watch, std::u16string_view path, std::unique_ptr<TextWriter> file)
      : watch_(watch), path_(path), file_(std::move(file)) {}

  void Write(std::u16string_view text) override { file_->Write(text); }
  void WriteLine(std::u16string_view text) override { file_->WriteLine(text); }
  void Close() override {
    file_->Close();
    watch_.note(path_, fileState(path_));
  }

 private:
  DiskWatch& watch_;
  std::u16string path_;
  std::unique_ptr<TextWriter> file_;
};

void DiskWatch::note(const std::u16string& path, const std::optional<FileState>& state) {
  known_[path] = {state, std::nullopt, std::nullopt};
  ++uses_;
}

std::unique_ptr<TextReader> DiskWatch::OpenTextFile(std::u16string_view path) {
  note(std::u16string(path), fileState(path));  // the older state: a change while it is read is one
  return files_.OpenTextFile(path);
}

std::unique_ptr<TextReader> DiskWatch::openScript(std::u16string_view path) {
  note(std::u16string(path), fileState(path));
  return files_.openScript(path);
}

std::unique_ptr<TextWriter> DiskWatch::CreateTextFile(std::u16string_view path, Writing writing) {
  return std::make_unique<Writer>(*this, path, files_.CreateTextFile(path, writing));
}

void DiskWatch::noteText(const std::u16string& path, std::u16string_view text) {
  const auto known = known_.find(path);
  if (known != known_.end() && !known->second.hash) known->second.hash = std::hash<std::u16string_view>()(text);
}

bool DiskWatch::changed(const std::u16string& path) {
  const auto found = known_.find(path);
  if (found == known_.end()) return false;
  Known& known = found->second;
  const std::optional<FileState> now = fileState(path);
  if (now == known.state) return false;
  if (!now || !known.hash || now == known.another) return true;
  std::u16string text;
  const std::optional<Failure> unreadable = attempt([&] {
    for (const auto file = files_.OpenTextFile(path); !file->AtEndOfStream();) text.append(file->ReadLine()) += u"\r\n";
  });
  const bool same = !unreadable && std::hash<std::u16string_view>()(text) == *known.hash;
  (same ? known.state : known.another) = now;
  return !same;
}

}  // namespace dravenna
