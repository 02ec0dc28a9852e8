#pragma once

#include <cstddef>
#include <cstdint>

// What a character of the script is. The colours are data: selection, stepping and search read them back.
namespace dravenna {

constexpr std::uint32_t clrPlain = 0x404040;    // outside quotes; a text that is exactly [ or ]
constexpr std::uint32_t clrComment = 0x404080;  // a comment with the CR LF of its line
constexpr std::uint32_t clrQuote = 0x0000FF;    // each quote mark of a line with an even number of them
constexpr std::uint32_t clrError = 0x0000C0;    // the code part of a line with an odd number of quote marks
constexpr std::uint32_t clrTitle = 0x008000;    // a quoted text wrapped in [ and ]
constexpr std::uint32_t clrMessage = 0x800000;  // a quoted text that players read
constexpr std::uint32_t clrCode = 0x0040C0;     // a quoted text in a logical context

constexpr std::uint32_t kNoColor = 0xFFFFFFFF;  // a selection of several colours; equal to no colour

// The segments in the order of the table above.
enum class Segment : std::uint8_t { Plain, Comment, Quote, Error, Title, Message, Code };
constexpr std::uint32_t kSegmentColors[] = {clrPlain, clrComment, clrQuote, clrError, clrTitle, clrMessage, clrCode};
constexpr std::uint32_t colorOf(Segment segment) { return kSegmentColors[static_cast<std::size_t>(segment)]; }
constexpr Segment segmentOf(std::uint32_t segmentColor) {
  switch (segmentColor) {
    case clrComment:
      return Segment::Comment;
    case clrQuote:
      return Segment::Quote;
    case clrError:
      return Segment::Error;
    case clrTitle:
      return Segment::Title;
    case clrMessage:
      return Segment::Message;
    case clrCode:
      return Segment::Code;
    default:
      return Segment::Plain;
  }
}

constexpr bool isTextColor(std::uint32_t color) { return color == clrMessage || color == clrTitle || color == clrCode; }

}  // namespace dravenna
