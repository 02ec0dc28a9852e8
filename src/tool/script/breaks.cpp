#include "tool/script/breaks.h"

#include <fmt/core.h>

#include <algorithm>

namespace dravenna {

namespace {

std::size_t backslashesBefore(std::string_view text, std::size_t end) {
  std::size_t count = 0;
  while (count < end && text[end - count - 1] == '\\') ++count;
  return count;
}

bool isControl(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F; }

std::optional<Break> backslashBreak(const Codec& codec, std::string_view before, std::string_view now) {
  const std::size_t run = backslashesBefore(now, now.size());
  const bool odd = run % 2 != 0;
  const bool wasOdd = backslashesBefore(before, before.size()) % 2 != 0;
  const std::size_t at = now.size() - run;
  if (odd && !wasOdd) return Break{"backslash", at, "a backslash at the end takes the quote mark into the text"};
  if (!odd && wasOdd) return Break{"backslash", at, "no single backslash at the end, which the text had"};
  if (isEscaped(codec, now, now.size()) == isEscaped(codec, before, before.size())) return std::nullopt;
  return Break{"backslash", at,
               "servers take the backslash at the end otherwise than before: behind a byte above 0x7E it is no escape"};
}

bool endsInComment(const Codec& codec, std::string_view work) {
  ServerPiece piece{ServerPiece::Kind::Code, 0, true};
  while (piece.end < work.size()) piece = serverPieceAt(codec, work, piece.end);
  return piece.kind == ServerPiece::Kind::BlockComment && !piece.closed;
}

std::optional<Break> commentBreak(const Codec& codec, std::string_view before, std::string_view now,
                                  std::string_view inFront) {
  const std::size_t at = now.find("*/");
  const bool ends = at != std::string_view::npos;
  const bool ended = before.find("*/") != std::string_view::npos;
  if (ends == ended || inFront.find("/*") == std::string_view::npos || !endsInComment(codec, inFront)) return {};
  if (ends) return Break{"comment-in-text", at, "*/ in a text of a comment ends it, which turns the rest into code"};
  return Break{"comment-in-text", 0, "no */, with which the text ended the comment that it stands in"};
}

}  // namespace

bool isEscaped(const Codec& codec, std::string_view text, std::size_t quote) {
  const std::size_t run = backslashesBefore(text, quote);
  if (run == 0) return false;
  std::string buffer;
  const std::string_view head = codec.toFile(text.substr(0, quote - run), buffer);
  const bool behindHigh = !head.empty() && static_cast<unsigned char>(head.back()) > 0x7E;
  return (run - (behindHigh ? 1 : 0)) % 2 != 0;
}

ServerPiece serverPieceAt(const Codec& codec, std::string_view work, std::size_t at) {
  using enum ServerPiece::Kind;
  const auto until = [&](ServerPiece::Kind kind, std::size_t found, std::size_t length) {
    const bool closed = found != std::string_view::npos;
    return ServerPiece{kind, closed ? found + length : work.size(), closed};
  };
  const std::string_view next = work.substr(at, 2);
  if (next == "//") return until(LineComment, work.find('\n', at), 1);
  if (next == "/*") return until(BlockComment, work.find("*/", at + 2), 2);
  if (next[0] != '"') {
    do ++at;
    while (at < work.size() && work[at] != '"' && work[at] != '/');
    return {Code, at, true};
  }
  const std::string_view line = work.substr(0, work.find('\n', at));
  std::size_t quote = line.find('"', at + 1);
  while (quote != std::string_view::npos && isEscaped(codec, line.substr(at + 1), quote - at - 1)) {
    quote = line.find('"', quote + 1);
  }
  const bool closed = quote != std::string_view::npos;
  return {String, closed ? quote + 1 : line.size(), closed};
}

std::vector<Break> breaksOf(const Codec& codec, std::optional<std::string_view> before, std::string_view now,
                            std::string_view inFront) {
  std::vector<Break> breaks;
  if (before == now) return breaks;
  if (const std::size_t at = now.find('"'); at != std::string_view::npos) {
    breaks.push_back({"quote-mark", at, "a quote mark in a text breaks the script's line"});
  }
  if (const std::size_t at = now.find("//"); at != std::string_view::npos) {
    breaks.push_back({"comment-in-text", at, "// in a text turns the rest of the script's line into a comment"});
  }
  const auto control = std::find_if(now.begin(), now.end(), [&](char c) {
    return isControl(c) && (!before || before->find(c) == std::string_view::npos);
  });
  if (control != now.end()) {
    breaks.push_back({"control", static_cast<std::size_t>(control - now.begin()),
                      fmt::format("a control character, U+{:04X}, in a text", static_cast<unsigned>(*control))});
  }
  if (!before) return breaks;
  if (auto comment = commentBreak(codec, *before, now, inFront)) breaks.push_back(std::move(*comment));
  if (auto backslash = backslashBreak(codec, *before, now)) breaks.push_back(std::move(*backslash));
  return breaks;
}

}  // namespace dravenna
