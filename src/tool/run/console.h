#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include "tool/run/outputs.h"

namespace dravenna {

enum class ColorUse { Auto, Always, Never };

// What the user hears: messages on standard error, a progress bar there when it is a terminal. One thread at a time.
class Console {
 public:
  bool quiet = false;
  void setColor(ColorUse use);

  void error(std::string_view text);    // fails
  void warning(std::string_view text);  // also when quiet: something is wrong with the input
  void note(std::string_view text);     // summaries; not when quiet

  // The exit status is at least this from now on.
  void fail(int status = 1) { status_ = status > status_ ? status : status_; }
  bool failed() const { return status_ != 0; }
  int status() const { return status_; }

  void progress(std::size_t done, std::size_t all);
  void endProgress();

 private:
  void line(const char* color, std::string_view word, std::string_view text);

  bool colors_ = false;
  int status_ = 0;
  bool barShown_ = false;
  std::chrono::steady_clock::time_point barDrawn_;
};

// A report on standard output or in a file, in large writes. The file is replaced at close().
class Output {
 public:
  // With an empty path or "-" standard output is meant. Throws Failure where a report may not stand (see Outputs).
  Output(Outputs& outputs, std::string path, bool force = false);

  std::string& buffer() { return buffer_; }
  // Writes when enough has gathered; false once nobody reads on. Throws Failure when it cannot be written.
  bool flushSome();
  bool close();  // as above

 private:
  bool toStandardOutput() const { return path_.empty() || path_ == "-"; }

  Outputs& outputs_;
  std::string path_;
  std::string buffer_;
  bool force_;
  bool readerGone_ = false;
};

}  // namespace dravenna
