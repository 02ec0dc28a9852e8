#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

// 8-bit text in a code page and UTF-16. The tables come from the platform; the conversion is ours, so that every file
// comes back byte for byte: bytes that the page cannot decode, and pairs that would not come back as the same pair,
// become lone low surrogates 0xDC00 + byte and turn into those bytes again.
namespace dravenna {

constexpr int kUtf8CodePage = 65001;

class CodePage {
 public:
  // Marks a byte or pair that the page leaves undefined.
  static constexpr char16_t kUndefined = 0xFFFF;

  // A page of single bytes. Entries below 0x80 are taken as ASCII whatever the table says.
  static std::shared_ptr<const CodePage> singleByte(int number, const std::array<char16_t, 256>& table);

  // A page whose lead bytes open pairs: pairs[(lead << 8) | trail], 65,536 entries; a lead byte is one that has a
  // defined pair.
  static std::shared_ptr<const CodePage> doubleByte(int number, const std::array<char16_t, 256>& singles,
                                                    const std::vector<char16_t>& pairs);

  static std::shared_ptr<const CodePage> utf8();

  int number() const { return number_; }

  // True when a byte is a character, offsets in bytes and in UTF-16 are the same, and no byte but its own stands for
  // an ASCII character.
  bool isSingleByte() const { return kind_ == Kind::SingleByte; }
  bool isUtf8() const { return kind_ == Kind::Utf8; }

  // Bytes behind `bytes` that belong to a character cut off at the end: decode all but the last `n` of a chunk and put
  // these in front of the next one. 0 at the end of a file by definition.
  std::size_t incompleteTail(std::string_view bytes) const;

  // Appends the decoded text. Never fails.
  void decode(std::string_view bytes, std::u16string& out) const;
  std::u16string decode(std::string_view bytes) const;

  // Appends the encoded bytes; a Vietnamese letter that the page has as base and tone mark only becomes these two.
  // Returns the offset of the first character that the page cannot hold, or npos when all went in; in the first case
  // `out` holds what stands before it.
  std::size_t encode(std::u16string_view text, std::string& out) const;

  // How many bytes of the text are undefined in this page.
  std::size_t countUndefined(std::string_view bytes) const;

 private:
  enum class Kind { SingleByte, DoubleByte, Utf8 };
  CodePage(Kind kind, int number) : kind_(kind), number_(number) {}

  void decodeSingle(std::string_view bytes, std::u16string& out) const;
  void decodeDouble(std::string_view bytes, std::u16string& out) const;
  void decodeUtf8(std::string_view bytes, std::u16string& out) const;
  bool isLead(unsigned char byte) const;
  bool encodeOne(std::u16string_view text, std::size_t& at, std::string& out) const;
  // 0 for none, a byte, or lead << 8 | trail.
  std::uint16_t bytesOf(char16_t unit) const;
  void setBytes(char16_t unit, std::size_t bytes);

  Kind kind_;
  int number_;
  std::array<char16_t, 256> single_{};
  std::array<bool, 256> leads_{};
  std::vector<char16_t> pairs_;  // kUndefined, a character, or an opaque trail byte: then the lead is opaque too
  // The bytes of code units, in rows of 256: a page of single bytes needs few, and is made at each start of a program.
  static constexpr std::size_t kRow = 256;
  std::array<std::uint32_t, 256> rows_{};  // where the row of units with this upper byte begins
  std::vector<std::uint16_t> reverse_ = std::vector<std::uint16_t>(kRow);  // the first row is empty
};

using CodePagePtr = std::shared_ptr<const CodePage>;

}  // namespace dravenna
