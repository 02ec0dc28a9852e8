#include "scan/line_scanner.h"

#include <algorithm>
#include <bit>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "scan/clean_word.h"

namespace dravenna {

namespace {

template <class Char>
std::basic_string_view<Char> trimmed(std::basic_string_view<Char> text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

constexpr std::size_t kLongestKnown = 32;

// Where a text that is not empty stands among 16 places.
template <class Char>
std::size_t slotOf(std::basic_string_view<Char> text) {
  const auto unit = [](Char c) { return static_cast<std::size_t>(c); };
  return (unit(text.front()) + 3 * unit(text[text.size() / 2]) + 5 * unit(text.back()) + text.size()) % 16;
}

constexpr std::size_t kBlock = 16;  // characters that a mask tells of

// Bit n: the n-th of 16 characters is a quote mark or a slash.
#if defined(__SSE2__)
unsigned marksIn(const char* at) {
  const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
  return static_cast<unsigned>(_mm_movemask_epi8(
      _mm_or_si128(_mm_cmpeq_epi8(block, _mm_set1_epi8('"')), _mm_cmpeq_epi8(block, _mm_set1_epi8('/')))));
}

unsigned marksIn(const char16_t* at) {
  const auto half = [](const char16_t* from) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    return _mm_or_si128(_mm_cmpeq_epi16(block, _mm_set1_epi16('"')), _mm_cmpeq_epi16(block, _mm_set1_epi16('/')));
  };
  return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(half(at), half(at + 8))));
}
#else
template <class Char>
unsigned marksIn(const Char* at) {
  unsigned marks = 0;
  for (std::size_t i = 0; i < kBlock; ++i) marks |= static_cast<unsigned>(at[i] == '"' || at[i] == '/') << i;
  return marks;
}
#endif

}  // namespace

template <class Char>
CommandTracker<Char>::CommandTracker(const CommandLists& lists) : lists_(lists), emptyTraits_(lists.traits(View())) {
  ActiveCommand.traits = PriorCommand.traits = emptyTraits_;
}

template <class Char>
CommandTraits CommandTracker<Char>::traits(View word) {
  if (word.empty()) return emptyTraits_;
  if (word.size() > kLongestKnown) return lists_.traits(word);
  Command& known = known_[slotOf(word)];
  if (known.word != word) known = {std::basic_string<Char>(word), lists_.traits(word)};
  return known.traits;
}

template <class Char>
void CommandTracker<Char>::setActive(View word) {
  ActiveCommand.traits = traits(word);
  ActiveCommand.word.assign(word);
}

template <class Char>
void CommandTracker<Char>::codePiece(View piece, std::size_t index) {
  const bool opens = index == 0 && ActiveCommand.word.empty() && PriorCommand.word.empty() && !emptyTraits_.allowed;
  if (opens && !piece.empty() && piece.size() <= kLongestKnown) {
    Opening& known = openings_[slotOf(piece)];
    if (known.piece != piece) {
      findCommand(piece, false);
      known.piece.assign(piece);
      known.command = ActiveCommand;
    } else {
      ActiveCommand.word.assign(known.command.word);
      ActiveCommand.traits = known.command.traits;
    }
  } else {
    findCommand(piece, (!ActiveCommand.traits.fixed && PriorCommand.traits.allowed) ||
                           (ActiveCommand.word.empty() && index > 0));
  }
  if (!ActiveCommand.traits.allowed && PriorCommand.traits.allowed) {
    ActiveCommand = PriorCommand;
  } else if (ActiveCommand.word != PriorCommand.word) {
    TextsInCommand = 0;
  }
}

template <class Char>
void CommandTracker<Char>::findCommand(View piece, bool keepsPrior) {
  if (keepsPrior) {
    piece = PriorCommand.word;
  } else {
    std::swap(PriorCommand, ActiveCommand);
  }
  const View word = CleanWord(piece, true, cleaned_);
  setActive(word.empty() ? word : behindParentheses(word));
  digBehindBlanks();
}

// The command in forms such as `if (@a == 1) mes`.
template <class Char>
std::basic_string_view<Char> CommandTracker<Char>::behindParentheses(View word) {
  const std::size_t open = word.find(Char('('));
  const std::size_t lastClose = word.rfind(Char(')'));
  const View first = trimmed(word.substr(0, open));
  if (lastClose == View::npos) return first;
  const View behind = trimmed(word.substr(lastClose + 1));
  const bool behindAllowed = traits(behind).allowed;
  if (open != View::npos) return behindAllowed && !traits(first).allowed ? behind : first;
  return behindAllowed && !PriorCommand.traits.allowed ? behind : View(PriorCommand.word);
}

// Cuts the active command out of forms such as `give 5011 mes`.
template <class Char>
void CommandTracker<Char>::digBehindBlanks() {
  const View word = ActiveCommand.word;
  const std::size_t firstBlank = word.find(Char(' '));
  if (firstBlank == View::npos) return;
  const View first = word.substr(0, firstBlank);
  const View last = word.substr(word.rfind(Char(' ')) + 1);
  const bool takesLast = traits(last).allowed && !traits(first).allowed;
  setActive(std::basic_string<Char>(takesLast ? last : first));
}

template <class Char>
void CommandTracker<Char>::lastPiece(View piece) {
  // Where a `;` is the last of all, nothing needs to be cleaned.
  if (!piece.ends_with(Char(';')) && !CleanWord(piece, false, cleaned_).ends_with(Char(';'))) return;
  ActiveCommand.word.clear();
  PriorCommand.word.clear();
  ActiveCommand.traits = PriorCommand.traits = emptyTraits_;
}

template <class Char>
Segment classOf(std::basic_string_view<Char> text, const QuotedText& quoted) {
  const bool opens = !text.empty() && text.front() == '[';
  const bool closes = !text.empty() && text.back() == ']';
  if (opens && closes) return Segment::Title;
  if (!quoted.allowed || quoted.firstOfSpecial) return Segment::Code;
  if (text.size() == 1 && (opens || closes)) return Segment::Plain;
  return Segment::Message;
}

template <class Char>
std::size_t BasicLineScanner<Char>::cut(View line) {
  quotes_.clear();
  // True when the comment begins here.
  const auto look = [&](std::size_t at) {
    if (line[at] == '/') return at + 1 < line.size() && line[at + 1] == '/';
    if (line[at] == '"') quotes_.push_back(at);
    return false;
  };
  // Looks at the marks of the 16 characters from `from`, of those at `at` and behind.
  const auto lookAtBlock = [&](std::size_t from, std::size_t at) {
    for (unsigned marks = marksIn(line.data() + from) & (~0u << (at - from)); marks != 0; marks &= marks - 1) {
      const std::size_t found = from + static_cast<std::size_t>(std::countr_zero(marks));
      if (look(found)) return found;
    }
    return line.size();
  };
  std::size_t at = 0;
  if (line.size() >= kBlock) {
    for (; at < line.size(); at += kBlock) {
      const std::size_t found = lookAtBlock(std::min(at, line.size() - kBlock), at);
      if (found < line.size()) return found;
    }
    return line.size();
  }
  for (; at < line.size(); ++at) {
    if (look(at)) return at;
  }
  return line.size();
}

template class CommandTracker<char>;
template class CommandTracker<char16_t>;
template class BasicLineScanner<char>;
template class BasicLineScanner<char16_t>;
template Segment classOf<char>(std::string_view, const QuotedText&);
template Segment classOf<char16_t>(std::u16string_view, const QuotedText&);

}  // namespace dravenna
