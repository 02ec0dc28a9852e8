#include "platform/posix/text_files.h"

#include <fcntl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "platform/posix/files.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage) {
  return posix::makeTextFiles(std::move(codePage), posix::realSystemCalls());
}

namespace posix {

namespace {

constexpr std::size_t kChunk = 65536;  // bytes

// Offset of the first line feed at or behind `from`; the size of the text if there is none. The library's search for a
// byte is the fastest there is; a byte of another character only makes it start again.
std::size_t findLineFeed(std::u16string_view text, std::size_t from) {
  const char* const bytes = reinterpret_cast<const char*>(text.data());
  const std::size_t size = text.size() * sizeof(char16_t);
  std::size_t at = from * sizeof(char16_t);
  while (at < size) {
    const void* const found = std::memchr(bytes + at, '\n', size - at);
    if (found == nullptr) break;
    at = static_cast<std::size_t>(static_cast<const char*>(found) - bytes);
    if (text[at / sizeof(char16_t)] == u'\n') return at / sizeof(char16_t);
    ++at;
  }
  return text.size();
}

class PosixTextReader : public TextReader {
 public:
  PosixTextReader(CodePagePtr codePage, OpenFile file) : codePage_(std::move(codePage)), file_(std::move(file)) {}

  bool atEndOfStream() override {
    while (next_ == text_.size() && !ended_) fill();
    return next_ == text_.size();
  }

  std::u16string_view readLine() override {
    std::size_t searched = 0;  // units behind next_ without a line feed
    for (;;) {
      const std::size_t feed = findLineFeed(text_, next_ + searched);
      if (feed < text_.size()) {
        const std::size_t start = next_;
        next_ = feed + 1;
        const std::size_t end = feed > start && text_[feed - 1] == u'\r' ? feed - 1 : feed;
        return std::u16string_view(text_).substr(start, end - start);
      }
      if (ended_) break;
      searched = text_.size() - next_;
      fill();
    }
    failAtEnd();
    const std::size_t start = next_;
    next_ = text_.size();
    return std::u16string_view(text_).substr(start);
  }

  std::u16string readAll() override {
    while (!ended_) fill();
    failAtEnd();
    text_.erase(0, next_);
    next_ = 0;
    return std::exchange(text_, {});
  }

  void close() override {
    file_.close();
    text_.clear();
    next_ = 0;
    ended_ = true;
  }

 private:
  void failAtEnd() const {
    if (next_ == text_.size()) throw Failure(u"Input past end of file");
  }

  // Reads one chunk and appends its text behind what has not been read of the last one.
  void fill() {
    text_.erase(0, next_);
    next_ = 0;
    const std::size_t count = file_.read(bytes_.data() + carried_, bytes_.size() - carried_);
    ended_ = count == 0;
    const std::string_view bytes(bytes_.data(), carried_ + count);
    carried_ = ended_ ? 0 : codePage_->incompleteTail(bytes);
    codePage_->decode(bytes.substr(0, bytes.size() - carried_), text_);
    std::memmove(bytes_.data(), bytes.data() + bytes.size() - carried_, carried_);
  }

  CodePagePtr codePage_;
  OpenFile file_;
  std::array<char, kChunk> bytes_;
  std::size_t carried_ = 0;  // bytes at the front of bytes_ that wait for the rest of their character
  std::u16string text_;
  std::size_t next_ = 0;  // what stands before it has been read
  bool ended_ = false;
};

// Encodes into a buffer that a sink empties.
class PosixTextWriter : public TextWriter {
 public:
  explicit PosixTextWriter(CodePagePtr codePage) : codePage_(std::move(codePage)) {}

  void write(std::u16string_view text) override {
    const std::size_t size = buffer_.size();
    const std::size_t failed = codePage_->encode(text, buffer_);
    if (failed != std::u16string_view::npos) {
      buffer_.resize(size);
      abandon();
      failAt(text, failed);
    }
    line_ += static_cast<std::size_t>(std::count(text.begin(), text.end(), u'\n'));
    if (buffer_.size() >= kChunk) flush();
  }

  void writeLine(std::u16string_view text) override {
    write(text);
    buffer_ += "\r\n";
    ++line_;
  }

 protected:
  virtual void writeBytes(std::string_view bytes) = 0;
  virtual void abandon() {}  // a text could not be encoded

  void flush() {
    // What has failed is not tried again: a part of it may have been written.
    std::string bytes;
    bytes.swap(buffer_);
    writeBytes(bytes);
    bytes.clear();
    buffer_.swap(bytes);
  }

 private:
  [[noreturn]] void failAt(std::u16string_view text, std::size_t at) const {
    std::uint32_t code = text[at];
    std::u16string_view character = text.substr(at, 1);
    if (isHighSurrogate(text[at]) && at + 1 < text.size() && isLowSurrogate(text[at + 1])) {
      character = text.substr(at, 2);
      code = 0x10000 + ((text[at] - 0xD800u) << 10) + (text[at + 1] - 0xDC00u);
    }
    char hex[16];
    std::snprintf(hex, sizeof hex, "%04X", code);
    const std::u16string_view before = text.substr(0, at);
    const auto line = static_cast<std::ptrdiff_t>(line_) + std::count(before.begin(), before.end(), u'\n');
    const std::u16string page =
        codePage_->isUtf8() ? std::u16string(u"UTF-8") : u"code page " + decimal(codePage_->number());
    throw Failure(u"The character '" + std::u16string(character) + u"' (U+" + fromAscii(hex) + u") in line " +
                  decimal(line) + u" cannot be written in " + page);
  }

  CodePagePtr codePage_;
  std::string buffer_;
  std::size_t line_ = 1;
};

class InPlaceWriter : public PosixTextWriter {
 public:
  InPlaceWriter(CodePagePtr codePage, OpenFile file) : PosixTextWriter(std::move(codePage)), file_(std::move(file)) {}

  ~InPlaceWriter() override {
    try {
      if (file_.isOpen()) flush();
    } catch (const std::exception&) {
      // Whoever wants to know calls close().
    }
  }

  void close() override {
    if (!file_.isOpen()) return;
    flush();
    file_.close();
  }

 private:
  void writeBytes(std::string_view bytes) override { file_.writeAll(bytes); }

  OpenFile file_;
};

class ReplaceWriter : public PosixTextWriter {
 public:
  ReplaceWriter(CodePagePtr codePage, SystemCalls& calls, const std::string& path)
      : PosixTextWriter(std::move(codePage)), replacement_(std::in_place, calls, path, FileReplacement::Options{}) {}

  void close() override {
    if (closed_) return;
    flush();
    try {
      replacement_->commit();
    } catch (...) {
      abandon();
      throw;
    }
    closed_ = true;
    replacement_.reset();
  }

 private:
  void writeBytes(std::string_view bytes) override {
    // After a failure the new text is not whole: it must not replace anything.
    if (!replacement_) throw Failure(u"The file is not open for writing");
    try {
      replacement_->write(bytes);
    } catch (...) {
      abandon();
      throw;
    }
  }

  void abandon() override { replacement_.reset(); }

  std::optional<FileReplacement> replacement_;
  bool closed_ = false;
};

class PosixTextFiles : public TextFiles {
 public:
  PosixTextFiles(CodePagePtr codePage, SystemCalls& calls) : codePage_(std::move(codePage)), calls_(calls) {}

  std::unique_ptr<TextReader> openTextFile(std::u16string_view path) override {
    return std::make_unique<PosixTextReader>(codePage_, openForReading(calls_, pathBytes(path)));
  }

  std::unique_ptr<TextWriter> createTextFile(std::u16string_view path, Writing writing) override {
    const std::string bytes = pathBytes(path);
    if (writing == Writing::Replace) return std::make_unique<ReplaceWriter>(codePage_, calls_, bytes);
    return std::make_unique<InPlaceWriter>(codePage_,
                                           OpenFile(calls_, bytes, O_WRONLY | O_CREAT | O_TRUNC, 0666, bytes));
  }

  bool fileExists(std::u16string_view path) override {
    const std::string bytes = toUtf8(path);
    struct stat status {};
    return bytes.find('\0') == std::string::npos && calls_.stat(bytes.c_str(), status) == 0 && !S_ISDIR(status.st_mode);
  }

 private:
  CodePagePtr codePage_;
  SystemCalls& calls_;
};

}  // namespace

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls) {
  return std::make_unique<PosixTextFiles>(std::move(codePage), calls);
}

}  // namespace posix

}  // namespace dravenna
