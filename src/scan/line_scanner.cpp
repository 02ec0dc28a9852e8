#include "scan/line_scanner.h"

#include "scan/clean_word.h"

namespace dravenna {

namespace {

template <class Char>
std::basic_string_view<Char> trimmed(std::basic_string_view<Char> text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

}  // namespace

template <class Char>
CommandTracker<Char>::CommandTracker(const CommandLists& lists) : lists_(lists), emptyTraits_(lists.traits(View())) {
  active_.traits = prior_.traits = emptyTraits_;
}

template <class Char>
void CommandTracker<Char>::setActive(View word) {
  active_.traits = lists_.traits(word);
  active_.word.assign(word);
}

template <class Char>
void CommandTracker<Char>::codePiece(View piece, std::size_t index) {
  const bool keepsPrior = (!active_.traits.fixed && prior_.traits.allowed) || (active_.word.empty() && index > 0);
  if (keepsPrior) {
    cleanWordInto(View(prior_.word), true, buffer_);
  } else {
    std::swap(prior_, active_);
    cleanWordInto(piece, true, buffer_);
  }
  if (!buffer_.empty()) digBehindParentheses();
  setActive(buffer_);
  digBehindBlanks();
  if (!active_.traits.allowed && prior_.traits.allowed) {
    active_ = prior_;
  } else if (active_.word != prior_.word) {
    textsInCommand_ = 0;
  }
}

// Cuts the word in buffer_ out of forms such as `if (@a == 1) mes`.
template <class Char>
void CommandTracker<Char>::digBehindParentheses() {
  const View word = buffer_;
  const std::size_t open = word.find(Char('('));
  const std::size_t lastClose = word.rfind(Char(')'));
  View result = trimmed(word.substr(0, open));
  if (lastClose != View::npos) {
    const View behind = trimmed(word.substr(lastClose + 1));
    const bool behindAllowed = lists_.traits(behind).allowed;
    if (open != View::npos) {
      if (behindAllowed && !lists_.traits(result).allowed) result = behind;
    } else {
      result = behindAllowed && !prior_.traits.allowed ? behind : View(prior_.word);
    }
  }
  if (result.data() != word.data() || result.size() != word.size()) buffer_ = std::basic_string<Char>(result);
}

// Cuts the active command out of forms such as `give 5011 mes`.
template <class Char>
void CommandTracker<Char>::digBehindBlanks() {
  const View word = active_.word;
  const std::size_t firstBlank = word.find(Char(' '));
  if (firstBlank == View::npos) return;
  const View first = word.substr(0, firstBlank);
  const View last = word.substr(word.rfind(Char(' ')) + 1);
  const bool takesLast = lists_.traits(last).allowed && !lists_.traits(first).allowed;
  setActive(std::basic_string<Char>(takesLast ? last : first));
}

template <class Char>
void CommandTracker<Char>::lastPiece(View piece) {
  if (!endsStatement(piece)) return;
  active_.word.clear();
  prior_.word.clear();
  active_.traits = prior_.traits = emptyTraits_;
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
  const Char* const begin = line.data();
  const Char* const end = begin + line.size();
  for (const Char* at = begin; at != end; ++at) {
    if (*at == '"') {
      quotes_.push_back(static_cast<std::size_t>(at - begin));
    } else if (*at == '/' && at + 1 != end && at[1] == '/') {
      return static_cast<std::size_t>(at - begin);
    }
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
