#include "tool/run/console.h"

#include <fmt/core.h>

#include "platform/system.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"

namespace dravenna {

namespace {

constexpr std::size_t kWriteFrom = std::size_t{256} * 1024;
constexpr auto kBarInterval = std::chrono::milliseconds(80);

bool dumbTerminal() {
  const std::string terminal = environmentVariable("TERM");
  return terminal.empty() || terminal == "dumb";
}

}  // namespace

void Console::setColor(ColorUse use) {
  colors_ = use == ColorUse::Always ||
            (use == ColorUse::Auto && errorIsTerminal() && !dumbTerminal() && environmentVariable("NO_COLOR").empty());
}

void Console::line(const char* color, std::string_view word, std::string_view text) {
  endProgress();
  std::string out = "dravenna-lxf: ";
  if (!word.empty()) out += colors_ ? fmt::format("\x1b[{}m{}:\x1b[0m ", color, word) : fmt::format("{}: ", word);
  writeStandardError(out.append(text).append("\n"));
}

void Console::error(std::string_view text) {
  fail();
  line("1;31", "error", text);
}

void Console::warning(std::string_view text) { line("1;33", "warning", text); }

void Console::note(std::string_view text) {
  if (!quiet) line("", "", text);
}

void Console::progress(std::size_t done, std::size_t all) {
  static const bool possible = errorIsTerminal() && !dumbTerminal();
  if (quiet || !possible || all == 0) return;
  const auto now = std::chrono::steady_clock::now();
  if (!barShown_ && barDrawn_ == std::chrono::steady_clock::time_point{}) barDrawn_ = now;
  if (now - barDrawn_ < kBarInterval) return;
  barDrawn_ = now;
  barShown_ = true;
  const std::string count = fmt::format(" {}/{} ", done, all);
  const int room = errorColumns() - static_cast<int>(count.size()) - 8;
  const auto width = static_cast<std::size_t>(room > 60 ? 60 : room < 4 ? 4 : room);
  const std::size_t full = width * done / all;
  writeStandardError(
      fmt::format("\r[{:#>{}}{:->{}}]{}{:3}%\x1b[K", "", full, "", width - full, count, 100 * done / all));
}

void Console::endProgress() {
  if (barShown_) writeStandardError("\r\x1b[K");
  barShown_ = false;
}

Output::Output(Outputs& outputs, std::string path, bool force)
    : outputs_(outputs), path_(std::move(path)), force_(force) {
  if (!toStandardOutput()) outputs_.mayWrite(path_, {}, Outputs::Kind::Report, force_);
}

bool Output::flushSome() {
  if (!toStandardOutput() || buffer_.size() < kWriteFrom) return !readerGone_;
  if (!readerGone_) readerGone_ = !writeStandardOutput(buffer_);
  buffer_.clear();
  return !readerGone_;
}

bool Output::close() {
  if (!toStandardOutput()) {
    outputs_.write(path_, buffer_, Outputs::Kind::Report, force_);
  } else if (!readerGone_) {
    readerGone_ = !writeStandardOutput(buffer_);
  }
  return !readerGone_;
}

}  // namespace dravenna
