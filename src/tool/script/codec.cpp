#include "tool/script/codec.h"

#include <algorithm>

#include "text/text.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

void appendWide(std::u16string_view text, std::string& out) {
  for (std::size_t at = 0; at < text.size();) {
    const Utf16Char read = readUtf16(text, at);
    appendUtf8(read.code, out);
    at += read.length;
  }
}

// Reads what appendWide wrote.
std::u16string readWide(std::string_view bytes) {
  std::u16string out;
  out.reserve(bytes.size());
  for (std::size_t at = 0; at < bytes.size();) {
    const Utf8Char read = readUtf8(bytes.substr(at));
    if (read.length == 0 && bytes.size() - at >= 3) {
      const auto bits = [&](std::size_t i) { return static_cast<unsigned char>(bytes[at + i]) & 0x3Fu; };
      out.push_back(static_cast<char16_t>(0xD000u | bits(1) << 6 | bits(2)));
      at += 3;
    } else if (read.length == 0) {
      out.push_back(static_cast<char16_t>(0xDC00u + static_cast<unsigned char>(bytes[at++])));
    } else {
      appendFromUtf8(bytes.substr(at, static_cast<std::size_t>(read.length)), out);
      at += static_cast<std::size_t>(read.length);
    }
  }
  return out;
}

constexpr char kHex[] = "0123456789ABCDEF";
constexpr char kLowerHex[] = "0123456789abcdef";

void appendHexByte(unsigned byte, std::string& out) {
  out.append("\\x").push_back(kHex[byte >> 4 & 15]);
  out.push_back(kHex[byte & 15]);
}

void appendUnitEscape(char16_t unit, std::string& out) {
  out.append("\\u");
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kLowerHex[unit >> shift & 15]);
}

bool needsEscape(char c) { return c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }

void appendEscapedAscii(char c, std::string& out) {
  switch (c) {
    case '\\':
      out.append("\\\\");
      break;
    case '\t':
      out.append("\\t");
      break;
    case '\n':
      out.append("\\n");
      break;
    case '\r':
      out.append("\\r");
      break;
    default:
      needsEscape(c) ? appendHexByte(static_cast<unsigned char>(c), out) : out.push_back(c);
  }
}

void appendEscapedWide(std::u16string_view text, std::string& out) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (unit < 0x80) {
      appendEscapedAscii(static_cast<char>(unit), out);
    } else if (unit < 0xA0) {
      appendUnitEscape(unit, out);  // a control character that is no undefined byte
    } else if (isHighSurrogate(unit) && at + 1 < text.size()) {
      appendWide(text.substr(at++, 2), out);
    } else if (isLowSurrogate(unit)) {
      appendHexByte(unit & 0xFFu, out);
    } else {
      appendUtf8(unit, out);
    }
  }
}

}  // namespace

bool isAscii(std::string_view bytes) {
  unsigned char any = 0;
  for (const char c : bytes) any = static_cast<unsigned char>(any | static_cast<unsigned char>(c));
  return any < 0x80;
}

bool isUtf16(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF")) return true;
  constexpr std::size_t kLooked = 16;
  const std::size_t units = std::min(bytes.size(), kLooked) / 2;
  std::size_t first = 0;
  std::size_t second = 0;
  for (std::size_t i = 0; i < units; ++i) {
    if (bytes[2 * i] == '\0') ++first;
    if (bytes[2 * i + 1] == '\0') ++second;
  }
  return units >= 2 && ((first == units && second == 0) || (second == units && first == 0));
}

std::string_view Codec::toWork(std::string_view file, std::string& buffer) const {
  if (direct() || isAscii(file)) return file;
  buffer.clear();
  appendWide(page_->decode(file), buffer);
  return buffer;
}

std::string_view Codec::toFile(std::string_view work, std::string& buffer) const {
  if (direct() || isAscii(work)) return work;
  buffer.clear();
  page_->encode(readWide(work), buffer);
  return buffer;
}

std::u16string Codec::decode(std::string_view work) const { return direct() ? page_->decode(work) : readWide(work); }

std::size_t Codec::encode(std::u16string_view text, std::string& work) const {
  if (direct()) return page_->encode(text, work);
  std::string probe;
  const std::size_t bad = page_->encode(text, probe);
  appendWide(text.substr(0, bad), work);
  return bad;
}

std::size_t Codec::units(std::string_view work) const {
  return (direct() && page_->isSingleByte()) || isAscii(work) ? work.size() : decode(work).size();
}

std::size_t Codec::characters(std::string_view work) const {
  if ((direct() && page_->isSingleByte()) || isAscii(work)) return work.size();
  const std::u16string text = decode(work);
  return text.size() - static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isHighSurrogate));
}

std::size_t PlaceCounter::before(std::string_view line, std::size_t offset) {
  if (line.data() != line_ || offset < offset_) {
    line_ = line.data();
    offset_ = count_ = 0;
  }
  const std::string_view stretch = line.substr(offset_, offset - offset_);
  count_ += unit_ == Unit::Utf16 ? codec_.units(stretch) : codec_.characters(stretch);
  offset_ = offset;
  return count_;
}

void appendEscaped(const Codec& codec, std::string_view work, std::string& out) {
  if (isAscii(work) && std::none_of(work.begin(), work.end(), needsEscape)) {
    out.append(work);
  } else {
    appendEscapedWide(codec.decode(work), out);
  }
}

void appendJsonString(std::u16string_view text, std::string& out) {
  out.push_back('"');
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (unit == u'"' || unit == u'\\') {
      out.push_back('\\');
      out.push_back(static_cast<char>(unit));
    } else if (unit == u'\t' || unit == u'\n' || unit == u'\r') {
      out.append(unit == u'\t' ? "\\t" : unit == u'\n' ? "\\n" : "\\r");
    } else if (isHighSurrogate(unit) && at + 1 < text.size() && isLowSurrogate(text[at + 1])) {
      appendWide(text.substr(at++, 2), out);
    } else if (unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || isHighSurrogate(unit) || isLowSurrogate(unit)) {
      appendUnitEscape(unit, out);
    } else {
      appendUtf8(unit, out);
    }
  }
  out.push_back('"');
}

void appendJsonString(const Codec& codec, std::string_view work, std::string& out) {
  appendJsonString(codec.decode(work), out);
}

std::string jsonString(std::string_view utf8) {
  std::string out;
  appendJsonString(fromUtf8(utf8), out);
  return out;
}

std::string jsonString(const Codec& codec, std::string_view work) {
  std::string out;
  appendJsonString(codec, work, out);
  return out;
}

std::string quoted(const Codec& codec, std::string_view work) {
  std::string out = "\"";
  appendEscaped(codec, work, out);
  return out + "\"";
}

void appendEscapedName(std::string_view name, std::string& out) { appendEscapedWide(fromUtf8(name), out); }

std::string shownName(std::string_view name) {
  std::string out;
  appendEscapedName(name, out);
  return out;
}

std::string shown(std::u16string_view text) { return shownName(toUtf8(text)); }

std::string counted(std::size_t count, std::string_view noun) {
  std::string out = std::to_string(count) + " ";
  out.append(noun);
  if (count != 1) out.push_back('s');
  return out;
}

}  // namespace dravenna
