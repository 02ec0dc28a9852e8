#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

namespace dravenna {

struct Word {
  std::u16string text;
  bool quoted = false;

  bool is(std::u16string_view bare) const { return !quoted && text == bare; }
};

struct Directive {
  int line = 0;  // from 1
  std::vector<Word> words;
  bool hasBlock = false;
  std::vector<std::u16string> block;
};

// What makes a scenario unreadable, or one of its directives impossible.
struct ScenarioError {
  int line;  // 0 for the directive at hand
  std::string message;
};

// The directives of a scenario file. What stands behind `#! ` at the front of a line goes to `reasons`. Throws
// ScenarioError.
std::vector<Directive> parseScenario(std::string_view bytes, std::deque<std::string>& reasons);

// A text as a quoted string of a scenario, in UTF-8.
std::string inQuotes(std::u16string_view text);

}  // namespace dravenna
