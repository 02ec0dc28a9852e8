#include "tool/check/baseline.h"

#include <fmt/core.h>

#include <algorithm>
#include <filesystem>

#include "platform/failure.h"
#include "text/text.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr std::string_view kHead = "# Known findings of dravenna-lxf check; --write-baseline writes them anew.";

}  // namespace

std::string Baseline::lineOf(const std::string& path, const Finding& finding) {
  std::string line;
  appendEscapedName(std::filesystem::path(path).lexically_normal().generic_string(), line);
  return line + fmt::format("\t{}\t{:016x}", finding.kind, finding.at.lineHash);
}

void Baseline::read(std::string_view text, const std::string& name) {
  forEachLine(text, [&](const ScriptLine& line) {
    if (line.text.empty() || line.text.front() == '#') return;
    if (std::count(line.text.begin(), line.text.end(), '\t') != 2) {
      throw Failure(fromUtf8(fmt::format("{}:{}: no known finding", name, line.number + 1)));
    }
    ++known_[std::string(line.text)];
  });
}

std::string Baseline::text() const {
  std::string text(kHead);
  text.push_back('\n');
  for (const auto& [line, count] : known_) {
    for (std::size_t i = 0; i < count; ++i) text.append(line).push_back('\n');
  }
  return text;
}

bool Baseline::take(const std::string& path, const Finding& finding) {
  const auto found = known_.find(lineOf(path, finding));
  if (found == known_.end() || found->second == 0) return false;
  --found->second;
  return true;
}

std::size_t Baseline::left() const {
  std::size_t left = 0;
  for (const auto& [line, count] : known_) left += count;
  return left;
}

}  // namespace dravenna
