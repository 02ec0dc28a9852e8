#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "platform/text_files.h"
#include "text/code_page.h"

// The lines of a text file and its encoding, over bytes that a system reads and writes. Every operation may throw
// Failure.
namespace dravenna {

class ByteSource {
 public:
  virtual ~ByteSource() = default;                           // closes without a failure
  virtual std::size_t size() = 0;                            // bytes of the file; 0 if it is not known
  virtual std::size_t read(char* to, std::size_t size) = 0;  // 0 at the end
  virtual void close() = 0;
};

class ByteSink {
 public:
  virtual ~ByteSink() = default;  // without close(): as TextWriter tells
  virtual void write(std::string_view bytes) = 0;
  virtual void close() = 0;  // once
};

std::unique_ptr<TextReader> makeTextReader(CodePagePtr codePage, std::unique_ptr<ByteSource> source);

// With Writing::Replace the sink is given up at the first failure, for its text is not whole any more; with InPlace
// what could be encoded is written, by the destructor at the latest.
std::unique_ptr<TextWriter> makeTextWriter(CodePagePtr codePage, Writing writing, std::unique_ptr<ByteSink> sink);

}  // namespace dravenna
