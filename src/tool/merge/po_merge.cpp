#include "tool/merge/po_merge.h"

#include <fmt/core.h>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <vector>

#include "platform/failure.h"
#include "text/text.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

using Lines = std::vector<std::string>;

struct Entry {
  std::string key;    // what its msgctxt and msgid say; empty for the header
  Lines raw;          // all of it
  Lines comments;     // but for the fuzzy flag and what was the msgid
  Lines previous;     // `#|`
  Lines head;         // msgctxt and msgid
  Lines translation;  // msgstr
  std::string text;   // what it says
  bool fuzzy = false;

  bool sameTranslation(const Entry& other) const { return text == other.text && fuzzy == other.fuzzy; }
};

struct PoDocument {
  std::vector<Entry> entries;
  std::unordered_map<std::string, std::size_t> byKey;

  const Entry* find(const std::string& key) const {
    const auto found = byKey.find(key);
    return found == byKey.end() ? nullptr : &entries[found->second];
  }
};

class PoReader {
 public:
  PoDocument read(std::string_view bytes, const char* side) {
    side_ = side;
    forEachLine(bytes, [&](const ScriptLine& line) { add(line); });
    endEntry();
    if (open_) document_.byKey.emplace(document_.entries.back().key = "#", document_.entries.size() - 1);
    return std::move(document_);
  }

 private:
  [[noreturn]] void fail(const char* why) const {
    throw Failure(fromUtf8(fmt::format("{} is no PO file that can be merged: line {}: {}", side_, line_, why)));
  }

  void add(const ScriptLine& line) {
    line_ = line.number + 1;
    const std::string_view text = line.text;
    if (text.find_first_not_of(" \t\r") == std::string_view::npos) return endEntry();
    const bool obsolete = text.starts_with("#~");
    if (text.starts_with("#|") || text.starts_with("#~|")) {
      add(entry(true).previous, text);
    } else if (text.starts_with('#') && !obsolete) {
      comment(text);
    } else {
      const std::size_t begin = text.find_first_not_of(" \t", obsolete ? 2 : 0);
      message(text, begin == std::string_view::npos ? std::string_view() : text.substr(begin), obsolete);
    }
  }

  void add(Lines& lines, std::string_view line) {
    lines.emplace_back(line);
    document_.entries.back().raw.emplace_back(line);
  }

  void comment(std::string_view text) {
    Entry& current = entry(true);
    const std::size_t fuzzy = text.starts_with("#,") ? text.find("fuzzy") : std::string_view::npos;
    if (fuzzy == std::string_view::npos) return add(current.comments, text);
    current.fuzzy = true;
    current.raw.emplace_back(text);
    const std::string_view behind = text.substr(fuzzy + 5);
    const std::string flags = std::string(text.substr(0, fuzzy)) +
                              std::string(behind.substr(std::min(behind.find_first_not_of(", "), behind.size())));
    const std::size_t last = flags.find_last_not_of(", ");
    if (last > 0) current.comments.push_back(flags.substr(0, last + 1));
  }

  void message(std::string_view line, std::string_view words, bool obsolete) {
    const std::size_t quote = words.find('"');
    const std::size_t last = words.rfind('"');
    if (quote == std::string_view::npos || quote == last) fail("no text in quotes");
    const std::string_view keyword = words.substr(0, quote);
    const std::string_view text = words.substr(quote + 1, last - quote - 1);
    if (keyword.starts_with("msgstr")) {
      if (entry(false).head.empty()) fail("a msgstr without a msgid");
      inTranslation_ = true;
    } else if (keyword.starts_with("msgid") || keyword.starts_with("msgctxt")) {
      Entry& current = entry(inTranslation_);
      if (current.key.empty() && obsolete) current.key = "~";
      if (!keyword.starts_with("msgid ")) current.key.push_back(keyword[3]);  // none for the header
    } else if (!keyword.empty() || !open_) {
      fail("neither msgid nor msgstr");
    }
    Entry& current = entry(false);
    add(inTranslation_ ? current.translation : current.head, line);
    (inTranslation_ ? current.text : current.key).append(text);
    if (inTranslation_ && !keyword.empty()) current.text.push_back('\n');
  }

  Entry& entry(bool fresh) {
    if (fresh && inTranslation_) endEntry();
    if (!open_) document_.entries.emplace_back();
    open_ = true;
    return document_.entries.back();
  }

  void endEntry() {
    if (open_ && !document_.entries.back().head.empty()) {
      if (document_.entries.back().translation.empty()) fail("a msgid without a msgstr");
      if (!document_.byKey.emplace(document_.entries.back().key, document_.entries.size() - 1).second) {
        fail("an entry that is there already");
      }
    } else if (open_) {
      return;  // comments on top: they belong to what follows
    }
    open_ = inTranslation_ = false;
  }

  const char* side_ = "";
  std::size_t line_ = 0;
  PoDocument document_;
  bool open_ = false;
  bool inTranslation_ = false;
};

// Lines that either side has and neither took out; those of theirs first.
Lines mergeLines(const Lines& base, const Lines& ours, const Lines& theirs) {
  const auto in = [](const Lines& lines, const std::string& line) {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  };
  if (ours == base || ours == theirs) return theirs;
  if (theirs == base) return ours;
  Lines merged;
  for (const std::string& line : theirs) {
    if (in(ours, line) || !in(base, line)) merged.push_back(line);
  }
  for (const std::string& line : ours) {
    if (!in(theirs, line) && !in(base, line)) merged.push_back(line);
  }
  // Those of translators, then #. and #: and #,
  const auto rank = [](const std::string& line) { return std::string_view(".:,").find(line.substr(1, 1)) + 1; };
  std::stable_sort(merged.begin(), merged.end(), [&](const auto& a, const auto& b) { return rank(a) < rank(b); });
  return merged;
}

std::string_view fieldOf(std::string_view line) { return line.substr(0, line.find(':')); }

// Fields of the header, a line each.
Lines mergeHeaders(const Lines& base, const Lines& ours, const Lines& theirs) {
  const auto valueIn = [](const Lines& lines, std::string_view field) {
    const auto found =
        std::find_if(lines.begin(), lines.end(), [&](const auto& line) { return fieldOf(line) == field; });
    return found == lines.end() ? std::string_view() : std::string_view(*found);
  };
  Lines merged;
  for (const std::string& line : ours) {
    const std::string_view before = valueIn(base, fieldOf(line));
    const std::string_view now = valueIn(theirs, fieldOf(line));
    const bool later = fieldOf(line).ends_with("-Date") && now > line;
    const bool take = !now.empty() && (line == before || (now != before && later));
    if (now.empty() && line == before) continue;
    merged.emplace_back(take ? now : std::string_view(line));
  }
  for (const std::string& line : theirs) {
    if (valueIn(ours, fieldOf(line)).empty() && valueIn(base, fieldOf(line)) != line) merged.push_back(line);
  }
  return merged;
}

class PoMerger {
 public:
  PoMerger(std::string_view base, std::string_view ours, std::string_view theirs, const ThreeWayOptions& options)
      : base_(PoReader().read(base, "BASE")),
        ours_(PoReader().read(ours, "OURS")),
        theirs_(PoReader().read(theirs, "THEIRS")),
        options_(options),
        ending_(ours.find("\r\n") == std::string_view::npos ? "\n" : "\r\n") {}

  MergedFile run() {
    std::size_t next = 0;  // of theirs
    newOfTheirs(next);
    for (const Entry& mine : ours_.entries) {
      const Entry* const now = theirs_.find(mine.key);
      if (now == nullptr) {
        if (stays(mine.key)) writeBlock({&mine.raw});
      } else {
        if (stays(mine.key)) merge(base_.find(mine.key), mine, *now);
        next = std::max(next, static_cast<std::size_t>(now - theirs_.entries.data()) + 1);
        newOfTheirs(next);
      }
    }
    return std::move(out_);
  }

 private:
  // Whether the result has the entry: what one side took out stays where the other changed it, and what is obsolete
  // only beside no entry in use.
  bool stays(const std::string& key) const {
    if (key.starts_with('~') && stays(key.substr(1))) return false;
    const Entry* const ours = ours_.find(key);
    const Entry* const theirs = theirs_.find(key);
    if (ours != nullptr && theirs != nullptr) return true;
    const Entry* const one = ours != nullptr ? ours : theirs;
    const Entry* const before = base_.find(key);
    return one != nullptr && (before == nullptr || !one->sameTranslation(*before));
  }

  // Entries that only theirs has, from `next` to one that ours has, too.
  void newOfTheirs(std::size_t& next) {
    for (; next < theirs_.entries.size(); ++next) {
      const Entry& entry = theirs_.entries[next];
      if (ours_.find(entry.key) != nullptr) return;
      if (stays(entry.key)) writeBlock({&entry.raw});
    }
  }

  void merge(const Entry* before, const Entry& ours, const Entry& theirs) {
    static const Entry kNothing;
    const Entry& base = before == nullptr ? kNothing : *before;
    if (ours.raw == theirs.raw || theirs.raw == base.raw) return writeBlock({&ours.raw});
    if (ours.raw == base.raw) return writeBlock({&theirs.raw});
    const Lines comments = mergeLines(base.comments, ours.comments, theirs.comments);
    if (ours.key.empty())
      return write(ours, comments, mergeHeaders(base.translation, ours.translation, theirs.translation));
    const bool keeps =
        theirs.sameTranslation(base) || ours.sameTranslation(theirs) || options_.onConflict == OnConflict::Ours;
    if (keeps) return write(ours, comments, ours.translation);
    if (ours.sameTranslation(base) || options_.onConflict == OnConflict::Theirs) {
      return write(theirs, comments, theirs.translation);
    }
    ++out_.conflicts;
    Lines lines;
    const auto side = [&](char mark, const Entry& entry) {
      lines.push_back(options_.marker(mark));
      lines.insert(lines.end(), entry.translation.begin(), entry.translation.end());
    };
    side('<', options_.swapped ? theirs : ours);
    side('=', options_.swapped ? ours : theirs);
    lines.push_back(options_.marker('>'));
    write(theirs.fuzzy ? theirs : ours, comments, lines);
  }

  void write(const Entry& entry, Lines comments, const Lines& translation) {
    if (entry.fuzzy) {
      const auto flags =
          std::find_if(comments.begin(), comments.end(), [](const auto& line) { return line.starts_with("#,"); });
      if (flags == comments.end()) {
        comments.emplace_back("#, fuzzy");
      } else {
        flags->insert(2, " fuzzy,");
      }
    }
    writeBlock({&comments, &entry.previous, &entry.head, &translation});
  }

  void writeBlock(std::initializer_list<const Lines*> parts) {
    if (!out_.bytes.empty()) out_.bytes.append(ending_);
    for (const Lines* const lines : parts) {
      for (const std::string& line : *lines) out_.bytes.append(line).append(ending_);
    }
  }

  PoDocument base_;
  PoDocument ours_;
  PoDocument theirs_;
  const ThreeWayOptions& options_;
  std::string_view ending_;
  MergedFile out_;
};

}  // namespace

MergedFile mergePo(std::string_view base, std::string_view ours, std::string_view theirs,
                   const ThreeWayOptions& options) {
  const bool sameEnds = (ours.find('\r') == std::string_view::npos) == (theirs.find('\r') == std::string_view::npos);
  MergedFile whole;
  whole.bytes = theirs;
  return base == ours && sameEnds ? whole : PoMerger(base, ours, theirs, options).run();
}

}  // namespace dravenna
