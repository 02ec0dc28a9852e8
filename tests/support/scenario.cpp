#include "support/scenario.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "text/text.h"

namespace dravenna {

namespace {

bool isBlank(char16_t c) { return c == u' ' || c == u'\t'; }

// Reads the character behind a backslash at `at` and moves behind it.
char16_t readEscape(std::u16string_view text, std::size_t& at, int line) {
  constexpr std::u16string_view kNames = u"\"\\rnt";
  const char16_t c = at < text.size() ? text[at++] : u'\0';
  if (const std::size_t which = kNames.find(c); which != kNames.npos) return u"\"\\\r\n\t"[which];
  const std::string digits = c == u'x' ? toUtf8(text.substr(at, 2)) : std::string();
  char* end = nullptr;
  const unsigned long code = std::strtoul(digits.c_str(), &end, 16);
  if (end - digits.c_str() != 2) throw ScenarioError{line, "unknown escape in a string"};
  at += 2;
  return static_cast<char16_t>(code);
}

std::vector<Word> splitWords(std::u16string_view text, int line) {
  std::vector<Word> words;
  std::size_t at = 0;
  while (at < text.size()) {
    if (isBlank(text[at])) {
      ++at;
      continue;
    }
    Word word;
    if (text[at] == u'"') {
      word.quoted = true;
      for (++at; at < text.size() && text[at] != u'"';) {
        const char16_t c = text[at++];
        word.text += c == u'\\' ? readEscape(text, at, line) : c;
      }
      if (at == text.size()) throw ScenarioError{line, "the string has no closing quote mark"};
      if (++at < text.size() && !isBlank(text[at])) throw ScenarioError{line, "no blank behind the string"};
    } else {
      while (at < text.size() && !isBlank(text[at])) word.text += text[at++];
    }
    words.push_back(std::move(word));
  }
  return words;
}

}  // namespace

std::vector<Directive> parseScenario(std::string_view bytes, std::deque<std::string>& reasons) {
  std::vector<Directive> directives;
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  for (int line = 1; !bytes.empty(); ++line) {
    const std::size_t end = bytes.find('\n');
    std::string_view raw = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (raw.ends_with('\r')) raw.remove_suffix(1);
    if (raw == "|" || raw.starts_with("| ")) {
      if (directives.empty()) throw ScenarioError{line, "a block without a directive above it"};
      directives.back().hasBlock = true;
      directives.back().block.push_back(fromUtf8(raw.substr(raw.size() > 1 ? 2 : 1)));
      continue;
    }
    if (raw.starts_with("#! ")) reasons.emplace_back(raw.substr(3));
    if (raw.substr(std::min(raw.find_first_not_of(" \t"), raw.size())).starts_with('#')) continue;
    std::vector<Word> words = splitWords(fromUtf8(raw), line);
    if (words.empty()) continue;
    directives.push_back({line, std::move(words), false, {}});
  }
  return directives;
}

std::string inQuotes(std::u16string_view text) {
  std::u16string out = u"\"";
  for (const char16_t c : text) {
    if (c == u'"' || c == u'\\') {
      out += {u'\\', c};
    } else if (c == u'\r' || c == u'\n' || c == u'\t') {
      out += {u'\\', c == u'\r' ? u'r' : c == u'\n' ? u'n' : u't'};
    } else if (c < 0x20) {
      char hex[5];
      std::snprintf(hex, sizeof hex, "\\x%02X", static_cast<unsigned>(c));
      out += fromAscii(hex);
    } else {
      out += c;
    }
  }
  return toUtf8(out += u'"');
}

}  // namespace dravenna
