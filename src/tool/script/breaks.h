#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/script/codec.h"

// What would break a script for the next scan or for the servers that read it. All texts are work bytes.
namespace dravenna {

struct Break {
  const char* kind;  // of the findings of `check`
  std::size_t offset;
  std::string why;
};

// What breaks the line when `now` takes the place of the text `before`, of each fault the first. Without `before` only
// what can be told from `now` alone. A text that is as before breaks nothing. `inFront` is what stands in front of the
// text in its script, which tells whether the text is part of a comment.
std::vector<Break> breaksOf(const Codec& codec, std::optional<std::string_view> before, std::string_view now,
                            std::string_view inFront = {});

// Whether servers take a quote mark at `quote` for a character of the text: an odd number of backslashes stands in
// front, where a first one behind a byte above 0x7E is no escape.
bool isEscaped(const Codec& codec, std::string_view text, std::size_t quote);

// What servers read as one from `at` on: a comment, a string with its quote marks, which ends with its line at the
// latest, or code up to the next of these.
struct ServerPiece {
  enum class Kind { Code, LineComment, BlockComment, String } kind;
  std::size_t end;
  bool closed;  // by what ends such a piece
};
ServerPiece serverPieceAt(const Codec& codec, std::string_view work, std::size_t at);

}  // namespace dravenna
