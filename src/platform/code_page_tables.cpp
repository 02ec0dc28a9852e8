#include "platform/code_page_tables.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include "platform/system.h"
#include "text/ascii.h"

namespace dravenna {

namespace {

constexpr char16_t kNone = CodePage::kUndefined;

// windows-1252 from 0x80 to 0x9F; from 0xA0 on, byte and code point are the same. Built in, so that there is always a
// code page, and the usual start needs no table of the system.
constexpr char16_t kWestern[32] = {0x20AC, kNone,  0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, kNone,  0x017D, kNone,
                                   kNone,  0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, kNone,  0x017E, 0x0178};

constexpr int kWesternPage = 1252;
constexpr int kSingleBytePages[] = {874, 1250, 1251, 1253, 1254, 1255, 1256, 1257, 1258};
constexpr int kDoubleBytePages[] = {932, 936, 949, 950};

template <std::size_t Size>
bool contains(const int (&pages)[Size], int number) {
  return std::find(std::begin(pages), std::end(pages), number) != std::end(pages);
}

char16_t unitOf(const CharacterDecoder& decoder, unsigned byte) {
  const char bytes[] = {static_cast<char>(static_cast<unsigned char>(byte))};
  return decoder({bytes, 1});
}

std::array<char16_t, 256> singlesOf(const CharacterDecoder& decoder) {
  std::array<char16_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    table[byte] = byte < 0x80 ? static_cast<char16_t>(byte) : unitOf(decoder, byte);
  }
  return table;
}

std::vector<char16_t> pairsOf(const CharacterDecoder& decoder, const std::array<char16_t, 256>& singles) {
  std::vector<char16_t> pairs(0x10000, kNone);
  for (unsigned lead = 0x80; lead < 256; ++lead) {
    if (singles[lead] != kNone) continue;
    for (unsigned trail = 0x40; trail < 256; ++trail) {
      const char bytes[] = {static_cast<char>(static_cast<unsigned char>(lead)),
                            static_cast<char>(static_cast<unsigned char>(trail))};
      pairs[lead << 8 | trail] = decoder({bytes, 2});
    }
  }
  return pairs;
}

CodePagePtr buildWestern() {
  std::array<char16_t, 256> table{};
  for (unsigned byte = 0; byte < 256; ++byte) {
    table[byte] = byte >= 0x80 && byte < 0xA0 ? kWestern[byte - 0x80] : static_cast<char16_t>(byte);
  }
  return CodePage::singleByte(kWesternPage, table);
}

CodePagePtr build(int number) {
  if (number == kUtf8CodePage) return CodePage::utf8();
  if (number == kWesternPage) return buildWestern();
  const bool pairs = contains(kDoubleBytePages, number);
  if (!pairs && !contains(kSingleBytePages, number)) return nullptr;
  const CharacterDecoder decoder = systemDecoder(number);
  if (!decoder) return nullptr;
  const std::array<char16_t, 256> singles = singlesOf(decoder);
  return pairs ? CodePage::doubleByte(number, singles, pairsOf(decoder, singles))
               : CodePage::singleByte(number, singles);
}

}  // namespace

CodePagePtr codePageByNumber(int number) {
  // Built once: a page of pairs takes some milliseconds.
  static std::mutex mutex;
  static std::vector<CodePagePtr> built;
  const std::lock_guard<std::mutex> lock(mutex);
  for (const CodePagePtr& page : built) {
    if (page->number() == number) return page;
  }
  CodePagePtr page = build(number);
  if (page) built.push_back(page);
  return page;
}

std::vector<int> codePages() {
  std::vector<int> numbers{kUtf8CodePage};
  numbers.insert(numbers.end(), std::begin(kSingleBytePages), std::end(kSingleBytePages));
  numbers.insert(numbers.end(), std::begin(kDoubleBytePages), std::end(kDoubleBytePages));
  std::erase_if(numbers, [](int number) { return number != kUtf8CodePage && !systemDecoder(number); });
  numbers.push_back(kWesternPage);
  std::sort(numbers.begin() + 1, numbers.end());
  return numbers;
}

CodePagePtr codePageByName(std::string_view name) {
  std::string digits = lowerAsciiOf(name);
  if (digits == "utf-8" || digits == "utf8") return codePageByNumber(kUtf8CodePage);
  for (const std::string_view prefix : {"windows-", "cp"}) {
    if (!digits.starts_with(prefix)) continue;
    digits.erase(0, prefix.size());
    break;
  }
  constexpr std::size_t kMostDigits = 5;
  const bool number = !digits.empty() && digits.size() <= kMostDigits && digits.front() != '0' &&
                      digits.find_first_not_of("0123456789") == std::string::npos;
  return number ? codePageByNumber(std::stoi(digits)) : nullptr;
}

}  // namespace dravenna
