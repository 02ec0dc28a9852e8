#include "tool/run/globs.h"

#include <algorithm>

#include "text/path_names.h"

namespace dravenna {

namespace {

// A set such as [a-z] at the front of `pattern`: its length, or 0 when it is none, and whether it holds `c`.
std::size_t matchSet(std::string_view pattern, char c, bool& holds) {
  std::size_t at = 1;
  const bool negated = at < pattern.size() && (pattern[at] == '!' || pattern[at] == '^');
  if (negated) ++at;
  const std::size_t close = pattern.find(']', at + 1);
  if (close == std::string_view::npos) return 0;
  holds = false;
  const auto byte = [](char b) { return static_cast<unsigned char>(b); };
  while (at < close) {
    if (at + 2 < close && pattern[at + 1] == '-') {
      holds |= byte(pattern[at]) <= byte(c) && byte(c) <= byte(pattern[at + 2]);
      at += 3;
    } else {
      holds |= pattern[at++] == c;
    }
  }
  holds = holds != negated && c != '/';
  return close + 1;
}

}  // namespace

bool matchesGlob(std::string_view pattern, std::string_view text) {
  // Where to go on after a mismatch: one more character for the last star. A `**` may be gone back to from behind a
  // later `*`, so both are kept.
  struct Star {
    std::size_t pattern = std::string_view::npos;
    std::size_t text = 0;
  };
  Star single;
  Star deep;
  std::size_t p = 0;
  std::size_t t = 0;
  for (;;) {
    if (p < pattern.size() && pattern[p] == '*') {
      const bool isDeep = p + 1 < pattern.size() && pattern[p + 1] == '*';
      p += isDeep ? 2 : 1;
      if (isDeep && p < pattern.size() && pattern[p] == '/' && (t == 0 || text[t - 1] == '/') &&
          matchesGlob(pattern.substr(p + 1), text.substr(t))) {
        return true;  // `**/` stands for no folder too
      }
      (isDeep ? deep : single) = {p, t};
      if (isDeep) single = {};
      continue;
    }
    bool holds = false;
    std::size_t length = 0;
    if (p == pattern.size() && t == text.size()) return true;
    if (p < pattern.size() && t < text.size()) {
      if (pattern[p] == '?') {
        holds = text[t] != '/';
        length = 1;
      } else if (pattern[p] == '[') {
        length = matchSet(pattern.substr(p), text[t], holds);
      }
      if (length == 0) {
        holds = pattern[p] == text[t];
        length = 1;
      }
    }
    if (holds) {
      p += length;
      ++t;
    } else if (single.pattern != std::string_view::npos && single.text < text.size() && text[single.text] != '/') {
      p = single.pattern;
      t = ++single.text;
    } else if (deep.pattern != std::string_view::npos && deep.text < text.size()) {
      p = deep.pattern;
      t = ++deep.text;
      single = {};
    } else {
      return false;
    }
  }
}

bool matchesAny(const std::vector<std::string>& patterns, std::string_view relative) {
  const std::string_view name = fileNameOf(relative);
  return std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
    return matchesGlob(pattern, pattern.find('/') == std::string::npos ? name : relative);
  });
}

}  // namespace dravenna
