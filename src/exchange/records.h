#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

#include "color/color_codes.h"
#include "scan/command_list.h"
#include "scan/line_scanner.h"

// The exchange file: one record a line, "number:text" CR LF, numbered from 1 in the order of the document. What binds
// it to the script is the order alone: the k-th record belongs to the k-th text that recordTextOf picks. All of it
// works on UTF-16 (the window) and on bytes (the tool).
namespace dravenna {

// The text without its colour codes, as withoutColor gives it, where it gets a record.
template <class Char>
std::optional<std::basic_string_view<Char>> recordTextOf(std::basic_string_view<Char> text, const QuotedText& quoted,
                                                         std::basic_string<Char>& buffer) {
  if (!quoted.allowed || quoted.firstOfSpecial) return std::nullopt;
  const std::basic_string_view<Char> plain = withoutColor(text, buffer);
  if (!plain.empty() && (plain.front() == '[' || plain.back() == ']')) return std::nullopt;
  return plain;
}

// Finds the texts that get a record, line by line.
template <class Char>
class RecordScan {
 public:
  using View = std::basic_string_view<Char>;

  explicit RecordScan(const CommandLists& lists) : scanner_(lists) {}

  // Calls found(QuotedText, text without colour codes) for each of the line.
  template <class Found>
  void line(View line, Found&& found) {
    scanner_.scan(line, Sink<Found>{line, found, buffer_});
  }

 private:
  template <class Found>
  struct Sink {
    View line;
    Found& found;
    std::basic_string<Char>& buffer;

    void plain(std::size_t, std::size_t) {}
    void quote(std::size_t) {}
    void error(std::size_t, std::size_t) {}
    void comment(std::size_t, std::size_t) {}
    void text(const QuotedText& quoted) {
      const auto plain = recordTextOf(line.substr(quoted.begin, quoted.end - quoted.begin), quoted, buffer);
      if (plain) found(quoted, *plain);
    }
  };

  BasicLineScanner<Char> scanner_;
  std::basic_string<Char> buffer_;
};

// Cuts a text at CR LF and at nothing else; what stands behind the last one is a piece too.
template <class Char>
class CrLfPieces {
 public:
  using View = std::basic_string_view<Char>;

  explicit CrLfPieces(View text) : text_(text) {}
  // False when there is no further piece.
  bool next(View& piece) {
    if (from_ > text_.size()) return false;
    static constexpr Char kLineEnd[] = {'\r', '\n'};
    const std::size_t end = text_.find(kLineEnd, from_, 2);
    piece = text_.substr(from_, end == View::npos ? View::npos : end - from_);
    from_ = end == View::npos ? text_.size() + 1 : end + 2;
    return true;
  }
  // The piece given out was the last one.
  bool atLast() const { return from_ > text_.size(); }

 private:
  View text_;
  std::size_t from_ = 0;
};

// A line of an exchange file. One without a colon is no record: all of it is `text` then.
template <class Char>
struct Record {
  std::basic_string_view<Char> line;
  bool hasColon;
  std::basic_string_view<Char> number;  // before the first colon
  std::basic_string_view<Char> text;    // behind it
};

template <class Char>
Record<Char> cutRecord(std::basic_string_view<Char> line) {
  const std::size_t colon = line.find(Char{':'});
  if (colon == std::basic_string_view<Char>::npos) return {line, false, {}, line};
  return {line, true, line.substr(0, colon), line.substr(colon + 1)};
}

// Appends a record without its line end.
template <class Char>
void appendRecord(std::size_t number, std::type_identity_t<std::basic_string_view<Char>> text,
                  std::basic_string<Char>& out) {
  char digits[20];
  const char* const end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  out.append(std::cbegin(digits), end).push_back(Char{':'});
  out.append(text);
}

// Writes the exchange file of a document whose lines end in CR LF and in nothing else: write(record) gets one record
// after the other, without its line end. What stands behind the last CR LF is a line too.
template <class Write>
void writeRecords(std::u16string_view document, const CommandLists& lists, Write&& write) {
  RecordScan<char16_t> scan(lists);
  std::u16string record;
  std::size_t number = 0;
  CrLfPieces<char16_t> lines(document);
  for (std::u16string_view line; lines.next(line);) {
    scan.line(line, [&](const QuotedText&, std::u16string_view text) {
      record.clear();
      appendRecord(++number, text, record);
      write(std::u16string_view(record));
    });
  }
}

}  // namespace dravenna
