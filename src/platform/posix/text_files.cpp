#include "platform/posix/text_files.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/file_streams.h"
#include "platform/posix/files.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage) {
  return posix::makeTextFiles(std::move(codePage), posix::realSystemCalls());
}

namespace posix {

namespace {

class PosixTextFiles : public TextFiles {
 public:
  PosixTextFiles(CodePagePtr codePage, SystemCalls& calls) : codePage_(std::move(codePage)), calls_(calls) {}

  std::unique_ptr<TextReader> OpenTextFile(std::u16string_view path) override {
    OpenFile file = openForReading(calls_, pathBytes(path));
    const auto size = static_cast<std::size_t>(file.status().st_size);
    return makeTextReader(codePage_, std::make_unique<FileSource<OpenFile>>(std::move(file), size));
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
    return makeTextWriter(codePage_, writing, std::move(sink));
  }

  int codePage() const override { return codePage_->number(); }

  bool fileExists(std::u16string_view path) override {
    const std::string bytes = toUtf8(path);
    struct stat status {};
    return bytes.find('\0') == std::string::npos && calls_.stat(bytes.c_str(), status) == 0 && !S_ISDIR(status.st_mode);
  }

 private:
  // The superuser may write everything: what nobody is meant to write is refused all the same.
  void refuseReadOnly(const std::string& path) {
    struct stat status {};
    if (calls_.stat(path.c_str(), status) == 0 && (status.st_mode & 0222) == 0) throw SystemFailure(EACCES, path);
  }

  CodePagePtr codePage_;
  SystemCalls& calls_;
};

}  // namespace

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls) {
  return std::make_unique<PosixTextFiles>(std::move(codePage), calls);
}

}  // namespace posix

}  // namespace dravenna
