#include "tool/check/report.h"

#include <fmt/core.h>

#include "text/ascii.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

template <class Stays>
std::string percentEncoded(std::string_view bytes, Stays&& stays) {
  std::string out;
  for (const char c : bytes) {
    if (stays(c)) {
      out.push_back(c);
    } else {
      out += fmt::format("%{:02X}", static_cast<unsigned char>(c));
    }
  }
  return out;
}

std::string uriOf(std::string_view path) {
  return percentEncoded(path, [](char c) {
    const char folded = lowerAscii(c);
    return (folded >= 'a' && folded <= 'z') || (c >= '0' && c <= '9') ||
           std::string_view("-._~/").find(c) != std::string_view::npos;
  });
}

// Without what would end a command or one of its properties.
std::string gitHubEncoded(std::string_view text, std::string_view ending) {
  return percentEncoded(text, [&](char c) { return ending.find(c) == std::string_view::npos; });
}

}  // namespace

FindingReport::FindingReport(ReportFormat format, std::string& out) : format_(format), out_(out) {
  if (format != ReportFormat::Sarif) return;
  out_ +=
      "{\"$schema\":\"https://json.schemastore.org/sarif-2.1.0.json\",\"version\":\"2.1.0\",\"runs\":[{\"tool\":{"
      "\"driver\":{\"name\":\"dravenna-lxf\",\"version\":\"" DRAVENNA_VERSION "\",\"rules\":[";
  for (const FindingKind& kind : findingKinds()) {
    out_ += fmt::format(
        "{}\n{{\"id\":\"{}\",\"shortDescription\":{{\"text\":{}}},\"defaultConfiguration\":{{\"level\":\"{}\"}}}}",
        first_ ? "" : ",", kind.name, jsonString(kind.about), nameOf(kind.severity));
    first_ = false;
  }
  out_ += "]}},\"columnKind\":\"unicodeCodePoints\",\"results\":[";
  first_ = true;
}

void FindingReport::add(const std::string& path, const Finding& finding) {
  const Severity severity = severityOf(finding.kind);
  const auto& [line, column, hash] = finding.at;
  switch (format_) {
    case ReportFormat::Lines:
      out_ += fmt::format("{}:{}:{}: {}: {}\n", shownName(path), line, column, finding.kind, finding.text);
      break;
    case ReportFormat::Json:
      out_ += fmt::format("{{\"file\":{},\"line\":{},\"column\":{},\"kind\":\"{}\",\"text\":{}}}\n", jsonString(path),
                          line, column, finding.kind, jsonString(finding.text));
      break;
    case ReportFormat::Sarif:
      out_ += fmt::format(
          "{}\n{{\"ruleId\":\"{}\",\"level\":\"{}\",\"message\":{{\"text\":{}}},\"locations\":[{{"
          "\"physicalLocation\":{{\"artifactLocation\":{{\"uri\":\"{}\"}},\"region\":{{\"startLine\":{},"
          "\"startColumn\":{}}}}}}}],\"partialFingerprints\":{{\"line/v1\":\"{:016x}\"}}}}",
          first_ ? "" : ",", finding.kind, nameOf(severity), jsonString(finding.text), uriOf(path), line, column, hash);
      break;
    case ReportFormat::GitHub:
      out_ += fmt::format("::{} file={},line={},col={},title={}::{}\n",
                          severity == Severity::Note ? "notice" : nameOf(severity), gitHubEncoded(path, "%\r\n:,"),
                          line, column, finding.kind, gitHubEncoded(finding.text, "%\r\n"));
      break;
  }
  first_ = false;
}

void FindingReport::end() {
  if (format_ == ReportFormat::Sarif) out_ += "]}]}\n";
}

}  // namespace dravenna
