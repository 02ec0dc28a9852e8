#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/text_files.h"
#include "platform/text_streams.h"
#include "text/code_page.h"

namespace dravenna {

// Whether a script whose bytes look like UTF-8 is read as such.
enum class Utf8Scripts { AsAllOthers, Recognised };

// The code page that a program's text files are read and written in: that of the script which was opened last. A script
// keeps its page when it is opened again, also by another spelling of its path; another one has the usual page, or
// UTF-8.
class ScriptPage {
 public:
  using Source = std::function<std::unique_ptr<ByteSource>(std::u16string_view path)>;  // throws Failure

  ScriptPage(CodePagePtr usual, Utf8Scripts utf8, Source open)
      : usual_(std::move(usual)), utf8_(utf8), open_(std::move(open)), page_(usual_) {}

  const CodePagePtr& page() const { return page_; }
  // Reads the script for it, at the first call behind take().
  PageInUse inUse() const;
  void readNextIn(int number);

  // A script is to be read: takes its page. Reads it for that where its bytes decide.
  void take(std::u16string_view path);

 private:
  bool looksUtf8() const;

  CodePagePtr usual_;
  Utf8Scripts utf8_;
  Source open_;
  CodePagePtr page_;
  CodePagePtr next_;  // the user's wish; null for none
  std::u16string path_;
  mutable std::optional<bool> looksUtf8_;
};

}  // namespace dravenna
