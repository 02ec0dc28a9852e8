#include <utility>

#include "platform/file_streams.h"
#include "platform/system.h"
#include "platform/windows/files.h"

namespace dravenna {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, Utf8Scripts utf8) {
  return windows::makeTextFiles(std::move(codePage), windows::realSystemCalls(), utf8);
}

namespace windows {

namespace {

class WindowsTextFiles : public TextFiles {
 public:
  WindowsTextFiles(CodePagePtr codePage, SystemCalls& calls, Utf8Scripts utf8)
      : scriptPage_(std::move(codePage), utf8, [this](std::u16string_view path) { return sourceOf(path); }),
        calls_(calls) {}

  std::unique_ptr<TextReader> OpenTextFile(std::u16string_view path) override {
    return makeTextReader(scriptPage_.page(), sourceOf(path));
  }

  std::unique_ptr<TextReader> openScript(std::u16string_view path) override {
    scriptPage_.take(path);
    return OpenTextFile(path);
  }

  std::unique_ptr<TextWriter> CreateTextFile(std::u16string_view path, Writing writing) override {
    std::unique_ptr<ByteSink> sink;
    if (writing == Writing::Replace) {
      sink = std::make_unique<ReplacingSink>(std::make_unique<windows::FileReplacement>(calls_, path));
    } else {
      sink = std::make_unique<InPlaceSink<OpenFile>>(openForWriting(calls_, path));
    }
    return makeTextWriter(scriptPage_.page(), writing, std::move(sink));
  }

  PageInUse page() const override { return scriptPage_.inUse(); }
  void readNextIn(int codePage) override { scriptPage_.readNextIn(codePage); }

  bool fileExists(std::u16string_view path) override {
    try {
      const DWORD attributes = attributesOf(calls_, extendedPath(path));
      return attributes != INVALID_FILE_ATTRIBUTES && !isFolder(attributes);
    } catch (const Failure&) {
      return false;
    }
  }

 private:
  std::unique_ptr<ByteSource> sourceOf(std::u16string_view path) {
    OpenFile file = openForReading(calls_, path);
    const std::size_t size = ::GetFileType(file.handle()) == FILE_TYPE_DISK ? file.size() : 0;
    return std::make_unique<FileSource<OpenFile>>(std::move(file), size);
  }

  ScriptPage scriptPage_;
  SystemCalls& calls_;
};

}  // namespace

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls, Utf8Scripts utf8) {
  return std::make_unique<WindowsTextFiles>(std::move(codePage), calls, utf8);
}

}  // namespace windows

}  // namespace dravenna
