#include "tool/po/po_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "platform/failure.h"
#include "text/text.h"
#include "tool/script/breaks.h"
#include "tool/script/merge.h"

namespace dravenna {

namespace {

constexpr char16_t kFirstOpaque = 0xEF80;  // stands for the byte 0x80
constexpr char16_t kLastOpaque = 0xEFFF;

std::string utf8Of(std::u16string text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (isHighSurrogate(text[at])) {
      ++at;
    } else if (text[at] >= 0xDC80 && text[at] <= 0xDCFF) {
      text[at] = static_cast<char16_t>(kFirstOpaque + (text[at] - 0xDC80));
    }
  }
  return toUtf8(text);
}

}  // namespace

std::string poTextOf(const Codec& codec, std::string_view work) { return utf8Of(codec.decode(work)); }

std::string poNameOf(std::string_view name) { return utf8Of(fromUtf8(name)); }

std::string fromPoText(const Codec& codec, std::string_view text, std::string_view before) {
  std::u16string wide = fromUtf8(text);
  for (char16_t& unit : wide) {
    if (unit >= kFirstOpaque && unit <= kLastOpaque) unit = static_cast<char16_t>(0xDC80 + (unit - kFirstOpaque));
  }
  std::string work;
  const std::size_t bad = codec.encode(wide, work);
  if (bad != std::u16string::npos) {
    throw Failure(fromUtf8(fmt::format("code page {} has no U+{:04X}; --codepage names another", codec.page().number(),
                                       static_cast<unsigned>(readUtf16(wide, bad).code))));
  }
  if (const auto breaks = breaksOf(codec, before, work); !breaks.empty()) throw Failure(fromUtf8(breaks[0].why));
  if (const char* const spoils = whatLeavesExport(work)) throw Failure(fromUtf8(spoils));
  return work;
}

bool fitsPo(std::string_view work) {
  return !work.empty() && std::none_of(work.begin(), work.end(), [](char c) {
    return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7F;
  });
}

std::string PoContexts::next(const LoadedScript& script, const OutlineText& text) {
  std::string npc = poTextOf(codec_, script.outline.npcs[text.npc]);
  std::replace_if(
      npc.begin(), npc.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, ' ');
  const std::size_t number = ++counts_[npc];
  return fmt::format("{} | {} | {}", file_, npc, number);
}

}  // namespace dravenna
