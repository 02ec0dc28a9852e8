#include "text/code_page.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "text/text.h"

namespace dravenna {

namespace {

constexpr std::size_t kUnits = 0x10000;

char16_t opaque(unsigned char byte) { return static_cast<char16_t>(0xDC00 + byte); }

bool isOpaque(char16_t unit, unsigned lowest) { return unit >= 0xDC00 + lowest && unit <= 0xDCFF; }

// A letter that a page may hold as two characters.
struct ComposedLetter {
  char16_t letter;
  char16_t base;
  char16_t mark;
};

constexpr ComposedLetter kComposedLetters[] = {
// clang-format off
#include "text/composed_letters.inc"
    // clang-format on
};

// Null for every other character.
const ComposedLetter* composedLetter(char16_t unit) {
  const auto* const found = std::lower_bound(std::begin(kComposedLetters), std::end(kComposedLetters), unit,
                                             [](const ComposedLetter& one, char16_t c) { return one.letter < c; });
  return found != std::end(kComposedLetters) && found->letter == unit ? found : nullptr;
}

constexpr std::size_t kBlock = 16;  // bytes that are taken at once while all are ASCII

bool isAsciiBlock(const char* bytes) {
  std::uint64_t words[2];
  std::memcpy(words, bytes, sizeof words);
  return ((words[0] | words[1]) & 0x8080808080808080u) == 0;
}

void widenBlock(const char* bytes, char16_t* to) {
  for (std::size_t i = 0; i < kBlock; ++i) to[i] = static_cast<unsigned char>(bytes[i]);
}

// Appends the bytes that are ASCII at the front of `bytes`; returns how many.
std::size_t decodeAscii(std::string_view bytes, std::u16string& out) {
  std::size_t count = 0;
  while (count + kBlock <= bytes.size() && isAsciiBlock(bytes.data() + count)) count += kBlock;
  while (count < bytes.size() && static_cast<unsigned char>(bytes[count]) < 0x80) ++count;
  const std::size_t start = out.size();
  out.resize(start + count);
  char16_t* to = out.data() + start;
  for (std::size_t i = 0; i < count; ++i) to[i] = static_cast<unsigned char>(bytes[i]);
  return count;
}

}  // namespace

std::uint16_t CodePage::bytesOf(char16_t unit) const { return reverse_[rows_[unit >> 8] + (unit & 0xFFu)]; }

void CodePage::setBytes(char16_t unit, std::size_t bytes) {
  std::uint32_t& row = rows_[unit >> 8];
  if (row == 0) {
    row = static_cast<std::uint32_t>(reverse_.size());
    reverse_.resize(reverse_.size() + kRow);
  }
  reverse_[row + (unit & 0xFFu)] = static_cast<std::uint16_t>(bytes);
}

std::shared_ptr<const CodePage> CodePage::singleByte(int number, const std::array<char16_t, 256>& table) {
  std::shared_ptr<CodePage> page(new CodePage(Kind::SingleByte, number));
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char16_t unit = byte < 0x80 ? static_cast<char16_t>(byte) : table[byte];
    // A character that has its byte already would come back as that byte.
    const bool defined = byte < 0x80 || (unit != kUndefined && unit >= 0x80 && page->bytesOf(unit) == 0);
    page->single_[byte] = defined ? unit : opaque(static_cast<unsigned char>(byte));
    page->setBytes(page->single_[byte], byte);
  }
  return page;
}

std::shared_ptr<const CodePage> CodePage::doubleByte(int number, const std::array<char16_t, 256>& singles,
                                                     const std::vector<char16_t>& pairs) {
  std::shared_ptr<CodePage> page(new CodePage(Kind::DoubleByte, number));
  page->pairs_ = pairs;
  for (unsigned byte = 0; byte < 256; ++byte) {
    const char16_t unit = byte < 0x80 ? static_cast<char16_t>(byte) : singles[byte];
    const bool defined = byte < 0x80 || (unit != kUndefined && unit >= 0x80 && page->bytesOf(unit) == 0);
    page->single_[byte] = defined ? unit : kUndefined;
    if (defined) page->setBytes(unit, byte);
  }
  for (std::size_t pair = 0x8000; pair < kUnits; ++pair) {
    char16_t& unit = page->pairs_[pair];
    if (unit == kUndefined) continue;
    page->leads_[pair >> 8] = true;
    if (page->bytesOf(unit) != 0 || isLowSurrogate(unit) || unit < 0x80) {
      unit = opaque(static_cast<unsigned char>(pair & 0xFF));  // a second pair of the same character
    } else {
      page->setBytes(unit, pair);
    }
  }
  return page;
}

std::shared_ptr<const CodePage> CodePage::utf8() {
  static const std::shared_ptr<const CodePage> page(new CodePage(Kind::Utf8, kUtf8CodePage));
  return page;
}

std::size_t CodePage::incompleteTail(std::string_view bytes) const {
  if (kind_ == Kind::SingleByte) return 0;
  if (kind_ == Kind::DoubleByte) {
    // Pairs can only be told by reading from a safe place: behind the last byte that opens nothing and, being a line
    // feed or a blank, ends nothing.
    std::size_t at = bytes.size();
    while (at > 0 && static_cast<unsigned char>(bytes[at - 1]) >= 0x30) --at;
    while (at < bytes.size()) {
      const std::size_t pair = static_cast<std::size_t>(static_cast<unsigned char>(bytes[at])) << 8;
      const bool lead = isLead(static_cast<unsigned char>(bytes[at]));
      if (!lead) {
        ++at;
      } else if (at + 1 == bytes.size()) {
        return 1;
      } else {
        at += pairs_[pair | static_cast<unsigned char>(bytes[at + 1])] != kUndefined ? 2 : 1;
      }
    }
    return 0;
  }
  for (std::size_t back = 1; back <= 3 && back <= bytes.size(); ++back) {
    const auto byte = static_cast<unsigned char>(bytes[bytes.size() - back]);
    if (byte < 0x80) return 0;
    if (byte >= 0xC0) {
      const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
      return length > back ? back : 0;
    }
  }
  return 0;
}

bool CodePage::isLead(unsigned char byte) const { return byte >= 0x80 && single_[byte] == kUndefined && leads_[byte]; }

void CodePage::decode(std::string_view bytes, std::u16string& out) const {
  switch (kind_) {
    case Kind::SingleByte:
      return decodeSingle(bytes, out);
    case Kind::DoubleByte:
      return decodeDouble(bytes, out);
    case Kind::Utf8:
      return decodeUtf8(bytes, out);
  }
}

std::u16string CodePage::decode(std::string_view bytes) const {
  std::u16string out;
  decode(bytes, out);
  return out;
}

void CodePage::decodeSingle(std::string_view bytes, std::u16string& out) const {
  const std::size_t start = out.size();
  out.resize(start + bytes.size());
  char16_t* to = out.data() + start;
  const auto decodeOne = [&](std::size_t i) { to[i] = single_[static_cast<unsigned char>(bytes[i])]; };
  std::size_t at = 0;
  for (; at + kBlock <= bytes.size(); at += kBlock) {
    if (isAsciiBlock(bytes.data() + at)) {
      widenBlock(bytes.data() + at, to + at);
    } else {
      for (std::size_t i = 0; i < kBlock; ++i) decodeOne(at + i);
    }
  }
  for (; at < bytes.size(); ++at) decodeOne(at);
}

void CodePage::decodeDouble(std::string_view bytes, std::u16string& out) const {
  for (std::size_t at = decodeAscii(bytes, out); at < bytes.size(); at += decodeAscii(bytes.substr(at), out)) {
    const auto byte = static_cast<unsigned char>(bytes[at]);
    if (isLead(byte) && at + 1 < bytes.size()) {
      const auto trail = static_cast<unsigned char>(bytes[at + 1]);
      const char16_t unit = pairs_[static_cast<std::size_t>(byte) << 8 | trail];
      if (unit != kUndefined) {
        if (isLowSurrogate(unit)) out.push_back(opaque(byte));
        out.push_back(unit);
        at += 2;
        continue;
      }
    }
    out.push_back(single_[byte] == kUndefined ? opaque(byte) : single_[byte]);
    ++at;
  }
}

void CodePage::decodeUtf8(std::string_view bytes, std::u16string& out) const {
  for (std::size_t at = decodeAscii(bytes, out); at < bytes.size(); at += decodeAscii(bytes.substr(at), out)) {
    std::size_t end = at + 1;
    while (end < bytes.size() && static_cast<unsigned char>(bytes[end]) >= 0x80) ++end;
    appendFromUtf8(bytes.substr(at, end - at), out);
    at = end;
  }
}

bool CodePage::encodeOne(std::u16string_view text, std::size_t& at, std::string& out) const {
  const char16_t unit = text[at];
  const auto put = [&](unsigned byte) { out.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
  if (kind_ == Kind::Utf8) {
    const Utf16Char read = readUtf16(text, at);
    if (isOpaque(unit, 0x80)) {
      put(unit - 0xDC00u);
      return true;
    }
    if (read.length == 1 && (isHighSurrogate(unit) || isLowSurrogate(unit))) return false;
    appendUtf8(read.code, out);
    at += read.length - 1;
    return true;
  }
  const std::uint16_t bytes = bytesOf(unit);
  if (kind_ == Kind::DoubleByte && isOpaque(unit, 0x40)) {
    put(unit - 0xDC00u);
  } else if (bytes >= 0x100) {
    put(bytes >> 8);
    put(bytes & 0xFF);
  } else if (bytes != 0) {
    put(bytes);
  } else {
    const ComposedLetter* const composed = composedLetter(unit);
    if (composed == nullptr || kind_ != Kind::SingleByte || bytesOf(composed->base) == 0 ||
        bytesOf(composed->mark) == 0)
      return false;
    put(bytesOf(composed->base));
    put(bytesOf(composed->mark));
  }
  return true;
}

std::size_t CodePage::encode(std::u16string_view text, std::string& out) const {
  out.reserve(out.size() + text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text[at] < 0x80) {
      out.push_back(static_cast<char>(text[at]));
      continue;
    }
    const std::size_t character = at;
    if (!encodeOne(text, at, out)) return character;
  }
  return std::u16string_view::npos;
}

std::size_t CodePage::countUndefined(std::string_view bytes) const {
  std::size_t count = 0;
  if (kind_ == Kind::SingleByte) {
    for (std::size_t at = 0; at < bytes.size(); at += kBlock) {
      const std::string_view block = bytes.substr(at, kBlock);
      if (block.size() == kBlock && isAsciiBlock(block.data())) continue;
      for (const char c : block) count += isLowSurrogate(single_[static_cast<unsigned char>(c)]) ? 1 : 0;
    }
    return count;
  }
  return countLoneLow(decode(bytes));
}

}  // namespace dravenna
