#include "platform/registry_text.h"

#include <gtest/gtest.h>

#include "text/text.h"

namespace dravenna {

namespace {

using namespace std::string_literals;

const std::string kHead = "Windows Registry Editor Version 5.00\n";

// A tree in one line: path{name=string;name:type;...}
std::string shown(const RegistryTree& keys) {
  std::string out;
  for (const auto& [path, key] : keys) {
    out += toUtf8(key.path) + "{";
    for (const auto& [name, value] : key.values) {
      out += toUtf8(name);
      out += value.type == 1 ? "=" + toUtf8(value.string) : ":" + std::to_string(value.type);
      out += ";";
    }
    for (const std::string& line : key.unknown) out += line;
    out += "}";
  }
  return out;
}

TEST(RegistryText, Reads) {
  const struct {
    std::string text;
    const char* tree;
    bool damaged;
  } cases[] = {
      {"", "", false},
      {"\n \r\n", "", false},
      {kHead + "[A]\n\"x\"=\"1\"\n@=\"d\"\n", "A{=d;x=1;}", false},
      {"\xEF\xBB\xBF" + kHead + "[A\\B]\r\n\"x\" = \"1\" ; why\r\n", "A{}A\\B{x=1;; why}", false},
      {"REGEDIT4\n[A]\n\"a\\\\\\\"b\"=\"C:\\\\x \\\"y\\\" C:\\z\"\n", "A{a\\\"b=C:\\x \"y\" C:\\z;}", false},
      {kHead + "; c1\n[A]\n; c2\n", "{; c1}A{; c2}", false},
      {"; first\n" + kHead, "{; first}", false},
      {kHead + "[A]\n\"x\"=\"1\"\n[a]\n\"X\"=\"2\"\n\"y\"=\"3\"\n", "A{x=2;y=3;}", false},
      {kHead + "[A]\n\"x\"=\"1\"\n\"y\"=\"2\"\n\"X\"=-\n@=-\n", "A{y=2;}", false},
      {kHead + "[A\\B\\C]\n[A\\B2]\n[-a\\b]\n", "A{}A\\B2{}", false},
      {kHead + "[A]\n\"b\"=hex:0a,\\\n  0b\n\"d\"=dword:0000000A\n\"e\"=hex(2):41,00\n\"m\"=hex(7):\n\"q\"=HEX(b):00\n",
       "A{b:3;d:4;e:2;m:7;q:11;}", false},
      {kHead + "[A]\n\"x\"=hex(1):41,00,0d,\\\r\n  00, 42,00\r\n\"e\"=hex(1):\n", "A{e=;x=A\rB;}", false},
      {kHead + "[A [b]]\n[ C ]\n", " C {}A [b]{}", false},
      // Damaged: what can be read is read.
      {"[A]\n\"x\"=\"1\"\n", "A{x=1;}", true},
      {kHead + "rubbish\n[A]\n\"x\"=\"1\"\n", "A{x=1;}", true},
      {kHead + "[A]\n\"x\"=\"1\"\n\"y\"=\"2", "A{x=1;}", true},
      {kHead + "[A]\n\"x\"=\"1\"\n\"y\"=hex(1):41,\\", "A{x=1;}", true},
      {kHead + "[A]\n\"x\"=hex(1):41\n\"y\"=hex:zz\n\"z\"=what\n\"u\"\n", "A{}", true},
      {kHead + "[A]\n\"x\"=\"1\" more\n", "A{x=1;}", true},
      {kHead + "[A\n\"x\"=\"1\"\n[B]\n", "B{}", true},
      {kHead + "[]\n[\\A]\n[A\\\\B]\n[A\\]\n\"x\"=\"1\"\n", "", true},
      {kHead + "[A]\n\"caf\xE9\"=\"1\"\n\"x\"=\"caf\xE9\"\n", "A{x=caf\xE9;}", true},
      {std::string(100, '\0'), "", true},
      {"\xFF\xFE"s + "x", "", true},
  };
  for (const auto& [text, tree, damaged] : cases) {
    const RegistryText read = parseRegistryText(text);
    EXPECT_EQ(shown(read.keys), tree) << text;
    EXPECT_EQ(read.damaged, damaged) << text;
  }
}

TEST(RegistryText, ReadsUtf16) {
  const std::u16string text = u"Windows Registry Editor Version 5.00\r\n\r\n[A]\r\n\"\u0416\"=\"\u0E01\U0001F600\"\r\n";
  std::string bytes = "\xFF\xFE";
  for (const char16_t unit : text) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  const RegistryText read = parseRegistryText(bytes);
  EXPECT_FALSE(read.damaged);
  EXPECT_EQ(shown(read.keys), "A{\xD0\x96=\xE0\xB8\x81\xF0\x9F\x98\x80;}");
}

TEST(RegistryText, WritesControlsInShortLines) {
  RegistryTree keys;
  makeRegistryKey(keys, u"A").values[u"x"].string = std::u16string(40, u'\n');
  const std::string text = writeRegistryText(keys);
  EXPECT_NE(text.find("\"x\"=hex(1):0a,00,0a,00,"), std::string::npos) << text;
  for (std::size_t start = 0; start < text.size();) {
    const std::size_t end = text.find('\n', start);
    EXPECT_LE(end - start, 80u);
    start = end + 1;
  }
  EXPECT_EQ(parseRegistryText(text).keys, keys);
}

}  // namespace

}  // namespace dravenna
