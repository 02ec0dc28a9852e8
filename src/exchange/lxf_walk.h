#pragma once

#include "color/color_codes.h"
#include "exchange/lxf.h"
#include "text/text.h"

namespace dravenna {

template <class Char>
bool takesRecord(std::basic_string_view<Char> withoutColor, const QuotedText& quoted) {
  if (!withoutColor.empty() && (withoutColor.front() == '[' || withoutColor.back() == ']')) return false;
  return quoted.allowed && !quoted.firstOfSpecial;
}

// A sink that hears of nothing but texts that get a record: found(QuotedText, text without colour codes).
template <class Char, class Found>
class RecordSink {
 public:
  RecordSink(std::basic_string_view<Char> line, Found& found, std::basic_string<Char>& buffer)
      : line_(line), found_(found), buffer_(buffer) {}

  void plain(std::size_t, std::size_t) {}
  void quote(std::size_t) {}
  void error(std::size_t, std::size_t) {}
  void comment(std::size_t, std::size_t) {}
  void text(const QuotedText& quoted) {
    if (!quoted.allowed || quoted.firstOfSpecial) return;
    buffer_.clear();
    appendWithoutColor(line_.substr(quoted.begin, quoted.end - quoted.begin), buffer_);
    const std::basic_string_view<Char> withoutColor = buffer_;
    if (takesRecord(withoutColor, quoted)) found_(quoted, withoutColor);
  }

 private:
  std::basic_string_view<Char> line_;
  Found& found_;
  std::basic_string<Char>& buffer_;
};

// Scans one line for the texts that get a record.
template <class Char, class Found>
void scanRecords(BasicLineScanner<Char>& scanner, std::basic_string_view<Char> line, std::basic_string<Char>& buffer,
                 Found&& found) {
  scanner.scan(line, RecordSink<Char, Found>(line, found, buffer));
}

// Cuts a text at CR LF and at nothing else; what stands behind the last one is a piece too.
class CrLfPieces {
 public:
  explicit CrLfPieces(TextView text) : text_(text) {}
  // False when there is no further piece.
  bool next(TextView& piece) {
    if (from_ > text_.size()) return false;
    const std::size_t end = text_.find(u"\r\n", from_);
    piece = text_.substr(from_, end == TextView::npos ? TextView::npos : end - from_);
    from_ = end == TextView::npos ? text_.size() + 1 : end + 2;
    return true;
  }
  // The piece given out was the last one.
  bool atLast() const { return from_ > text_.size(); }

 private:
  TextView text_;
  std::size_t from_ = 0;
};

template <class Record>
void forEachRecord(std::u16string_view document, const CommandLists& lists, Record&& record) {
  LineScanner scanner(lists);
  std::u16string buffer;
  std::int32_t number = 0;
  CrLfPieces lines(document);
  for (TextView line; lines.next(line);) {
    scanRecords(scanner, line, buffer, [&](const QuotedText&, TextView text) { record(++number, text); });
  }
}

}  // namespace dravenna
