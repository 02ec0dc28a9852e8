#include "text/high_bytes.h"

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace dravenna {

namespace {

constexpr std::uint64_t kHighBits = 0x8080808080808080u;

// The first byte above 0x7F at or behind `at`, or the end.
std::size_t skipAscii(std::string_view bytes, std::size_t at) {
  constexpr std::size_t kBlock = 32;  // bytes that are looked at together
  std::uint64_t words[kBlock / 8];
  for (; at + kBlock <= bytes.size(); at += kBlock) {
    std::memcpy(words, bytes.data() + at, kBlock);
    if (((words[0] | words[1] | words[2] | words[3]) & kHighBits) != 0) break;
  }
  for (; at + 8 <= bytes.size(); at += 8) {
    std::memcpy(words, bytes.data() + at, 8);
    if ((words[0] & kHighBits) != 0) break;
  }
  while (at < bytes.size() && static_cast<unsigned char>(bytes[at]) < 0x80) ++at;
  return at;
}

bool isIn(unsigned byte, unsigned lowest, unsigned highest) { return byte - lowest <= highest - lowest; }

// Bytes of the sequence at the front, whose first byte is above 0x7F; 0 where it is none.
std::size_t sequenceLength(const unsigned char* at, std::size_t left) {
  const unsigned lead = at[0];
  if (isIn(lead, 0xC2, 0xDF)) return left >= 2 && isIn(at[1], 0x80, 0xBF) ? 2 : 0;
  if (isIn(lead, 0xE0, 0xEF)) {
    if (left < 3 || !isIn(at[1], lead == 0xE0 ? 0xA0 : 0x80, lead == 0xED ? 0x9F : 0xBF)) return 0;
    return isIn(at[2], 0x80, 0xBF) ? 3 : 0;
  }
  if (!isIn(lead, 0xF0, 0xF4) || left < 4) return 0;
  if (!isIn(at[1], lead == 0xF0 ? 0x90 : 0x80, lead == 0xF4 ? 0x8F : 0xBF)) return 0;
  return isIn(at[2], 0x80, 0xBF) && isIn(at[3], 0x80, 0xBF) ? 4 : 0;
}

}  // namespace

HighBytes highBytesOf(std::string_view bytes) {
  const auto* const data = reinterpret_cast<const unsigned char*>(bytes.data());
  std::size_t sequences = 0;
  for (std::size_t at = skipAscii(bytes, 0); at < bytes.size(); at = skipAscii(bytes, at)) {
    do {
      const std::size_t length = sequenceLength(data + at, bytes.size() - at);
      if (length == 0) return HighBytes::Other;
      ++sequences;
      at += length;
    } while (at < bytes.size() && data[at] >= 0x80);
  }
  return sequences == 0 ? HighBytes::None : sequences == 1 ? HighBytes::OneSequence : HighBytes::Utf8;
}

}  // namespace dravenna
