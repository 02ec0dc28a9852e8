#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "scan/command_list.h"
#include "scan/segment_colors.h"

// The one rule by which a script is read: load, export, import and the tool differ only in their sink.
namespace dravenna {

// Follows the command that the next quoted text belongs to. Its state survives from line to line.
template <class Char>
class CommandTracker {
 public:
  using View = std::basic_string_view<Char>;

  explicit CommandTracker(const CommandLists& lists);

  // A piece outside quotes that is not the last of its line; `index` is its number among all pieces, from 0.
  void codePiece(View piece, std::size_t index);
  // The last piece of a line with quotes.
  void lastPiece(View piece);

  struct Command {
    std::basic_string<Char> word;
    CommandTraits traits;
  };
  Command ActiveCommand;            // that the next quoted text belongs to
  Command PriorCommand;             // what ActiveCommand was before it last took a new piece
  std::int32_t TextsInCommand = 0;  // quoted texts since the command last changed

  bool allowed() const { return ActiveCommand.traits.allowed; }
  // The text just counted is the first one of a special command.
  bool firstOfSpecial() const { return ActiveCommand.traits.special && TextsInCommand == 1; }

 private:
  // A piece that opened a statement, and the command that was found in it.
  struct Opening {
    std::basic_string<Char> piece;
    Command command;
  };
  CommandTraits traits(View word);
  void findCommand(View piece, bool keepsPrior);
  void setActive(View word);
  View behindParentheses(View word);
  void digBehindBlanks();

  const CommandLists& lists_;
  CommandTraits emptyTraits_;
  // What was looked up lately: a script uses few commands, and most of its statements begin alike.
  std::array<Command, 16> known_;
  std::array<Opening, 16> openings_;
  std::basic_string<Char> cleaned_;
};

// A quoted text as the sink gets it. Offsets count characters of the line from 0, quote marks left out.
struct QuotedText {
  std::size_t begin;
  std::size_t end;
  bool allowed;         // its command is allowed
  bool firstOfSpecial;  // it is the first text of a special command
};

// How a load classes a quoted text.
template <class Char>
Segment classOf(std::basic_string_view<Char> text, const QuotedText& quoted);

// Scans line by line. A sink has these members, called in the order of the line:
//   plain(begin, end)     a piece outside quotes, or the code part of a line without quotes; may be empty
//   quote(at)             a quote mark
//   text(QuotedText)      a quoted text; may be empty
//   error(begin, end)     the code part of a line with an odd number of quote marks
//   comment(begin, end)   the comment, only if there is one
template <class Char>
class BasicLineScanner {
 public:
  using View = std::basic_string_view<Char>;

  explicit BasicLineScanner(const CommandLists& lists) : tracker_(lists) {}

  template <class Sink>
  void scan(View line, Sink&& sink) {
    const std::size_t codeEnd = cut(line);
    if (quotes_.empty()) {
      sink.plain(std::size_t{0}, codeEnd);
    } else if (quotes_.size() % 2 != 0) {
      ++ErrorLines;
      sink.error(std::size_t{0}, codeEnd);
    } else {
      scanPieces(line, codeEnd, sink);
    }
    if (codeEnd < line.size()) sink.comment(codeEnd, line.size());
  }

  std::int32_t ErrorLines = 0;  // lines with an odd number of quote marks
  const CommandTracker<Char>& tracker() const { return tracker_; }

 private:
  // Finds the end of the code part and its quote marks.
  std::size_t cut(View line);

  template <class Sink>
  void scanPieces(View line, std::size_t codeEnd, Sink& sink) {
    std::size_t begin = 0;
    for (std::size_t i = 0; i < quotes_.size(); i += 2) {
      const std::size_t open = quotes_[i];
      const std::size_t close = quotes_[i + 1];
      tracker_.codePiece(line.substr(begin, open - begin), i);
      sink.plain(begin, open);
      sink.quote(open);
      ++tracker_.TextsInCommand;
      sink.text(QuotedText{open + 1, close, tracker_.allowed(), tracker_.firstOfSpecial()});
      sink.quote(close);
      begin = close + 1;
    }
    sink.plain(begin, codeEnd);
    tracker_.lastPiece(line.substr(begin, codeEnd - begin));
  }

  CommandTracker<Char> tracker_;
  std::vector<std::size_t> quotes_;
};

using LineScanner = BasicLineScanner<char16_t>;
using ByteLineScanner = BasicLineScanner<char>;

}  // namespace dravenna
