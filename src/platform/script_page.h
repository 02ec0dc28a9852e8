#pragma once

#include <string>
#include <string_view>

#include "platform/text_files.h"
#include "platform/text_streams.h"
#include "text/code_page.h"

namespace dravenna {

// Whether a script whose bytes look like UTF-8 is read as such.
enum class Utf8Scripts { AsAllOthers, Recognised };

// The code page that a program's text files are read and written in: that of the script which was read last. A script
// keeps its page when it is read again, also by another spelling of its path; another one has the usual page, or UTF-8.
class ScriptPage {
 public:
  ScriptPage(CodePagePtr usual, Utf8Scripts utf8) : usual_(std::move(usual)), utf8_(utf8), page_(usual_) {}

  const CodePagePtr& page() const { return page_; }
  PageInUse inUse() const { return {page_->number(), looksUtf8_}; }
  void readNextIn(int number);

  // For the reader of a script (see makeTextReader); outlived by this.
  PageChooser chooserFor(std::u16string_view path);

 private:
  CodePagePtr usual_;
  Utf8Scripts utf8_;
  CodePagePtr page_;
  CodePagePtr next_;  // the user's wish; null for none
  std::u16string path_;
  bool looksUtf8_ = false;
};

}  // namespace dravenna
