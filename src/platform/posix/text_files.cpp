#include "platform/posix/text_files.h"

#include <fcntl.h>

#include <cerrno>
#include <utility>

#include "platform/posix/files.h"
#include "platform/system.h"
#include "platform/text_streams.h"
#include "text/text.h"

namespace dravenna {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage) {
  return posix::makeTextFiles(std::move(codePage), posix::realSystemCalls());
}

namespace posix {

namespace {

class FileSource : public ByteSource {
 public:
  explicit FileSource(OpenFile file) : file_(std::move(file)) {}

  std::size_t size() override { return static_cast<std::size_t>(file_.status().st_size); }
  std::size_t read(char* to, std::size_t size) override { return file_.read(to, size); }
  void close() override { file_.close(); }

 private:
  OpenFile file_;
};

class InPlaceSink : public ByteSink {
 public:
  explicit InPlaceSink(OpenFile file) : file_(std::move(file)) {}

  void write(std::string_view bytes) override { file_.writeAll(bytes); }
  void close() override { file_.close(); }

 private:
  OpenFile file_;
};

class ReplacingSink : public ByteSink {
 public:
  ReplacingSink(SystemCalls& calls, const std::string& path) : replacement_(calls, path, {}) {}

  void write(std::string_view bytes) override { replacement_.write(bytes); }
  void close() override {
    replacement_.flush();
    replacement_.place();
  }

 private:
  FileReplacement replacement_;
};

class PosixTextFiles : public TextFiles {
 public:
  PosixTextFiles(CodePagePtr codePage, SystemCalls& calls) : codePage_(std::move(codePage)), calls_(calls) {}

  std::unique_ptr<TextReader> openTextFile(std::u16string_view path) override {
    return makeTextReader(codePage_, std::make_unique<FileSource>(openForReading(calls_, pathBytes(path))));
  }

  std::unique_ptr<TextWriter> createTextFile(std::u16string_view path, Writing writing) override {
    const std::string bytes = pathBytes(path);
    std::unique_ptr<ByteSink> sink;
    if (writing == Writing::Replace) {
      sink = std::make_unique<ReplacingSink>(calls_, bytes);
    } else {
      refuseReadOnly(bytes);
      sink = std::make_unique<InPlaceSink>(OpenFile(calls_, bytes, O_WRONLY | O_CREAT | O_TRUNC, 0666, bytes));
    }
    return makeTextWriter(codePage_, writing, std::move(sink));
  }

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
