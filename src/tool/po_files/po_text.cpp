#include "tool/po_files/po_text.h"

#include <fmt/core.h>

#include <algorithm>

#include "platform/failure.h"
#include "text/text.h"
#include "tool/check/translation.h"
#include "tool/script/breaks.h"
#include "tool/script/exchange_file.h"

namespace dravenna {

namespace {

constexpr std::string_view kHexDigits = "0123456789abcdefABCDEF";
constexpr std::ptrdiff_t kSpeakerReach = 50;  // texts
constexpr char16_t kItself = 0xEF7F;          // what follows, from here to kLastOpaque, stands for itself
constexpr char16_t kFirstOpaque = 0xEF80;     // stands for the byte 0x80
constexpr char16_t kLastOpaque = 0xEFFF;

std::string utf8Of(std::u16string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (isHighSurrogate(unit)) {
      out.append(text.substr(at++, 2));
    } else if (unit >= 0xDC80 && unit <= 0xDCFF) {
      out.push_back(static_cast<char16_t>(kFirstOpaque + (unit - 0xDC80)));
    } else {
      if (unit >= kItself && unit <= kLastOpaque) out.push_back(kItself);
      out.push_back(unit);
    }
  }
  return toUtf8(out);
}

std::u16string wideOf(std::string_view utf8) {
  const std::u16string text = fromUtf8(utf8);
  std::u16string out;
  out.reserve(text.size());
  for (std::size_t at = 0; at < text.size(); ++at) {
    const bool itself =
        text[at] == kItself && at + 1 < text.size() && text[at + 1] >= kItself && text[at + 1] <= kLastOpaque;
    if (itself) ++at;
    const bool byte = !itself && text[at] >= kFirstOpaque && text[at] <= kLastOpaque;
    out.push_back(byte ? static_cast<char16_t>(0xDC80 + (text[at] - kFirstOpaque)) : text[at]);
  }
  return out;
}

}  // namespace

std::string poTextOf(const Codec& codec, std::string_view work) { return utf8Of(codec.decode(work)); }

std::string poNameOf(std::string_view name) { return utf8Of(fromUtf8(name)); }

std::optional<std::string> workOf(const Codec& codec, std::string_view text) {
  std::string work;
  return codec.encode(wideOf(text), work) == std::u16string::npos ? std::optional(work) : std::nullopt;
}

std::string fromPoText(const Codec& codec, std::string_view text, std::string_view before, std::string_view inFront) {
  const std::u16string wide = wideOf(text);
  std::string work;
  const std::size_t bad = codec.encode(wide, work);
  if (bad != std::u16string::npos) {
    throw Failure(fromUtf8(fmt::format("code page {} has no U+{:04X}; --codepage names another", codec.page().number(),
                                       static_cast<unsigned>(readUtf16(wide, bad).code))));
  }
  const auto breaks = breaksOf(codec, before, work, inFront);
  if (!breaks.empty()) throw Failure(fromUtf8(breaks[0].why));
  if (const char* const spoils = whatLeavesExport(work)) throw Failure(fromUtf8(spoils));
  return work;
}

std::vector<std::string> surroundingsOf(const LoadedScript& script, std::size_t record) {
  const Codec& codec = script.in.codec;
  const OutlineText& text = *script.records[record];
  std::vector<std::string> comments(1);
  const OutlineText* const first = script.outline.texts.data();
  for (const OutlineText* at = &text; at != first && &text - at < kSpeakerReach && at[-1].npc == text.npc; --at) {
    if (at[-1].segment != Segment::Title) continue;
    appendEscaped(codec, withoutColor(at[-1].text) + " ", comments[0]);
    break;
  }
  appendEscaped(codec, script.outline.commands[text.command], comments[0]);
  const auto neighbour = [&](const char* where, std::size_t other) {
    if (other >= script.records.size() || script.records[other]->npc != text.npc) return;
    const std::string plain = withoutColor(script.records[other]->text);
    if (!plain.empty()) comments.push_back(where + quotedText(codec, plain));
  };
  neighbour("before: ", record - 1);
  neighbour("behind: ", record + 1);
  std::string kept;
  const bool hex = text.text.starts_with("0x") && text.text.find_first_not_of(kHexDigits, 2) == std::string_view::npos;
  if (hex || !hasLetter(text.text)) {
    kept = " all of it";
  } else {
    for (const Token& token : tokensOf(text.text)) {
      if (token.kind != std::string_view("number")) appendEscaped(codec, " " + token.text, kept);
    }
  }
  if (!kept.empty()) comments.push_back("not to be translated:" + kept);
  return comments;
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
