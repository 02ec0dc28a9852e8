#include "platform/text_files.h"

#include <utility>

#include "platform/system.h"
#include "platform/text_streams.h"
#include "platform/windows/files.h"

namespace dravenna {

namespace {

using windows::FileReplacement;
using windows::OpenFile;

class FileSource : public ByteSource {
 public:
  explicit FileSource(OpenFile file) : file_(std::move(file)) {}

  std::size_t size() override { return ::GetFileType(file_.handle()) == FILE_TYPE_DISK ? file_.size() : 0; }
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
  explicit ReplacingSink(std::u16string_view path) : replacement_(path) {}

  void write(std::string_view bytes) override { replacement_.write(bytes); }
  void close() override {
    replacement_.flush();
    replacement_.place();
  }

 private:
  FileReplacement replacement_;
};

class WindowsTextFiles : public TextFiles {
 public:
  explicit WindowsTextFiles(CodePagePtr codePage) : codePage_(std::move(codePage)) {}

  std::unique_ptr<TextReader> openTextFile(std::u16string_view path) override {
    return makeTextReader(codePage_, std::make_unique<FileSource>(windows::openForReading(path)));
  }

  std::unique_ptr<TextWriter> createTextFile(std::u16string_view path, Writing writing) override {
    std::unique_ptr<ByteSink> sink;
    if (writing == Writing::Replace) {
      sink = std::make_unique<ReplacingSink>(path);
    } else {
      sink = std::make_unique<InPlaceSink>(windows::openForWriting(path));
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
