#include <gtest/gtest.h>

#include "batch/codec.h"
#include "batch/command_names.h"
#include "batch/exchange_file.h"
#include "batch/findings.h"
#include "batch/globs.h"
#include "platform/failure.h"
#include "platform/system.h"

namespace dravenna {
namespace {

TEST(Globs, MatchNamesAndPaths) {
  const std::pair<const char*, const char*> matches[] = {{"*.txt", "a.txt"},
                                                         {"a*b*c", "aXbYbZc"},
                                                         {"npc/**", "npc/a/b.txt"},
                                                         {"**/x.txt", "x.txt"},
                                                         {"**/x.txt", "a/b/x.txt"},
                                                         {"a/**/x*.txt", "a/b/c/x1.txt"},
                                                         {"q_[0-9a].txt", "q_7.txt"},
                                                         {"[x", "[x"},
                                                         {"", ""}};
  const std::pair<const char*, const char*> others[] = {{"*.txt", "a.txt~"},         {"*.txt", "b/a.txt"},
                                                        {"a*b*c", "aXbYbZ"},         {"a/**/x*.txt", "a/x1/y.txt"},
                                                        {"q_[!0-9].txt", "q_7.txt"}, {"q_?.txt", "q_/.txt"}};
  for (const auto& [pattern, text] : matches) EXPECT_TRUE(matchesGlob(pattern, text)) << pattern << " " << text;
  for (const auto& [pattern, text] : others) EXPECT_FALSE(matchesGlob(pattern, text)) << pattern << " " << text;
  EXPECT_TRUE(matchesAny({"*.txt"}, "a/b/c.txt"));
  EXPECT_FALSE(matchesAny({"a/*.txt"}, "a/b/c.txt"));
}

TEST(ExchangeFile, TellsWhyItDoesNotFit) {
  const auto why = [](std::string_view bytes, std::size_t texts) { return whyNoFit(cutExchangeFile(bytes), texts); };
  EXPECT_EQ(why("1:a\r\n2:b\r\n", 2), "");
  EXPECT_EQ(why("", 0), "");
  EXPECT_NE(why("1:a\r\n2:b\r\n", 3).find("2 records, the script 3 texts"), std::string::npos);
  EXPECT_NE(why("1:a\n2:b\n", 2).find("LF"), std::string::npos);
  EXPECT_NE(why("1:a\r\n2:b", 2).find("no line end"), std::string::npos);
  EXPECT_NE(why("2:a\r\n1:b\r\n", 2).find("line 1 bears the number 2"), std::string::npos);
  EXPECT_NE(why("1:a\r\n01:b\r\n", 2).find("line 2"), std::string::npos);
  EXPECT_NE(why("1:a\r\n\r\n", 2).find("line 2"), std::string::npos);
}

TEST(SpoiltCodes, AreToldFromWholeOnes) {
  const auto kinds = [](std::string_view text) {
    std::string out;
    for (const SpoiltCode& spoilt : findSpoiltCodes(text))
      out += std::string(spoilt.kind) + "@" + std::to_string(spoilt.offset) + " ";
    return out;
  };
  EXPECT_EQ(kinds("^FF0000red^000000 and black"), "");
  EXPECT_EQ(kinds("^ FF0000red"), "color-blank@0 ");
  EXPECT_EQ(kinds("x^FF000red"), "color-short@1 ");
  EXPECT_EQ(kinds("red000000 "), "");
  EXPECT_EQ(kinds("red 000000 black"), "color-no-caret@4 ");
  EXPECT_EQ(kinds("1,000000 or 1000000 zeny"), "");
  EXPECT_EQ(kinds("^GG0000x"), "color-digits@0 ");
  EXPECT_EQ(kinds("^nItemID^501 ^_^ ^a"), "");
}

TEST(CommandPairs, ADamagedFileIsTold) {
  EXPECT_EQ(readCommandPairs(R"({"pairs":[{"name":"a","allowed":["mes","x"],"special":[]}]})").at(0).allowed,
            u",mes,x,");
  EXPECT_THROW(readCommandPairs("{"), Failure);
  EXPECT_THROW(readCommandPairs(R"({"pairs":[{"name":1}]})"), Failure);
}

TEST(Escapes, AreVisibleAndLossless) {
  const Codec western(codePageByName("1252"));
  const Codec utf8(codePageByName("utf-8"));
  const auto escaped = [](const Codec& codec, std::string_view text) {
    std::string out;
    appendEscaped(codec, text, out);
    return out;
  };
  const auto json = [](const Codec& codec, std::string_view text) {
    std::string out;
    appendJsonString(codec, text, out);
    return out;
  };
  EXPECT_EQ(escaped(western, "a\tb\\c\r\x01\x7F"), "a\\tb\\\\c\\r\\x01\\x7F");
  EXPECT_EQ(escaped(western, "\xE9\x81"), "\xC3\xA9\\x81");
  EXPECT_EQ(escaped(utf8, "\xC3\xA9\xFF\xF0\x9F\x98\x80"), "\xC3\xA9\\xFF\xF0\x9F\x98\x80");
  EXPECT_EQ(json(western, "say \"x\"\t\xE9\x81\x01"), "\"say \\\"x\\\"\\t\xC3\xA9\\udc81\\u0001\"");
}

}  // namespace
}  // namespace dravenna
