#include "tool/merge/merge_file.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>
#include <unordered_set>

#include "platform/failure.h"
#include "text/ascii.h"
#include "text/high_bytes.h"
#include "text/text.h"
#include "tool/merge/po_merge.h"
#include "tool/script/align.h"
#include "tool/script/contents.h"
#include "tool/script/script_lines.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

constexpr std::size_t kMostBytes = std::size_t{64} << 20;

void refuseWhatIsNoText(const char* side, std::string_view bytes) {
  const auto refuse = [&](std::string_view why) { throw Failure(fromUtf8(fmt::format("{} {}", side, why))); };
  if (bytes.size() > kMostBytes) refuse("has more than 64 MiB");
  if (isUtf16(bytes)) refuse("is UTF-16");
  if (bytes.find('\0') != std::string_view::npos) refuse("is binary");
}

// Whether the base is in the code page of ours: it has more lines with letters beyond ASCII of them than of theirs.
bool baseIsLikeOurs(std::string_view base, std::string_view ours, std::string_view theirs) {
  const auto highLines = [](std::string_view bytes) {
    std::unordered_set<std::string_view> lines;
    forEachLine(bytes, [&](const ScriptLine& line) {
      if (!isAscii(line.text)) lines.insert(line.text);
    });
    return lines;
  };
  const auto baseLines = highLines(base);
  const auto common = [&](std::string_view bytes) {
    const auto lines = highLines(bytes);
    return std::count_if(lines.begin(), lines.end(), [&](std::string_view line) { return baseLines.contains(line); });
  };
  return common(ours) > common(theirs);
}

// The code pages of base, ours and theirs.
std::array<CodePagePtr, 3> pagesOf(std::string_view base, std::string_view ours, std::string_view theirs,
                                   const MergeWish& wish) {
  if (wish.theirPage != nullptr) {
    return {baseIsLikeOurs(base, ours, theirs) ? wish.page : wish.theirPage, wish.page, wish.theirPage};
  }
  const std::array<HighBytes, 3> high = {highBytesOf(base), highBytesOf(ours), highBytesOf(theirs)};
  const auto any = [&](HighBytes kind) { return std::find(high.begin(), high.end(), kind) != high.end(); };
  const bool unsure = any(HighBytes::OneSequence);
  if (any(HighBytes::Other) && (unsure || (wish.pageNamed && any(HighBytes::Utf8)))) {
    throw Failure(u"one side is UTF-8, another is not: --codepage and --their-codepage tell them apart");
  }
  const bool utf8 = any(HighBytes::Utf8) && !wish.pageNamed;
  std::array<CodePagePtr, 3> pages;
  for (std::size_t i = 0; i < 3; ++i) {
    pages[i] = utf8 && high[i] != HighBytes::Other ? CodePage::utf8() : wish.page;
  }
  return pages;
}

std::string bytesOf(const Codec& codec, std::string_view work) {
  std::string bytes;
  const std::u16string text = codec.decode(work);
  const std::size_t bad = codec.page().encode(text, bytes);
  if (bad == std::u16string::npos) return bytes;
  const auto line = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(bad), u'\n') + 1;
  throw Failure(fromUtf8(fmt::format("code page {} has no U+{:04X}, which line {} of the result needs",
                                     codec.page().number(), static_cast<unsigned>(readUtf16(text, bad).code), line)));
}

// `npc/guard.txt:3: to translate: "New."; was "Old.", translated "Viejo."`
std::string listed(const Codec& codec, const std::string& name, const MergeNote& note) {
  std::string line = fmt::format("{}:{}: ", shownName(name), note.line);
  if (note.kind == MergeNote::Kind::Translate) {
    line += "to translate: " + quoted(codec, note.now);
    if (!note.before.empty()) line += "; was " + quoted(codec, note.before);
    if (!note.translation.empty()) line += ", translated " + quoted(codec, note.translation);
  } else {
    line += "to look at: ";
    if (!note.before.empty()) line += quoted(codec, note.before) + " -> ";
    line += quoted(codec, note.now);
    line += note.translation.empty() ? "; its line has changed here" : "; stays " + quoted(codec, note.translation);
  }
  return line + "\n";
}

enum class FileKind { Script, Plain, Exchange, Po };

FileKind kindOf(const std::string& name, std::initializer_list<std::string_view> versions, const CommandLists& lists) {
  const std::string folded = lowerAsciiOf(name);
  if (folded.ends_with(".lxf")) return FileKind::Exchange;
  if (folded.ends_with(".po") || folded.ends_with(".pot")) return FileKind::Po;
  return std::any_of(versions.begin(), versions.end(),
                     [&](std::string_view version) { return contentsOf(version, lists) == Contents::Script; })
             ? FileKind::Script
             : FileKind::Plain;
}

}  // namespace

MergedFile mergeFile(const std::string& base, const std::string& ours, const std::string& theirs,
                     const CommandLists& lists, const MergeWish& wish) {
  refuseWhatIsNoText("BASE", base);
  refuseWhatIsNoText("OURS", ours);
  refuseWhatIsNoText("THEIRS", theirs);
  MergedFile merged;
  if (theirs == ours || theirs == base) {
    merged.bytes = ours;
    return merged;
  }
  const std::array<CodePagePtr, 3> pages = pagesOf(base, ours, theirs, wish);
  const bool wide = pages[0]->number() != pages[1]->number() || pages[2]->number() != pages[1]->number();
  const FileKind kind = kindOf(wish.name, {base, ours, theirs}, lists);
  if (kind == FileKind::Po) return mergePo(base, ours, theirs, wish.way);

  const Codec codec(pages[1], wide);
  std::string buffers[4];
  const auto documentOf = [&](const std::string& bytes, std::size_t side) {
    const std::string_view work = Codec(pages[side], wide).toWork(bytes, buffers[side]);
    return kind == FileKind::Script     ? scriptDocument(work, lists)
           : kind == FileKind::Exchange ? exchangeDocument(work)
                                        : plainDocument(work);
  };
  ThreeWayOptions way = wish.way;
  way.numbered = kind == FileKind::Exchange;
  if (kind == FileKind::Exchange && way.onConflict == OnConflict::Smart) way.onConflict = OnConflict::Markers;
  ThreeWay result = mergeThreeWay(codec, documentOf(base, 0), documentOf(ours, 1), documentOf(theirs, 2), way);
  merged.conflicts = result.conflicts;
  if (wide) {
    merged.bytes = bytesOf(codec, result.work);
  } else {
    const bool direct = codec.toFile(result.work, buffers[3]).data() == result.work.data();
    merged.bytes = std::move(direct ? result.work : buffers[3]);
  }
  if (kind != FileKind::Script) return merged;
  for (const MergeNote& note : result.notes) {
    merged.list += listed(codec, wish.name, note);
    ++(note.kind == MergeNote::Kind::Translate ? merged.toTranslate : merged.toLookAt);
  }
  return merged;
}

}  // namespace dravenna
