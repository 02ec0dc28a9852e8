// Runs the tables beside it: input and result, one case a line (or two lines, for the scanner).
#include <gtest/gtest.h>

#include <fstream>

#include "color/color_field.h"
#include "color/color_model.h"
#include "color/color_pick.h"
#include "scan/line_scanner.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {
namespace {

// Cells and lines may hold \t \\ \uXXXX, and <empty>.
std::string unescaped(std::string_view cell) {
  std::string out;
  if (cell == "<empty>") return out;
  for (std::size_t i = 0; i < cell.size(); ++i) {
    if (cell[i] != '\\') {
      out.push_back(cell[i]);
    } else if (cell[++i] == 'u') {
      appendUtf8(static_cast<std::uint32_t>(std::stoul(std::string(cell.substr(i + 1, 4)), nullptr, 16)), out);
      i += 4;
    } else {
      out.push_back(cell[i] == 't' ? '\t' : cell[i]);
    }
  }
  return out;
}

struct Row {
  int line;
  std::vector<std::string> cells;
};

std::vector<Row> table(const char* name) {
  std::ifstream file(std::string(TABLES) + "/" + name);
  EXPECT_TRUE(file) << name;
  std::vector<Row> rows;
  std::string line;
  for (int number = 1; std::getline(file, line); ++number) {
    if (line.empty() || line[0] == '#') continue;
    Row row{number, {}};
    for (std::size_t from = 0; from <= line.size();) {
      const std::size_t tab = std::min(line.find('\t', from), line.size());
      row.cells.push_back(unescaped(std::string_view(line).substr(from, tab - from)));
      from = tab + 1;
    }
    rows.push_back(row);
  }
  EXPECT_FALSE(rows.empty()) << name;
  return rows;
}

template <class Char>
struct Letters {
  std::basic_string_view<Char> line;
  std::string letters = std::string(line.size(), '?');

  void fill(std::size_t begin, std::size_t end, char letter) {
    for (; begin < end; ++begin) letters[begin] = letter;
  }
  void plain(std::size_t begin, std::size_t end) { fill(begin, end, 'p'); }
  void quote(std::size_t at) { fill(at, at + 1, 'q'); }
  void error(std::size_t begin, std::size_t end) { fill(begin, end, 'e'); }
  void comment(std::size_t begin, std::size_t end) { fill(begin, end, 'c'); }
  void text(const QuotedText& quoted) {
    const Segment segment = classOf(line.substr(quoted.begin, quoted.end - quoted.begin), quoted);
    fill(quoted.begin, quoted.end, "pcqetmk"[static_cast<int>(segment)]);
  }
};

template <class Char>
std::string scanned(BasicLineScanner<Char>& scanner, std::basic_string_view<Char> line) {
  Letters<Char> sink{line};
  scanner.scan(line, sink);
  return sink.letters;
}

TEST(Scanner, ClassesEachLineAndFollowsTheCommand) {
  const CommandLists lists(kDefaultAllowedCommands, kDefaultSpecialCommands);
  LineScanner scanner(lists);
  ByteLineScanner bytes(lists);
  const std::vector<Row> rows = table("scanner.table");
  for (std::size_t i = 0; i + 1 < rows.size(); i += 2) {
    const std::string& line = rows[i].cells[0];
    EXPECT_EQ(scanned(scanner, TextView(fromUtf8(line))), rows[i + 1].cells[0]) << rows[i].line << ": " << line;
    EXPECT_EQ(scanned(bytes, std::string_view(line)), rows[i + 1].cells[0]) << rows[i].line << ": " << line;
  }
  EXPECT_EQ(scanner.ErrorLines, 2);
}

TEST(Words, CaseNeverMattersInAnyScript) {
  const TextView pairs[][2] = {{u"ÀÉÑŸŽ", u"àéñÿž"}, {u"ΆΩΣ", u"άως"}, {u"ЁЖЯІҐ", u"ёжяіґ"}, {u"ĞŞİI", u"ğşiı"},
                               {u"ŐŰŁĘ", u"őűłę"},   {u"ƠƯĐ", u"ơưđ"}, {u"ＡＺⅣ", u"ａｚⅳ"}, {u"ĄĖŪ", u"ąėū"}};
  for (const auto& [upper, lower] : pairs) {
    EXPECT_TRUE(equalIgnoringCase(upper, lower)) << toUtf8(lower);
    EXPECT_EQ(findIgnoringCase(u"__" + Text(upper), lower), 2u) << toUtf8(lower);
  }
  EXPECT_FALSE(equalIgnoringCase(u"é", u"e"));
  EXPECT_FALSE(equalIgnoringCase(u"ก", u"ข"));
}

TEST(Colors, CodesAreRemoved) {
  for (const Row& row : table("remove_color.tsv")) {
    EXPECT_EQ(toUtf8(RemoveColor(fromUtf8(row.cells[0]))), row.cells[1]) << row.line;
    std::string bytes;
    appendWithoutColor(std::string_view(row.cells[0]), bytes);
    EXPECT_EQ(bytes, row.cells[1]) << row.line;
  }
}

TEST(Colors, ModelAndField) {
  for (const Row& row : table("hsl.tsv")) {
    const auto color =
        HSLToRGB(static_cast<std::int16_t>(std::stoi(row.cells[0])), std::stoi(row.cells[1]), std::stoi(row.cells[2]));
    EXPECT_EQ(toUtf8(sixDigits(color)), row.cells[3]) << row.line;
  }
  for (const Row& row : table("field.tsv")) {
    EXPECT_EQ(toUtf8(sixDigits(fieldPixel(std::stoi(row.cells[0]), std::stoi(row.cells[1])))), row.cells[2])
        << row.line;
  }
  const std::int32_t lastHues[][2] = {{41, 254}, {84, 509}, {126, 764}, {169, 1019}, {211, 1274}, {254, 1529}};
  for (const auto& [row, hue] : lastHues) EXPECT_EQ(fieldHue(row), hue);
}

TEST(Colors, EveryPixelComesBackFromItsHueAndSaturation) {
  for (std::int32_t y = 0; y < kFieldHeight; ++y) {
    for (std::int32_t x = 0; x < kFieldWidth; ++x) {
      const std::uint32_t color = fieldPixel(x, y);
      const std::uint32_t strongest = std::max({color & 0xFF, color >> 8 & 0xFF, color >> 16});
      ASSERT_EQ(HSLToRGB(hueOf(color), SaturationOf(color), static_cast<std::int32_t>(strongest)), color)
          << x << "," << y;
      ASSERT_EQ(SaturationOf(color), x < 16 ? 0 : 255) << x << "," << y;
    }
  }
}

// Lengths of left and right context for a selection with so much text around it.
TEST(Colors, PreviewSharesSixtyCharacters) {
  struct Case {
    std::size_t left, selected, right, shownLeft, shownRight;
  };
  const Case cases[] = {{99, 1, 99, 29, 29}, {99, 58, 99, 1, 1},   {99, 59, 99, 0, 0}, {99, 10, 0, 50, 0},
                        {0, 10, 99, 0, 50},  {99, 11, 99, 24, 24}, {3, 10, 99, 3, 25}, {0, 70, 0, 0, 0}};
  for (const Case& c : cases) {
    const Text text = Text(c.left, u'l') + Text(c.selected, u's') + Text(c.right, u'r');
    const PreviewText preview =
        splitForPreview(text, static_cast<std::int32_t>(c.left), static_cast<std::int32_t>(c.selected));
    EXPECT_EQ(preview.strLeftText, Text(c.shownLeft, u'l')) << c.selected;
    EXPECT_EQ(preview.strSelText, Text(c.selected, u's')) << c.selected;
    EXPECT_EQ(preview.strRightText, Text(c.shownRight, u'r')) << c.selected;
    EXPECT_FALSE(preview.blnSampleText);
  }
  const PreviewText sample = splitForPreview(u"a^FF0000b", 1, 7);
  EXPECT_TRUE(sample.blnSampleText);
  EXPECT_EQ(sample.strLeftText + sample.strSelText + sample.strRightText, u"abc 123 abc 123 abs 123");
  EXPECT_EQ(coloredText(sample, u"00FF00"), u"^00FF00");
  // A code that the edge of the selection cuts is a code on neither side.
  EXPECT_EQ(splitForPreview(u"^FF0000b", 3, 5).strLeftText, u"^FF");
}

}  // namespace
}  // namespace dravenna
