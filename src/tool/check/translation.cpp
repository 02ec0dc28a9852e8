#include "tool/check/translation.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "text/ascii.h"
#include "text/text.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

constexpr std::size_t kShownCharacters = 60;
constexpr std::size_t kShownTokens = 5;
constexpr std::array kTokenKinds = {"item-code", "tag", "placeholder", "number"};

bool isLetter(char c) { return lowerAscii(c) >= 'a' && lowerAscii(c) <= 'z'; }
bool isOneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

std::size_t skip(std::string_view text, std::size_t at, std::string_view set) {
  return std::min(text.find_first_not_of(set, at), text.size());
}

constexpr std::string_view kDigits = "0123456789";

// The end of what begins at `at`, or `at` where nothing does.

// `^nItemID^501`, which players see as the item's name.
std::size_t itemCodeEnd(std::string_view text, std::size_t at) {
  constexpr std::string_view kItem = "^nItemID^";
  if (!text.substr(at).starts_with(kItem)) return at;
  const std::size_t end = skip(text, at + kItem.size(), kDigits);
  return end == at + kItem.size() ? at : end;
}

// `<NAVI>`, `</NAVI>`; of `<INFO>map,1,2</INFO>` the whole, which no player reads.
std::size_t tagEnd(std::string_view text, std::size_t at) {
  std::size_t end = at + 1;
  if (end < text.size() && text[end] == '/') ++end;
  const std::size_t name = end;
  while (end < text.size() && (isLetter(text[end]) || text[end] == '_')) ++end;
  if (end == name || end == text.size() || text[end] != '>' || text[name] < 'A' || text[name] > 'Z') return at;
  constexpr std::string_view kInfo = "<INFO>";
  constexpr std::string_view kInfoEnd = "</INFO>";
  const std::size_t infoEnd = text.substr(at).starts_with(kInfo) ? text.find(kInfoEnd, at) : std::string_view::npos;
  return infoEnd == std::string_view::npos ? end + 1 : infoEnd + kInfoEnd.size();
}

// `%d`, `%-5s`, `%1$s`, `%%`; but neither "100% sure" nor "50%off".
std::size_t placeholderEnd(std::string_view text, std::size_t at, bool behindNumber) {
  std::size_t end = skip(text, at + 1, "0123456789$+-#");
  if (end < text.size() && text[end] == '.') end = skip(text, end + 1, kDigits);
  end = skip(text, end, "hlzjt");
  if (end >= text.size() || !isOneOf(text[end], "dsuixXcf%")) return at;
  const bool percentage = behindNumber && end + 1 < text.size() && isLetter(text[end + 1]);
  return percentage ? at : end + 1;
}

// A number with its groups of three: 1,000 and 1.000 are one.
std::size_t numberEnd(std::string_view text, std::size_t at, std::string& digits) {
  std::size_t end = skip(text, at, kDigits);
  digits = text.substr(at, end - at);
  const bool grouped = digits.size() <= 3;
  while (grouped && end < text.size() && isOneOf(text[end], ",.' ") && skip(text, end + 1, kDigits) == end + 4) {
    digits += text.substr(end + 1, 3);
    end += 4;
  }
  return end;
}

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

bool mayMove(std::string_view kind) { return kind == "number" || kind == "item-code" || kind == "tag"; }

std::vector<Token> tokensOf(std::string_view text) {
  std::vector<Token> tokens;
  std::size_t numberEndsAt = std::string_view::npos;
  for (std::size_t at = text.find_first_of("^<%0123456789"); at < text.size();
       at = text.find_first_of("^<%0123456789", at)) {
    if (text[at] == '^' && countColorCodes(text.substr(at, 7)) == 1) {
      tokens.push_back({"color-code", at, std::string(text.substr(at, 7))});
      at += 7;
      continue;
    }
    std::string digits;
    const char* kind = "number";
    std::size_t end = at;
    if (text[at] == '^') {
      kind = "item-code";
      end = itemCodeEnd(text, at);
    } else if (text[at] == '<') {
      kind = "tag";
      end = tagEnd(text, at);
    } else if (text[at] == '%') {
      kind = "placeholder";
      end = placeholderEnd(text, at, numberEndsAt == at);
    } else {
      end = numberEndsAt = numberEnd(text, at, digits);
    }
    if (end > at) tokens.push_back({kind, at, digits.empty() ? std::string(text.substr(at, end - at)) : digits});
    at = std::max(end, at + 1);
  }
  return tokens;
}

std::string quotedText(const Codec& codec, std::string_view work) {
  // A character has four bytes at most.
  std::u16string text = codec.decode(work.substr(0, 4 * kShownCharacters + 4));
  const bool cut = text.size() > kShownCharacters;
  if (cut) {
    text.resize(kShownCharacters - (isHighSurrogate(text[kShownCharacters - 1]) ? 1 : 0));
    text += u"...";
  }
  std::string bytes;
  std::string out = "\"";
  codec.encode(text, bytes);
  appendEscaped(codec, bytes, out);
  return out + "\"";
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
