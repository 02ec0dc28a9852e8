#include <gtest/gtest.h>

#include <random>

#include "batch/codec.h"
#include "batch/merge.h"
#include "batch/records.h"
#include "exchange/lxf.h"
#include "platform/system.h"

namespace dravenna {
namespace {

constexpr const char* kPages[] = {"1252", "874", "utf-8", "932", "936", "949", "950"};

// Pieces of scripts, of colour codes and of characters, in any order: lead bytes without a trail, trail bytes that look
// like `^` and `\`, half UTF-8, lone CR.
std::string randomScript(std::mt19937& random) {
  static const std::vector<std::string> pieces = {"mes \"",
                                                  "\"",
                                                  "\";\n",
                                                  "\";\r\n",
                                                  "menu \"",
                                                  "\",L_x,\"",
                                                  "select(\"",
                                                  "mapannounce \"a\",\"",
                                                  "if (a) ",
                                                  "^FF0000",
                                                  "^ff00",
                                                  "^",
                                                  "00FF00",
                                                  "[",
                                                  "]",
                                                  "//",
                                                  "\n",
                                                  "\r\n",
                                                  "\r",
                                                  " ",
                                                  "\t",
                                                  ",",
                                                  ";",
                                                  "(",
                                                  ")",
                                                  "hello",
                                                  "\x01",
                                                  "\\",
                                                  "\xE9",
                                                  "\xC3\xA9",
                                                  "\x81^",
                                                  "\x95\\",
                                                  "\x83\x5C",
                                                  "\xE0\xB8",
                                                  "\xA1",
                                                  "\x81",
                                                  "\xF0\x9F\x98\x80",
                                                  "\xB0\xA1",
                                                  std::string(1, '\0'),
                                                  "m\xC3\xA9s \"",
                                                  "MES \"",
                                                  "set @a, \""};
  std::uniform_int_distribution<std::size_t> pick(0, pieces.size() - 1);
  std::uniform_int_distribution<int> length(0, 120);
  std::string script;
  for (int i = length(random); i > 0; --i) script += pieces[pick(random)];
  return script;
}

// The document of the window: every line ended by CR LF.
std::u16string documentOf(const CodePage& page, std::string_view file) {
  std::string document;
  forEachLine(file, [&](const ScriptLine& line) { document.append(line.text).append("\r\n"); });
  return page.decode(document);
}

class BytesTest : public testing::TestWithParam<const char*> {
 protected:
  Codec codec{codePageByName(GetParam())};
  CommandLists wideLists{kDefaultAllowedCommands, kDefaultSpecialCommands};
  CommandLists byteLists{kDefaultAllowedCommands, kDefaultSpecialCommands, codec.wordPage()};
  std::mt19937 random{20240601};
};

TEST_P(BytesTest, ExportOverBytesIsTheExportOfTheDocument) {
  int withRecords = 0;
  for (int i = 0; i < 3000; ++i) {
    const std::string script = randomScript(random);
    std::string expected;
    codec.page().encode(writeLxf(documentOf(codec.page(), script), wideLists), expected);
    std::string buffer;
    std::string lxf;
    exportWork(codec.toWork(script, buffer), byteLists, false, lxf);
    ASSERT_EQ(codec.toFile(lxf, buffer), expected) << testing::PrintToString(script);
    withRecords += expected.empty() ? 0 : 1;
  }
  EXPECT_GT(withRecords, 500);
}

TEST_P(BytesTest, WorkBytesAndPlacesComeBack) {
  for (int i = 0; i < 2000; ++i) {
    const std::string script = randomScript(random);
    std::string there;
    std::string back;
    const std::string_view work = codec.toWork(script, there);
    ASSERT_EQ(codec.toFile(work, back), script);
    ASSERT_EQ(codec.decode(work), codec.page().decode(script));
    ASSERT_EQ(codec.units(work), codec.page().decode(script).size());
  }
}

TEST_P(BytesTest, ImportOfAnExportWithCodesChangesNothing) {
  for (int i = 0; i < 2000; ++i) {
    const std::string script = randomScript(random);
    std::string buffer;
    std::string lxf;
    const std::string_view work = codec.toWork(script, buffer);
    exportWork(work, byteLists, true, lxf);
    const Merge merge = mergeWork(codec, byteLists, work, lxf, true);
    ASSERT_EQ(merge.error, u"") << testing::PrintToString(script);
    ASSERT_EQ(merge.bytes, script);
    ASSERT_EQ(merge.changed, 0U);
  }
}

INSTANTIATE_TEST_SUITE_P(Pages, BytesTest, testing::ValuesIn(kPages), [](const auto& page) {
  return std::string(page.param) == "utf-8" ? std::string("utf8") : std::string(page.param);
});

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
