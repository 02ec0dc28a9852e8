#include "tool/script/tokens.h"

#include <algorithm>

#include "text/ascii.h"
#include "tool/script/outline.h"

namespace dravenna {

namespace {

bool isLetter(char c) { return lowerAscii(c) >= 'a' && lowerAscii(c) <= 'z'; }
bool isOneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

std::size_t skip(std::string_view text, std::size_t at, std::string_view set) {
  return std::min(text.find_first_not_of(set, at), text.size());
}

constexpr std::string_view kDigits = "0123456789";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

// Where a token may begin from `at` on, or the end.
std::size_t findOpening(std::string_view text, std::size_t at) {
  while (at < text.size() && !isDigit(text[at]) && text[at] != '^' && text[at] != '<' && text[at] != '%') ++at;
  return at;
}

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

}  // namespace

bool mayMove(std::string_view kind) { return kind == "number" || kind == "item-code" || kind == "tag"; }

std::vector<Token> tokensOf(std::string_view text) {
  std::vector<Token> tokens;
  std::size_t numberEndsAt = std::string_view::npos;
  for (std::size_t at = findOpening(text, 0); at < text.size(); at = findOpening(text, at)) {
    if (text[at] == '^' && countColorCodes(text.substr(at, 7)) == 1) {
      tokens.push_back({"color-code", at, at + 7, std::string(text.substr(at, 7))});
      at += 7;
      continue;
    }
    std::string digits;
    const char* kind = "number";
    std::size_t end;
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
    if (end > at) tokens.push_back({kind, at, end, digits.empty() ? std::string(text.substr(at, end - at)) : digits});
    at = std::max(end, at + 1);
  }
  return tokens;
}

}  // namespace dravenna
