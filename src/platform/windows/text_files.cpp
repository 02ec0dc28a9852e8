#include "platform/text_files.h"

#include <utility>

#include "platform/file_streams.h"
#include "platform/system.h"
#include "platform/windows/files.h"

namespace dravenna {

namespace {

using windows::OpenFile;

class WindowsTextFiles : public TextFiles {
 public:
  explicit WindowsTextFiles(CodePagePtr codePage) : codePage_(std::move(codePage)) {}

  std::unique_ptr<TextReader> openTextFile(std::u16string_view path) override {
    OpenFile file = windows::openForReading(path);
    const std::size_t size = ::GetFileType(file.handle()) == FILE_TYPE_DISK ? file.size() : 0;
    return makeTextReader(codePage_, std::make_unique<FileSource<OpenFile>>(std::move(file), size));
  }

  std::unique_ptr<TextWriter> createTextFile(std::u16string_view path, Writing writing) override {
    std::unique_ptr<ByteSink> sink;
    if (writing == Writing::Replace) {
      sink = std::make_unique<ReplacingSink>(std::make_unique<windows::FileReplacement>(path));
    } else {
      sink = std::make_unique<InPlaceSink<OpenFile>>(windows::openForWriting(path));
    }
    return makeTextWriter(codePage_, writing, std::move(sink));
  }

  bool fileExists(std::u16string_view path) override {
    try {
      const DWORD attributes = windows::attributesOf(windows::extendedPath(path));
      return attributes != INVALID_FILE_ATTRIBUTES && !windows::isFolder(attributes);
    } catch (const Failure&) {
      return false;
    }
  }

 private:
  CodePagePtr codePage_;
};

}  // namespace

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage) {
  return std::make_unique<WindowsTextFiles>(std::move(codePage));
}

}  // namespace dravenna
