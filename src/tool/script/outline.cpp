#include "tool/script/outline.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <unordered_map>

#include "exchange/records.h"
#include "scan/line_scanner.h"
#include "text/ascii.h"
#include "text/fnv1a.h"
#include "tool/script/align.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

// Words behind which a new page of dialogue begins.
constexpr std::array<std::string_view, 21> kPageEnds = {
    "next",    "close", "close2", "close3", "end",     "return",   "goto", "if",    "else", "switch", "case",
    "default", "menu",  "select", "prompt", "callsub", "callfunc", "for",  "while", "do",   "break"};

constexpr auto kWordBytes = [] {
  std::array<bool, 256> bytes{};
  for (const char c : std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_")) {
    bytes[static_cast<unsigned char>(c)] = true;
  }
  return bytes;
}();

bool isWordByte(char c) { return kWordBytes[static_cast<unsigned char>(c)]; }

// Bit n of the length: a word of it begins with the n-th letter.
constexpr auto kPageEndLetters = [] {
  std::array<std::uint32_t, 9> letters{};
  for (const std::string_view word : kPageEnds) letters[word.size()] |= 1U << (word[0] - 'a');
  return letters;
}();

bool endsPage(std::string_view word) {
  if (word.size() >= kPageEndLetters.size()) return false;
  const char first = lowerAscii(word[0]);
  if (first < 'a' || first > 'z' || (kPageEndLetters[word.size()] >> (first - 'a') & 1U) == 0) return false;
  std::array<char, 8> folded{};
  std::transform(word.begin(), word.end(), folded.begin(), lowerAscii<char>);
  return std::find(kPageEnds.begin(), kPageEnds.end(), std::string_view(folded.data(), word.size())) != kPageEnds.end();
}

class OutlineBuilder {
 public:
  OutlineBuilder(const CommandLists& lists, OutlineOf what, Outline& outline)
      : scanner_(lists), what_(what), dialogue_(what == OutlineOf::Dialogue), outline_(outline) {
    outline_.commands.emplace_back();
    outline_.npcs.emplace_back();
    commandIndex_.emplace(std::string(), 0);
  }

  void add(const ScriptLine& line) {
    line_ = line;
    if (dialogue_) npcHeader();
    if (dialogue_) label();
    scanner_.scan(line.text, *this);
  }

  void plain(std::size_t begin, std::size_t end) {
    if (what_ == OutlineOf::Texts) return;
    const std::string_view code = line_.text.substr(0, end);
    for (std::size_t at = begin; at < end;) {
      if (!isWordByte(code[at])) {
        mark(code[at++]);
        continue;
      }
      const std::size_t start = at;
      while (at < end && isWordByte(code[at])) ++at;
      word(code.substr(start, at - start));
    }
  }
  void quote(std::size_t) {}
  void comment(std::size_t, std::size_t) {}
  void error(std::size_t begin, std::size_t end) {
    outline_.errors.push_back({line_.text, line_.text.substr(begin, end - begin), line_.number});
  }
  void text(const QuotedText& quoted) {
    OutlineText text{};
    text.text = line_.text.substr(quoted.begin, quoted.end - quoted.begin);
    text.line = line_.text;
    text.lineNumber = line_.number;
    text.begin = quoted.begin;
    text.segment = classOf(text.text, quoted);
    text.allowed = quoted.allowed;
    text.firstOfSpecial = quoted.firstOfSpecial;
    text.record = recordTextOf(text.text, quoted, buffer_).has_value();
    text.inMenu = menu_ != Menu::None;
    text.command = commandNumber();
    text.npc = static_cast<std::uint32_t>(outline_.npcs.size() - 1);
    if (dialogue_ && (text.record || text.segment == Segment::Title)) enterPage();
    text.page = outline_.pages == 0 ? 0 : outline_.pages - 1;
    outline_.texts.push_back(text);
  }

 private:
  enum class Menu { None, Call, Statement };
  static constexpr std::uint64_t kNoCode = 0xCBF29CE484222325;

  void beginMenu(Menu menu) {
    menu_ = menu;
    depth_ = 0;
  }

  // A call ends with its parenthesis, a statement with `;`.
  void mark(char c) {
    if (c == '}') pageEnds_ = true;
    if (c == '(') ++depth_;
    if (c == ')' && --depth_ <= 0 && menu_ == Menu::Call) menu_ = Menu::None;
    if (c == ';') menu_ = Menu::None;
    if (dialogue_ && c != ' ' && c != '\t') codeBefore_ = fnv1a(codeBefore_, c);
  }

  void word(std::string_view word) {
    if (dialogue_) codeBefore_ = std::accumulate(word.begin(), word.end(), codeBefore_, fnv1a);
    if (!endsPage(word)) return;
    pageEnds_ = true;
    const char first = lowerAscii(word[0]);
    const char second = lowerAscii(word[1]);
    if (first == 's' && second == 'e') beginMenu(Menu::Call);
    if (first == 'p') beginMenu(Menu::Call);
    if (first == 'm') beginMenu(Menu::Statement);
  }

  void enterPage() {
    if (pageEnds_ || outline_.pages == 0) {
      ++outline_.pages;
      outline_.pageKeys.push_back(codeBefore_);
      pageEnds_ = false;
    }
    codeBefore_ = kNoCode;
  }

  std::uint32_t commandNumber() {
    const std::string_view command = scanner_.tracker().ActiveCommand.word;
    if (command == outline_.commands[lastCommand_]) return lastCommand_;
    const auto [found, fresh] = commandIndex_.emplace(command, static_cast<std::uint32_t>(outline_.commands.size()));
    if (fresh) outline_.commands.emplace_back(command);
    return lastCommand_ = found->second;
  }

  // place TAB script TAB name TAB ...
  void npcHeader() {
    const std::string_view line = line_.text;
    const std::size_t first = line.find('\t');
    if (first == std::string_view::npos || first == 0 || line.substr(0, 2) == "//") return;
    const std::size_t second = line.find('\t', first + 1);
    if (second == std::string_view::npos || line.substr(first + 1, second - first - 1) != "script") return;
    outline_.npcs.push_back(line.substr(second + 1, std::min(line.find('\t', second + 1), line.size()) - second - 1));
    pageEnds_ = true;
  }

  // A word with a colon at the beginning of a line.
  void label() {
    const std::string_view line = line_.text;
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string_view::npos) return;
    std::size_t end = begin;
    while (end < line.size() && isWordByte(line[end])) ++end;
    if (end == begin || end == line.size() || line[end] != ':' || line.substr(end, 2) == "::") return;
    outline_.labels.push_back(line.substr(begin, end - begin));
    outline_.labelNpcs.push_back(static_cast<std::uint32_t>(outline_.npcs.size() - 1));
    pageEnds_ = true;
  }

  ByteLineScanner scanner_;
  OutlineOf what_;
  bool dialogue_;
  Outline& outline_;
  std::unordered_map<std::string, std::uint32_t> commandIndex_;
  std::string buffer_;
  ScriptLine line_{};
  std::uint32_t lastCommand_ = 0;
  std::uint64_t codeBefore_ = kNoCode;  // a number for the code since the last text of a page, blanks aside
  bool pageEnds_ = false;
  Menu menu_ = Menu::None;
  int depth_ = 0;
};

}  // namespace

Outline outlineOf(std::string_view work, const CommandLists& lists, OutlineOf what) {
  Outline outline;
  outline.texts.reserve(work.size() / 48);  // a rough guess; growing it copies
  OutlineBuilder builder(lists, what, outline);
  if (what != OutlineOf::Texts) {
    forEachLine(work, [&](const ScriptLine& line) {
      builder.add(line);
      ++outline.lines;
    });
    return outline;
  }
  std::size_t quote = work.find('"');
  forEachLine(work, [&](const ScriptLine& line) {
    ++outline.lines;
    const std::size_t end = line.begin + line.text.size();
    if (quote >= end) return;
    builder.add(line);
    quote = work.find('"', end);
  });
  return outline;
}

std::string withoutColor(std::string_view text) {
  std::string buffer;
  return std::string(withoutColor(text, buffer));
}

bool hasLetter(std::string_view text) {
  std::string buffer;
  const std::string_view plain = withoutColor(text, buffer);
  return std::any_of(plain.begin(), plain.end(), [](char c) {
    return static_cast<unsigned char>(c) >= 0x80 || (lowerAscii(c) >= 'a' && lowerAscii(c) <= 'z');
  });
}

}  // namespace dravenna
