#include "tool/run/notices.h"

#include <fmt/core.h>

namespace dravenna {

namespace {

std::string placeOf(const std::string& file, std::size_t line) {
  if (file.empty()) return {};
  return line == 0 ? shownName(file) + ": " : fmt::format("{}:{}: ", shownName(file), line);
}

std::string textOf(const Notice& notice) {
  const std::string fate = *notice.fate == '\0' ? std::string() : fmt::format("{}: ", notice.fate);
  return placeOf(notice.file, notice.line) + fate + placeOf(notice.from, notice.fromLine) + notice.why;
}

void appendJson(const Notice& notice, std::string& out) {
  out += fmt::format("{{\"file\":{},\"line\":{},\"fate\":\"{}\",\"from\":{},\"fromLine\":{},\"why\":{}}}\n",
                     jsonString(notice.file), notice.line, notice.fate, jsonString(notice.from), notice.fromLine,
                     jsonString(notice.why));
}

}  // namespace

void ReportOptions::addTo(Verb verb) {
  verb.text("--report", file, "FILE", "File for all warnings of single texts; standard error shows the first ones");
  verb.flag("--json", json, "The report as JSON lines; on standard output without --report");
}

Notices::Notices(Session& session, const ReportOptions& options) : session_(session), json_(options.json) {
  if (json_ || !options.file.empty()) report_.emplace(*session.outputs, options.file);
}

void Notices::error(const Notice& notice) {
  session_.console.error(textOf(notice));
  report(notice);
}

void Notices::warn(const Notice& notice, std::size_t most) {
  if (most == kAll || ++count_ <= most) {
    session_.console.warning(textOf(notice));
  } else {
    ++hidden_;
  }
  report(notice);
}

void Notices::report(const Notice& notice) {
  if (!report_) return;
  json_ ? appendJson(notice, report_->buffer()) : static_cast<void>(report_->buffer() += textOf(notice) + "\n");
  report_->flushSome();
}

void Notices::endGroup(const char* what) {
  const char* const where = report_ ? "" : "; --report FILE has them all";
  if (hidden_ > 0) session_.console.warning(fmt::format("and {} more {}{}", hidden_, what, where));
  count_ = hidden_ = 0;
}

void Notices::close() {
  if (report_ && !report_->close()) session_.console.fail();
}

}  // namespace dravenna
