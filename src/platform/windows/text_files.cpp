#include <utility>

#include "platform/file_streams.h"
#include "platform/system.h"
#include "platform/windows/files.h"

namespace dravenna {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage) {
  return windows::makeTextFiles(std::move(codePage), windows::realSystemCalls());
}

namespace windows {

namespace {

class WindowsTextFiles : public TextFiles {
 public:
  WindowsTextFiles(CodePagePtr codePage, SystemCalls& calls) : codePage_(std::move(codePage)), calls_(calls) {}

  std::unique_ptr<TextReader> OpenTextFile(std::u16string_view path) override {
    OpenFile file = openForReading(calls_, path);
    const std::size_t size = ::GetFileType(file.handle()) == FILE_TYPE_DISK ? file.size() : 0;
    return makeTextReader(codePage_, std::make_unique<FileSource<OpenFile>>(std::move(file), size));
  }

  std::unique_ptr<TextWriter> CreateTextFile(std::u16string_view path, Writing writing) override {
    std::unique_ptr<ByteSink> sink;
    if (writing == Writing::Replace) {
      sink = std::make_unique<ReplacingSink>(std::make_unique<windows::FileReplacement>(calls_, path));
    } else {
      sink = std::make_unique<InPlaceSink<OpenFile>>(openForWriting(calls_, path));
    }
    return makeTextWriter(codePage_, writing, std::move(sink));
  }

  int codePage() const override { return codePage_->number(); }

  bool fileExists(std::u16string_view path) override {
    try {
      const DWORD attributes = attributesOf(calls_, extendedPath(path));
      return attributes != INVALID_FILE_ATTRIBUTES && !isFolder(attributes);
    } catch (const Failure&) {
      return false;
    }
  }

 private:
  CodePagePtr codePage_;
  SystemCalls& calls_;
};

}  // namespace

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls) {
  return std::make_unique<WindowsTextFiles>(std::move(codePage), calls);
}

}  // namespace windows

}  // namespace dravenna
