#pragma once

#include <string>
#include <string_view>

#include "scan/command_list.h"
#include "text/code_page.h"
#include "text/high_bytes.h"

namespace dravenna {

// The tool scans bytes. In single-byte pages and in UTF-8 no byte but its own stands for an ASCII character, so a file
// is scanned as it is. In double-byte pages a trail byte can look like `^` or `\`: there the work bytes are UTF-8 in
// which a lone surrogate has its three-byte form too, so that the way back is exact.
class Codec {
 public:
  // `wide`: work bytes are UTF-8 as above whatever the page, so that texts of two pages can stand together.
  explicit Codec(CodePagePtr page, bool wide = false) : page_(std::move(page)), wide_(wide) {}

  const CodePage& page() const { return *page_; }
  // What command words are decoded with (see CommandLists).
  CodePagePtr wordPage() const { return direct() ? page_ : CodePage::utf8(); }

  // The work bytes of a file's bytes; in `buffer` where they are not the same.
  std::string_view toWork(std::string_view file, std::string& buffer) const;
  // The way back, for everything that came from toWork.
  std::string_view toFile(std::string_view work, std::string& buffer) const;

  std::u16string decode(std::string_view work) const;
  // Appends work bytes. Gives the offset of the first character that the page cannot hold, or npos.
  std::size_t encode(std::u16string_view text, std::string& work) const;

  // Characters as the window counts them: UTF-16 code units.
  std::size_t units(std::string_view work) const;
  // Characters as a reader counts them, for columns.
  std::size_t characters(std::string_view work) const;

 private:
  bool direct() const { return !wide_ && (page_->isSingleByte() || page_->isUtf8()); }

  CodePagePtr page_;
  bool wide_;
};

// How the files of one code page are worked on.
struct Encoding {
  Encoding(CodePagePtr page, std::u16string_view allowed, std::u16string_view special)
      : codec(std::move(page)), lists(allowed, special, codec.wordPage()) {}

  Codec codec;
  CommandLists lists;
};

// Places within a line, for offsets that mostly ascend: each character is counted once.
class PlaceCounter {
 public:
  enum class Unit { Utf16, Character };
  PlaceCounter(const Codec& codec, Unit unit) : codec_(codec), unit_(unit) {}

  // Characters in front of `offset`, which stands on a character's first byte.
  std::size_t before(std::string_view line, std::size_t offset);

 private:
  const Codec& codec_;
  Unit unit_;
  const char* line_ = nullptr;
  std::size_t offset_ = 0;
  std::size_t count_ = 0;
};

bool isAscii(std::string_view bytes);
inline bool isUtf8(std::string_view bytes) { return highBytesOf(bytes) != HighBytes::Other; }  // every byte of it
// By its mark, or its ASCII characters each beside a NUL.
bool isUtf16(std::string_view bytes);
inline constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";  // the byte order mark

// UTF-8 for terminals, tables and JSON. A byte that the page lacks and a control character stand as \xHH in escaped
// text; tab, line ends and the backslash as \t, \n, \r, \\. In JSON the byte is the lone surrogate \udcXX.
void appendEscaped(const Codec& codec, std::string_view work, std::string& out);
void appendJsonString(std::u16string_view text, std::string& out);  // quote marks included
void appendJsonString(const Codec& codec, std::string_view work, std::string& out);
std::string jsonString(std::string_view utf8);
std::string jsonString(const Codec& codec, std::string_view work);
std::string quoted(const Codec& codec, std::string_view work);  // escaped, in quote marks

// The same for a name of a file or an argument: UTF-8 by custom.
void appendEscapedName(std::string_view name, std::string& out);

}  // namespace dravenna
