#include "tool/check/translation.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "text/text.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

constexpr std::size_t kShownCharacters = 60;
constexpr std::size_t kShownTokens = 5;
constexpr std::array kTokenKinds = {"item-code", "tag", "placeholder", "number"};

// The tokens of one kind; numbers in any order.
std::vector<std::string> textsOf(const std::vector<Token>& tokens, std::string_view kind) {
  std::vector<std::string> texts;
  bool positional = kind != "placeholder";
  for (const Token& token : tokens) {
    if (token.kind != kind) continue;
    texts.push_back(token.text);
    positional |= token.text.find('$') != std::string::npos;
  }
  if (positional) std::sort(texts.begin(), texts.end());
  return texts;
}

// Those of `a` that `b` has not, or all where only their order differs.
std::string listed(const Codec& codec, const std::vector<std::string>& a, std::vector<std::string> b, bool all) {
  std::string out;
  std::size_t count = 0;
  for (const std::string& text : a) {
    const auto there = std::find(b.begin(), b.end(), text);
    if (there != b.end() && !all) {
      b.erase(there);
    } else if (++count <= kShownTokens) {
      if (count > 1) out += ", ";
      appendEscaped(codec, text, out);
    }
  }
  if (count > kShownTokens) out += ", ...";
  return count == 0 ? "nothing" : out;
}

void checkTokens(const Codec& codec, const TextPair& pair, std::vector<Break>& found) {
  const std::vector<Token> before = tokensOf(pair.before);
  const std::vector<Token> now = tokensOf(pair.now);
  if (before.empty() && now.empty()) return;
  for (const char* const kind : kTokenKinds) {
    const std::vector<std::string> there = textsOf(before, kind);
    const std::vector<std::string> here = textsOf(now, kind);
    if (there == here) continue;
    const bool order = std::is_permutation(there.begin(), there.end(), here.begin(), here.end());
    const auto first = std::find_if(now.begin(), now.end(), [&](const Token& token) {
      return token.kind == std::string_view(kind) && (order || std::count(there.begin(), there.end(), token.text) <
                                                                   std::count(here.begin(), here.end(), token.text));
    });
    found.push_back({kind, first == now.end() ? 0 : first->begin,
                     fmt::format("{} here, {} in the {}", listed(codec, here, there, order),
                                 listed(codec, there, here, order), pair.source)});
  }
}

bool isBlank(std::string_view plain) { return plain.find_first_not_of(" \t") == std::string_view::npos; }

void checkEdges(const TextPair& pair, std::string_view before, std::string_view now, std::vector<Break>& found) {
  if (isBlank(before) || isBlank(now)) return;
  if (pair.afterPlus && before.front() == ' ' && now.front() != ' ') {
    found.push_back({"edge-blank", 0, fmt::format("no blank at its beginning, as the {} has behind a +", pair.source)});
  }
  if (pair.beforePlus && before.back() == ' ' && now.back() != ' ') {
    found.push_back({"edge-blank", pair.now.size(),
                     fmt::format("no blank at its end, as the {} has in front of a +", pair.source)});
  }
}

std::size_t countColons(std::string_view text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), ':'));
}

bool hasBracketAtEnd(std::string_view plain) { return !plain.empty() && (plain.front() == '[' || plain.back() == ']'); }

}  // namespace

std::string quotedText(const Codec& codec, std::string_view work) {
  // A character has four bytes at most.
  std::u16string text = codec.decode(work.substr(0, 4 * kShownCharacters + 4));
  const bool cut = text.size() > kShownCharacters;
  if (cut) {
    text.resize(kShownCharacters - (isHighSurrogate(text[kShownCharacters - 1]) ? 1 : 0));
    text += u"...";
  }
  std::string bytes;
  codec.encode(text, bytes);
  return quoted(codec, bytes);
}

std::vector<Break> checkTranslation(const Codec& codec, const TextPair& pair) {
  std::vector<Break> found;
  const std::string before = withoutColor(pair.before);
  const std::string now = withoutColor(pair.now);
  if (pair.inMenu && countColons(before) != countColons(now)) {
    found.push_back({"menu-count", 0,
                     fmt::format("{} in a menu's text, {} in the {}", counted(countColons(now), "colon"),
                                 countColons(before), pair.source)});
  }
  if (pair.record && before == now && hasLetter(now)) {
    found.push_back({"untranslated", 0, quotedText(codec, pair.now)});
  }
  if (pair.record && hasBracketAtEnd(now) && !hasBracketAtEnd(before)) {
    found.push_back({"bracket", 0,
                     fmt::format("a bracket at an end, which the {} has not, takes the text out of the exchange file",
                                 pair.source)});
  }
  if (pair.countsCodes && countColorCodes(pair.before) != countColorCodes(pair.now)) {
    found.push_back({"color-count", 0,
                     fmt::format("{}, {} in the {}'s text", counted(countColorCodes(pair.now), "colour code"),
                                 countColorCodes(pair.before), pair.source)});
  }
  if (before == now) return found;
  if (isBlank(now) && hasLetter(before)) {
    found.push_back(
        {"empty", 0, fmt::format("no text, where the {} has {}", pair.source, quotedText(codec, pair.before))});
  }
  checkTokens(codec, pair, found);
  checkEdges(pair, before, now, found);
  return found;
}

void findPlus(std::string_view work, const OutlineText& text, TextPair& pair) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const auto begin = static_cast<std::size_t>(text.text.data() - work.data());
  const std::size_t end = begin + text.text.size();  // of the closing quote mark
  const std::size_t front = begin < 2 ? std::string_view::npos : work.find_last_not_of(kBlanks, begin - 2);
  const std::size_t behind = work.find_first_not_of(kBlanks, std::min(end + 1, work.size()));
  pair.afterPlus = front != std::string_view::npos && work[front] == '+';
  pair.beforePlus = behind != std::string_view::npos && work[behind] == '+';
}

}  // namespace dravenna
