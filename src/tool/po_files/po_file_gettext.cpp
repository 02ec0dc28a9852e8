#include <fmt/core.h>
#include <gettext-po.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <type_traits>

#include "platform/failure.h"
#include "platform/memory_file.h"
#include "text/ascii.h"
#include "text/code_page.h"
#include "text/text.h"
#include "tool/po_files/po_file.h"
#include "tool/script/codec.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

thread_local const std::string* fileInUse = nullptr;  // whose bytes the library reads

// Throws out of the library: it must not go on after a fatal error, and nothing of it is used again.
void onError(int severity, po_message_t, const char* file, std::size_t line, std::size_t, int, const char* text) {
  if (severity == PO_SEVERITY_WARNING) return;
  throw Failure(fromUtf8(file == nullptr || fileInUse == nullptr ? fmt::format("PO file: {}", text)
                                                                 : fmt::format("{}:{}: {}", *fileInUse, line, text)));
}

void onError2(int severity, po_message_t first, const char* file, std::size_t line, std::size_t column, int multiline,
              const char* text, po_message_t, const char*, std::size_t, std::size_t, int, const char* text2) {
  onError(severity, first, file, line, column, multiline, fmt::format("{} {}", text, text2).c_str());
}

const po_xerror_handler kHandler{onError, onError2};

struct FreeFile {
  void operator()(po_file_t file) const { po_file_free(file); }
};
struct FreeIterator {
  void operator()(po_message_iterator_t iterator) const { po_message_iterator_free(iterator); }
};
using File = std::unique_ptr<po_file, FreeFile>;
using Iterator = std::unique_ptr<std::remove_pointer_t<po_message_iterator_t>, FreeIterator>;

std::string orEmpty(const char* text) { return text == nullptr ? std::string() : std::string(text); }

constexpr char kHeader[] =
    "Project-Id-Version: NPC scripts\n"
    "Report-Msgid-Bugs-To: \n"
    "PO-Revision-Date: YEAR-MO-DA HO:MI+ZONE\n"
    "Last-Translator: \n"
    "Language-Team: \n"
    "Language: \n"
    "MIME-Version: 1.0\n"
    "Content-Type: text/plain; charset=UTF-8\n"
    "Content-Transfer-Encoding: 8bit\n"
    "X-Generator: dravenna-lxf\n";

struct Free {
  void operator()(char* text) const { std::free(text); }
};
using Text = std::unique_ptr<char, Free>;

void insertHeader(po_message_iterator_t iterator, const std::string& language, const PoFile& contents) {
  const po_message_t header = po_message_create();
  Text fields(po_header_set_field(contents.header.empty() ? kHeader : contents.header.c_str(), "Content-Type",
                                  "text/plain; charset=UTF-8"));
  if (!language.empty()) fields.reset(po_header_set_field(fields.get(), "Language", language.c_str()));
  po_message_set_msgid(header, "");
  po_message_set_msgstr(header, fields.get());
  if (!contents.headerComments.empty()) po_message_set_comments(header, contents.headerComments.c_str());
  po_message_insert(iterator, header);
}

void insertEntry(po_message_iterator_t iterator, const PoEntry& entry, bool obsolete) {
  const po_message_t message = po_message_create();
  if (!entry.context.empty()) po_message_set_msgctxt(message, entry.context.c_str());
  po_message_set_msgid(message, entry.id.c_str());
  po_message_set_msgstr(message, entry.text.c_str());
  if (!entry.file.empty()) po_message_add_filepos(message, entry.file.c_str(), entry.line);
  if (entry.fuzzy) po_message_set_fuzzy(message, 1);
  if (obsolete) po_message_set_obsolete(message, 1);
  if (!entry.previousId.empty()) po_message_set_prev_msgid(message, entry.previousId.c_str());
  std::string comments;
  for (const std::string& comment : entry.comments) comments += comment + "\n";
  if (!comments.empty()) po_message_set_extracted_comments(message, comments.c_str());
  if (!entry.translatorComments.empty()) po_message_set_comments(message, entry.translatorComments.c_str());
  po_message_insert(iterator, message);
}

// The library knows no flags but fuzzy and those of formats that hold: the others go into what it has written, where a
// blank line ends each message.
std::string withFlags(std::string_view written, const PoFile& contents) {
  std::vector<std::string_view> flags(1);  // of the header
  for (const PoEntry& entry : contents.entries) flags.push_back(entry.flags);
  for (const PoEntry& entry : contents.obsolete) flags.push_back(entry.flags);
  std::string bytes;
  std::size_t message = 0;
  forEachLine(written, [&](const ScriptLine& line) {
    const std::string_view text = line.text;
    if (text.empty()) ++message;
    const bool behindComments = !text.empty() && (text[0] != '#' || text.starts_with("#|") || text.starts_with("#~"));
    const bool fuzzy = text.starts_with("#,");
    const bool here = message < flags.size() && !flags[message].empty() && (fuzzy || behindComments);
    if (here && behindComments) bytes.append("#, ").append(flags[message]).append("\n");
    bytes.append(text);
    if (here && fuzzy) bytes.append(", ").append(flags[message]);
    if (here) flags[message] = {};
    bytes.append(line.ending);
  });
  return bytes;
}

// The strings are taken as UTF-8 and nothing else. A file without a header, or in plain ASCII, may be.
void refuseOtherCharset(const std::string& path, po_file_t file, std::string_view bytes) {
  const char* const header = po_file_domain_header(file, nullptr);
  const Text type(header == nullptr ? nullptr : po_header_field(header, "Content-Type"));
  const std::string field = orEmpty(type.get());
  constexpr std::string_view kCharset = "charset=";
  const std::size_t at = field.find(kCharset);
  const std::string charset = at == std::string::npos ? std::string() : field.substr(at + kCharset.size());
  const std::string folded = lowerAsciiOf(charset);
  if (!folded.empty() && folded != "utf-8" && folded != "utf8" && folded != "us-ascii" && folded != "ascii") {
    throw Failure(fromUtf8(fmt::format("{}: its header names the character set {}, not UTF-8", path, charset)));
  }
  if (CodePage::utf8()->countUndefined(bytes) > 0) throw Failure(fromUtf8(path) + u": holds bytes that are no UTF-8");
}

}  // namespace

bool poFilesBuiltIn() { return true; }

std::string poFileBytes(const std::string& language, const PoFile& contents) {
  const File file(po_file_create());
  {
    const Iterator iterator(po_message_iterator(file.get(), nullptr));
    insertHeader(iterator.get(), language, contents);
    for (const PoEntry& entry : contents.entries) insertEntry(iterator.get(), entry, false);
    for (const PoEntry& entry : contents.obsolete) insertEntry(iterator.get(), entry, true);
  }
  fileInUse = nullptr;
  const std::string written = bytesWrittenBy([&](const std::string& memory) {
    if (po_file_write(file.get(), memory.c_str(), &kHandler) == nullptr) throw Failure(u"PO file: cannot be made");
  });
  return withFlags(written, contents);
}

namespace {

// What the library does not tell of a message.
struct RawMessage {
  std::size_t line;  // of its msgid, from 1
  std::string flags;
};

void addFlags(std::string_view line, std::string& flags) {
  constexpr std::string_view kBetween = " \t,";
  std::size_t end = 0;
  for (std::size_t at = 0; (at = line.find_first_not_of(kBetween, end)) != std::string_view::npos;) {
    end = std::min(line.find_first_of(kBetween, at), line.size());
    const std::string_view flag = line.substr(at, end - at);
    if (flag == "fuzzy") continue;
    if (!flags.empty()) flags.append(flags.ends_with(':') ? " " : ", ");  // `range: 0..9`
    flags.append(flag);
  }
}

// All messages, the header and obsolete ones among them, as the library gives them.
std::vector<RawMessage> rawMessagesOf(std::string_view bytes) {
  std::vector<RawMessage> messages;
  std::string flags;
  forEachLine(bytes, [&](const ScriptLine& line) {
    if (line.text.starts_with("#,")) addFlags(line.text.substr(2), flags);
    const std::size_t word = line.text.find_first_not_of(" \t", line.text.starts_with("#~") ? 2 : 0);
    if (word != std::string_view::npos && line.text.substr(word).starts_with("msgid") &&
        !line.text.substr(word).starts_with("msgid_plural")) {
      messages.push_back({line.number + 1, std::move(flags)});
      flags.clear();
    }
  });
  return messages;
}

// The library ends a string at a NUL, and what stands behind it is lost.
bool holdsNul(std::string_view line) {
  if (line.find('\0') != std::string_view::npos) return true;
  for (std::size_t at = line.find('\\'); at != std::string_view::npos; at = line.find('\\', at + 2)) {
    const bool hex = line.substr(at + 1).starts_with('x');
    const std::string_view digits = line.substr(std::min(line.size(), at + (hex ? 2 : 1)));
    const std::size_t zeros = std::min(digits.find_first_not_of('0'), digits.size());
    const std::size_t all = digits.find_first_not_of(hex ? "0123456789abcdefABCDEF" : "01234567");
    if (zeros > 0 && (zeros == std::min(all, digits.size()) || (!hex && zeros >= 3))) return true;
  }
  return false;
}

}  // namespace

PoFile readPoFile(TreeFiles& files, const std::string& path) {
  std::string bytes;
  files.readWhole(path, bytes);
  if (isUtf16(bytes)) throw Failure(fromUtf8(path) + u": it is UTF-16, and a PO file must be UTF-8");
  if (bytes.starts_with(kUtf8Mark)) throw Failure(fromUtf8(path) + u": it begins with a byte order mark");
  static std::mutex libraryMutex;
  const std::lock_guard lock(libraryMutex);
  File file;
  fileInUse = &path;
  readFromMemory(bytes, [&](const std::string& memory) { file.reset(po_file_read(memory.c_str(), &kHandler)); });
  if (!file) throw Failure(fromUtf8(path) + u": cannot be read");
  refuseOtherCharset(path, file.get(), bytes);
  PoFile contents;
  std::vector<RawMessage> raw = rawMessagesOf(bytes);
  forEachLine(bytes, [&](const ScriptLine& line) {
    if (!line.text.starts_with('#') && holdsNul(line.text))
      throw Failure(fromUtf8(fmt::format("{}:{}: a NUL character in a string", path, line.number + 1)));
  });
  std::size_t next = 0;
  const Iterator iterator(po_message_iterator(file.get(), nullptr));
  while (const po_message_t message = po_next_message(iterator.get())) {
    PoEntry entry;
    entry.context = orEmpty(po_message_msgctxt(message));
    entry.id = orEmpty(po_message_msgid(message));
    if (next < raw.size()) {
      entry.ownLine = raw[next].line;
      entry.flags = std::move(raw[next].flags);
      ++next;
    }
    if (entry.context.empty() && entry.id.empty()) {
      contents.header = orEmpty(po_message_msgstr(message));
      contents.headerComments = orEmpty(po_message_comments(message));
      continue;
    }
    entry.translatorComments = orEmpty(po_message_comments(message));
    entry.text = orEmpty(po_message_msgstr(message));
    entry.fuzzy = po_message_is_fuzzy(message) != 0;
    entry.previousId = orEmpty(po_message_prev_msgid(message));
    if (const po_filepos_t place = po_message_filepos(message, 0); place != nullptr) {
      entry.file = orEmpty(po_filepos_file(place));
      const std::size_t line = po_filepos_start_line(place);
      entry.line = line == static_cast<std::size_t>(-1) ? 0 : line;
    }
    (po_message_is_obsolete(message) != 0 ? contents.obsolete : contents.entries).push_back(std::move(entry));
  }
  return contents;
}

}  // namespace dravenna
