#include "support/scenario.h"

#include <algorithm>
#include <cstdio>

#include "text/text.h"

namespace dravenna {

namespace {

int hexDigit(char16_t c) {
  if (c >= u'0' && c <= u'9') return c - u'0';
  if (c >= u'a' && c <= u'f') return c - u'a' + 10;
  if (c >= u'A' && c <= u'F') return c - u'A' + 10;
  return -1;
}

bool isBlank(char16_t c) { return c == u' ' || c == u'\t'; }

// Reads the character behind a backslash at `at` and moves behind it.
char16_t readEscape(std::u16string_view text, std::size_t& at, int line) {
  const char16_t c = at < text.size() ? text[at++] : u'\0';
  switch (c) {
    case u'"':
    case u'\\':
      return c;
    case u'r':
      return u'\r';
    case u'n':
      return u'\n';
    case u't':
      return u'\t';
    case u'x':
      if (at + 2 <= text.size() && hexDigit(text[at]) >= 0 && hexDigit(text[at + 1]) >= 0) {
        at += 2;
        return static_cast<char16_t>(hexDigit(text[at - 2]) * 16 + hexDigit(text[at - 1]));
      }
      throw ScenarioError{line, "\\x needs two hexadecimal digits"};
    default:
      throw ScenarioError{line, "unknown escape in a string"};
  }
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

std::vector<Directive> parseScenario(std::string_view bytes) {
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
