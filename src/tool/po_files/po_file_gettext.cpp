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
  return bytesWrittenBy([&](const std::string& memory) {
    if (po_file_write(file.get(), memory.c_str(), &kHandler) == nullptr) throw Failure(u"PO file: cannot be made");
  });
}

namespace {

// The lines, from 1, of the messages that are not obsolete, the header among them.
std::vector<std::size_t> messageLines(std::string_view bytes) {
  std::vector<std::size_t> lines;
  forEachLine(bytes, [&](const ScriptLine& line) {
    const std::size_t word = line.text.find_first_not_of(" \t");
    if (word != std::string_view::npos && line.text.substr(word).starts_with("msgid") &&
        !line.text.substr(word).starts_with("msgid_plural")) {
      lines.push_back(line.number + 1);
    }
  });
  return lines;
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
  const std::vector<std::size_t> lines = messageLines(bytes);
  forEachLine(bytes, [&](const ScriptLine& line) {
    if (!line.text.starts_with('#') && holdsNul(line.text))
      throw Failure(fromUtf8(fmt::format("{}:{}: a NUL character in a string", path, line.number + 1)));
  });
  std::size_t messages = 0;
  const Iterator iterator(po_message_iterator(file.get(), nullptr));
  while (const po_message_t message = po_next_message(iterator.get())) {
    PoEntry entry;
    entry.context = orEmpty(po_message_msgctxt(message));
    entry.id = orEmpty(po_message_msgid(message));
    const bool obsolete = po_message_is_obsolete(message) != 0;
    if (!obsolete && messages < lines.size()) entry.ownLine = lines[messages];
    if (!obsolete) ++messages;
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
    (obsolete ? contents.obsolete : contents.entries).push_back(std::move(entry));
  }
  return contents;
}

}  // namespace dravenna
