#include "platform/text_streams.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include "platform/failure.h"
#include "text/text.h"

namespace dravenna {

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

class DecodingReader : public TextReader {
 public:
  DecodingReader(CodePagePtr codePage, std::unique_ptr<ByteSource> source)
      : codePage_(std::move(codePage)), source_(std::move(source)), size_(source_->size()) {}

  std::size_t sizeHint() const override { return size_; }

  bool AtEndOfStream() override {
    while (next_ == text_.size() && !ended_) fill();
    return next_ == text_.size();
  }

  std::u16string_view ReadLine() override {
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

  std::u16string ReadAll() override {
    while (!ended_) fill();
    failAtEnd();
    text_.erase(0, next_);
    next_ = 0;
    return std::exchange(text_, {});
  }

  void Close() override {
    source_->close();
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
    const std::size_t count = source_->read(bytes_.data() + carried_, bytes_.size() - carried_);
    ended_ = count == 0;
    const std::string_view bytes(bytes_.data(), carried_ + count);
    carried_ = ended_ ? 0 : codePage_->incompleteTail(bytes);
    codePage_->decode(bytes.substr(0, bytes.size() - carried_), text_);
    std::memmove(bytes_.data(), bytes.data() + bytes.size() - carried_, carried_);
  }

  CodePagePtr codePage_;
  std::unique_ptr<ByteSource> source_;
  std::size_t size_;
  std::array<char, kChunk> bytes_;
  std::size_t carried_ = 0;  // bytes at the front of bytes_ that wait for the rest of their character
  std::u16string text_;
  std::size_t next_ = 0;  // what stands before it has been read
  bool ended_ = false;
};

class EncodingWriter : public TextWriter {
 public:
  EncodingWriter(CodePagePtr codePage, Writing writing, std::unique_ptr<ByteSink> sink)
      : codePage_(std::move(codePage)), writing_(writing), sink_(std::move(sink)) {}

  ~EncodingWriter() override {
    if (writing_ == Writing::Replace || closed_) return;
    try {
      flush();
    } catch (const std::exception&) {
      // Whoever wants to know calls Close().
    }
  }

  void Write(std::u16string_view text) override {
    const std::size_t size = buffer_.size();
    const std::size_t failed = codePage_->encode(text, buffer_);
    if (failed != std::u16string_view::npos) {
      buffer_.resize(size);
      giveUp();
      failAt(text, failed);
    }
    line_ += static_cast<std::size_t>(std::count(text.begin(), text.end(), u'\n'));
    if (buffer_.size() >= kChunk) flush();
  }

  void WriteLine(std::u16string_view text) override {
    Write(text);
    buffer_ += "\r\n";
    ++line_;
  }

  void Close() override {
    if (closed_) return;
    flush();
    guarded([&] { sink_->close(); });
    closed_ = true;
    sink_.reset();
  }

 private:
  void flush() {
    if (!sink_) throw Failure(u"The file is not open for writing");
    // What has failed is not tried again: a part of it may have been written.
    std::string bytes;
    bytes.swap(buffer_);
    guarded([&] { sink_->write(bytes); });
    bytes.clear();
    buffer_.swap(bytes);
  }

  template <typename Call>
  void guarded(Call call) {
    try {
      call();
    } catch (...) {
      giveUp();
      throw;
    }
  }

  void giveUp() {
    if (writing_ == Writing::Replace) sink_.reset();
  }

  [[noreturn]] void failAt(std::u16string_view text, std::size_t at) const {
    const auto [code, length] = readUtf16(text, at);
    char hex[16];
    std::snprintf(hex, sizeof hex, "%04X", static_cast<unsigned>(code));
    const std::u16string_view before = text.substr(0, at);
    const auto line = static_cast<std::ptrdiff_t>(line_) + std::count(before.begin(), before.end(), u'\n');
    const std::u16string page =
        codePage_->isUtf8() ? std::u16string(u"UTF-8") : u"code page " + decimal(codePage_->number());
    throw Failure(u"The character '" + std::u16string(text.substr(at, length)) + u"' (U+" + fromAscii(hex) +
                  u") in line " + decimal(line) + u" cannot be written in " + page);
  }

  CodePagePtr codePage_;
  Writing writing_;
  std::unique_ptr<ByteSink> sink_;
  std::string buffer_;
  std::size_t line_ = 1;
  bool closed_ = false;
};

}  // namespace

std::unique_ptr<TextReader> makeTextReader(CodePagePtr codePage, std::unique_ptr<ByteSource> source) {
  return std::make_unique<DecodingReader>(std::move(codePage), std::move(source));
}

std::unique_ptr<TextWriter> makeTextWriter(CodePagePtr codePage, Writing writing, std::unique_ptr<ByteSink> sink) {
  return std::make_unique<EncodingWriter>(std::move(codePage), writing, std::move(sink));
}

}  // namespace dravenna
