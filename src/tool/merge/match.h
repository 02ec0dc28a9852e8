#pragma once

#include <vector>

#include "tool/merge/document.h"

namespace dravenna {

// Which line and which text of a version stands for which of the base; kNone where there is none. Matched lines are of
// one code and ascend in both. Texts of matched lines are matched, and those of changed lines by what they say.
struct Match {
  std::vector<std::size_t> lineOf, baseLineOf;
  std::vector<std::size_t> textOf, baseTextOf;
};

// `followMoved`, for a version in the language of the base: a text that went elsewhere is followed there.
Match matchVersions(const Document& base, const Document& version, bool followMoved);

// Lines of one code, ascending, of two stretches: as many as can be, and of these such with texts alike.
struct LinePair {
  std::size_t a, b;
};
std::vector<LinePair> matchLines(const Document& a, std::size_t aBegin, std::size_t aEnd, const Document& b,
                                 std::size_t bBegin, std::size_t bEnd);

}  // namespace dravenna
