#include "editing/commit_journal.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

#include "text/text.h"

namespace dravenna {

namespace {

constexpr std::string_view kHead = "dravenna-rescue 1";
constexpr std::size_t kSum = 8;  // digits

std::string sumOf(std::string_view bytes) {
  std::uint32_t sum = 2166136261;
  for (const char byte : bytes) sum = (sum ^ static_cast<unsigned char>(byte)) * 16777619;
  std::string digits(kSum, '0');
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit, sum >>= 4) *digit = "0123456789abcdef"[sum & 15];
  return digits;
}

// UTF-8 without control characters. A lone surrogate stands by its number: several could make up a UTF-8 character.
std::string escaped(TextView text) {
  std::string out;
  for (std::size_t at = 0; at < text.size();) {
    const Utf16Char next = readUtf16(text, at);
    at += next.length;
    if (next.code >= 0x20 && next.code != '\\' && (next.code < 0xD800 || next.code > 0xDFFF)) {
      appendUtf8(next.code, out);
      continue;
    }
    out += '\\';
    for (int shift = 12; shift >= 0; shift -= 4) out += "0123456789abcdef"[next.code >> shift & 15];
  }
  return out;
}

Text unescaped(std::string_view bytes) {
  Text out;
  while (!bytes.empty()) {
    const std::size_t mark = std::min(bytes.find('\\'), bytes.size());
    appendFromUtf8(bytes.substr(0, mark), out);
    bytes.remove_prefix(mark);
    if (bytes.empty()) break;
    std::uint16_t unit = 0;
    const std::string_view digits = bytes.substr(1, 4);
    std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    out.push_back(static_cast<char16_t>(unit));
    bytes.remove_prefix(1 + digits.size());
  }
  return out;
}

template <typename Number>
bool isNumber(std::string_view digits, Number& number) {
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() && end == digits.data() + digits.size() && number > 0;
}

std::string line(const std::string& words) { return sumOf(words) + ' ' + words + '\n'; }

// The words of the next line, or nothing if it is damaged or has no end.
std::optional<std::string_view> takeLine(std::string_view& bytes) {
  const std::size_t end = bytes.find('\n');
  const std::string_view whole = bytes.substr(0, end);
  bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
  if (end == std::string_view::npos || whole.size() <= kSum) return std::nullopt;
  const std::string_view words = whole.substr(kSum + 1);
  if (whole.substr(0, kSum) != sumOf(words)) return std::nullopt;
  return words;
}

}  // namespace

std::string journalHead(std::u16string_view path) { return line(std::string(kHead) + '\t' + escaped(path)); }

std::string journalLine(std::size_t number, const JournalledCommit& commit) {
  return line(std::to_string(number) + '\t' + std::to_string(commit.position) + (commit.title ? "\tt\t" : "\tp\t") +
              escaped(commit.before) + '\t' + escaped(commit.after));
}

std::u16string takeJournalHead(std::string_view& bytes) {
  const std::optional<std::string_view> words = takeLine(bytes);
  if (!words || !words->starts_with(kHead) || words->size() <= kHead.size()) return {};
  return unescaped(words->substr(kHead.size() + 1));
}

CommitJournal readJournal(std::string_view bytes) {
  CommitJournal journal{takeJournalHead(bytes), {}};
  while (!journal.path.empty() && !bytes.empty()) {
    std::optional<std::string_view> words = takeLine(bytes);
    if (!words) continue;
    std::array<std::string_view, 5> fields;
    for (std::string_view& field : fields) {
      const std::size_t tab = std::min(words->find('\t'), words->size());
      field = words->substr(0, tab);
      words->remove_prefix(std::min(tab + 1, words->size()));
    }
    std::size_t number = 0;
    JournalledCommit commit{0, fields[2] == "t", unescaped(fields[3]), unescaped(fields[4])};
    if (!isNumber(fields[0], number) || !isNumber(fields[1], commit.position)) continue;
    if (number <= journal.commits.size()) continue;
    if (number > journal.commits.size() + 1) break;
    journal.commits.push_back(std::move(commit));
  }
  return journal;
}

}  // namespace dravenna
