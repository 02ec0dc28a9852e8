#include "text/text.h"

namespace dravenna {

namespace {

bool isContinuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

void appendCodePoint(std::uint32_t code, Text& out) {
  if (code < 0x10000) {
    out.push_back(static_cast<char16_t>(code));
  } else {
    code -= 0x10000;
    out.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
    out.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
  }
}

}  // namespace

Utf8Char readUtf8(std::string_view bytes) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = byte(0);
  if (lead < 0x80) return {lead, 1};
  const int length = lead >= 0xF0 && lead < 0xF5   ? 4
                     : lead >= 0xE0 && lead < 0xF0 ? 3
                     : lead >= 0xC2 && lead < 0xE0 ? 2
                                                   : 0;
  if (length == 0 || bytes.size() < static_cast<std::size_t>(length)) return {0, 0};
  std::uint32_t code = static_cast<std::uint32_t>(lead) & (0x7Fu >> length);
  for (int i = 1; i < length; ++i) {
    const unsigned char next = byte(static_cast<std::size_t>(i));
    if (!isContinuation(next)) return {0, 0};
    code = code << 6 | (next & 0x3Fu);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  if (overlong || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) return {0, 0};
  return {code, length};
}

void appendUtf8(std::uint32_t code, std::string& out) {
  const auto put = [&](std::uint32_t byte) { out.push_back(static_cast<char>(static_cast<unsigned char>(byte))); };
  if (code < 0x80) {
    put(code);
  } else if (code < 0x800) {
    put(0xC0 | code >> 6);
    put(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    put(0xE0 | code >> 12);
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  } else {
    put(0xF0 | code >> 18);
    put(0x80 | (code >> 12 & 0x3F));
    put(0x80 | (code >> 6 & 0x3F));
    put(0x80 | (code & 0x3F));
  }
}

Text fromAscii(std::string_view ascii) { return Text(ascii.begin(), ascii.end()); }

Text decimal(std::int64_t number) { return fromAscii(std::to_string(number)); }

Text fromUtf8(std::string_view bytes) {
  Text out;
  out.reserve(bytes.size());
  appendFromUtf8(bytes, out);
  return out;
}

std::size_t countLoneLow(TextView text) {
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isHighSurrogate(text[at])) {
      ++at;
    } else if (isLowSurrogate(text[at])) {
      ++count;
    }
  }
  return count;
}

void appendFromUtf8(std::string_view bytes, Text& out) {
  for (std::size_t at = 0; at < bytes.size();) {
    const Utf8Char read = readUtf8(bytes.substr(at));
    if (read.length == 0) {
      out.push_back(static_cast<char16_t>(0xDC00 + static_cast<unsigned char>(bytes[at])));
      ++at;
    } else {
      appendCodePoint(read.code, out);
      at += static_cast<std::size_t>(read.length);
    }
  }
}

std::string toUtf8(TextView text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const Utf16Char read = readUtf16(text, at);
    at += read.length;
    if (read.code >= 0xDC80 && read.code <= 0xDCFF) {
      out.push_back(static_cast<char>(static_cast<unsigned char>(read.code - 0xDC00)));
    } else {
      appendUtf8(read.code >= 0xD800 && read.code < 0xE000 ? 0xFFFD : read.code, out);
    }
  }
  return out;
}

Text replaceAll(TextView text, TextView what, TextView with) {
  Text out;
  std::size_t from = 0;
  while (!what.empty()) {
    const std::size_t at = text.find(what, from);
    if (at == TextView::npos) break;
    out.append(text.substr(from, at - from)).append(with);
    from = at + what.size();
  }
  return out.append(text.substr(from));
}

TextView trimBlanks(TextView text) {
  const std::size_t first = text.find_first_not_of(u' ');
  if (first == TextView::npos) return {};
  return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

}  // namespace dravenna
