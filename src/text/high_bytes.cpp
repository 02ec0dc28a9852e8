#include "text/high_bytes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace dravenna {

namespace {

// What a reader of UTF-8 waits for. A state is a shift: the row of a byte holds, at the bits of the old state, the new
// one. So a byte costs a look-up and a shift, and no branch that depends on the text.
enum State : unsigned {
  Start = 0,        // a character
  One = 6,          // one more byte of it, 0x80 to 0xBF
  Two = 12,         // two more
  Three = 18,       // three more
  BehindE0 = 24,    // two more, not for what fits into fewer bytes
  BehindED = 30,    // two more, not for a surrogate
  BehindF0 = 36,    // three more, not for what fits into fewer bytes
  BehindF4 = 42,    // three more, not beyond U+10FFFF
  Wrong = 48,       // nothing: it is no UTF-8
  kStateBits = 63,  // of what has been shifted
};

constexpr State stateBehindFirst(unsigned byte) {
  if (byte < 0x80) return Start;
  if (byte < 0xC2 || byte > 0xF4) return Wrong;
  if (byte < 0xE0) return One;
  if (byte < 0xF0) return byte == 0xE0 ? BehindE0 : byte == 0xED ? BehindED : Two;
  return byte == 0xF0 ? BehindF0 : byte == 0xF4 ? BehindF4 : Three;
}

constexpr std::array<std::uint64_t, 256> makeRows() {
  std::array<std::uint64_t, 256> rows{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    std::uint64_t row = 0;
    const auto put = [&](State state, bool fits, State next) {
      row |= std::uint64_t{fits ? next : Wrong} << static_cast<unsigned>(state);
    };
    const bool follows = byte >= 0x80 && byte <= 0xBF;
    put(Start, true, stateBehindFirst(byte));
    put(One, follows, Start);
    put(Two, follows, One);
    put(Three, follows, Two);
    put(BehindE0, follows && byte >= 0xA0, One);
    put(BehindED, follows && byte < 0xA0, One);
    put(BehindF0, follows && byte >= 0x90, Two);
    put(BehindF4, follows && byte < 0x90, Two);
    put(Wrong, false, Wrong);
    rows[byte] = row;
  }
  return rows;
}

constexpr std::array<std::uint64_t, 256> kRows = makeRows();

constexpr std::size_t kLookAhead = 32;  // bytes that are looked at together

bool isAsciiOnly(const char* bytes) {
  std::uint64_t words[kLookAhead / 8];
  std::memcpy(words, bytes, sizeof words);
  return ((words[0] | words[1] | words[2] | words[3]) & 0x8080808080808080u) == 0;
}

}  // namespace

HighBytes highBytesOf(std::string_view bytes) {
  std::uint64_t state = Start;
  std::size_t sequences = 0;
  const auto step = [&](char c) {
    const auto byte = static_cast<unsigned char>(c);
    state = kRows[byte] >> (state & kStateBits);
    sequences += byte >= 0xC0 ? 1 : 0;
  };
  std::size_t at = 0;
  for (; at + kLookAhead <= bytes.size(); at += kLookAhead) {
    if ((state & kStateBits) == Start && isAsciiOnly(bytes.data() + at)) continue;
    for (std::size_t i = 0; i < kLookAhead; ++i) step(bytes[at + i]);
    if ((state & kStateBits) == Wrong) return HighBytes::Other;
  }
  for (; at < bytes.size(); ++at) step(bytes[at]);
  if ((state & kStateBits) != Start) return HighBytes::Other;
  return sequences == 0 ? HighBytes::None : sequences == 1 ? HighBytes::OneSequence : HighBytes::Utf8;
}

}  // namespace dravenna
