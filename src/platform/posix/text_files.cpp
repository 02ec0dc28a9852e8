#include "platform/posix/text_files.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/file_streams.h"
#include "platform/posix/files.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, Utf8Scripts utf8) {
  return posix::makeTextFiles(std::move(codePage), posix::realSystemCalls(), utf8);
}

namespace posix {

namespace {

class PosixTextFiles : public TextFiles {
 public:
  PosixTextFiles(CodePagePtr codePage, SystemCalls& calls, Utf8Scripts utf8)
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
    const std::string bytes = pathBytes(path);
    std::unique_ptr<ByteSink> sink;
    if (writing == Writing::Replace) {
      sink = std::make_unique<ReplacingSink>(
          std::make_unique<posix::FileReplacement>(calls_, bytes, posix::FileReplacement::Options{}));
    } else {
      refuseReadOnly(bytes);
      sink =
          std::make_unique<InPlaceSink<OpenFile>>(OpenFile(calls_, bytes, O_WRONLY | O_CREAT | O_TRUNC, 0666, bytes));
    }
    return makeTextWriter(scriptPage_.page(), writing, std::move(sink));
  }

  PageInUse page() const override { return scriptPage_.inUse(); }
  void readNextIn(int codePage) override { scriptPage_.readNextIn(codePage); }

  bool fileExists(std::u16string_view path) override {
    const std::string bytes = toUtf8(path);
    struct stat status {};
    return bytes.find('\0') == std::string::npos && calls_.stat(bytes.c_str(), status) == 0 && !S_ISDIR(status.st_mode);
  }

 private:
  std::unique_ptr<ByteSource> sourceOf(std::u16string_view path) {
    OpenFile file = openForReading(calls_, pathBytes(path));
    const auto size = static_cast<std::size_t>(file.status().st_size);
    return std::make_unique<FileSource<OpenFile>>(std::move(file), size);
  }

  // The superuser may write everything: what nobody is meant to write is refused all the same.
  void refuseReadOnly(const std::string& path) {
    struct stat status {};
    if (calls_.stat(path.c_str(), status) == 0 && (status.st_mode & 0222) == 0) throw SystemFailure(EACCES, path);
  }

  ScriptPage scriptPage_;
  SystemCalls& calls_;
};

}  // namespace

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls, Utf8Scripts utf8) {
  return std::make_unique<PosixTextFiles>(std::move(codePage), calls, utf8);
}

}  // namespace posix

}  // namespace dravenna
