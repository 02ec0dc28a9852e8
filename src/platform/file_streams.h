#pragma once

#include <memory>
#include <utility>

#include "platform/file_replacement.h"
#include "platform/text_streams.h"

// The streams of text files over the open file of a system.
namespace dravenna {

template <class OpenFile>
class FileSource : public ByteSource {
 public:
  FileSource(OpenFile file, std::size_t size) : file_(std::move(file)), size_(size) {}

  std::size_t size() override { return size_; }
  std::size_t read(char* to, std::size_t size) override { return file_.read(to, size); }
  void close() override { file_.close(); }

 private:
  OpenFile file_;
  std::size_t size_;
};

template <class OpenFile>
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
  explicit ReplacingSink(std::unique_ptr<FileReplacement> replacement) : replacement_(std::move(replacement)) {}

  void write(std::string_view bytes) override { replacement_->write(bytes); }
  void close() override {
    replacement_->flush();
    replacement_->place();
  }

 private:
  std::unique_ptr<FileReplacement> replacement_;
};

}  // namespace dravenna
