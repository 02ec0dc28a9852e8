// What every system's implementation of files and code pages must do.

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>

#include "platform/failure.h"
#include "platform/memory_file.h"
#include "platform/rescue_folder.h"
#include "platform/system.h"
#include "platform/text_streams.h"
#include "platform/tree_files.h"
#include "scratch_folder.h"
#include "text/text.h"

namespace dravenna {

namespace {

using namespace std::string_literals;
using Names = std::set<std::string>;

constexpr const char* kPages[] = {"874",  "932",  "936",  "949",  "950",  "1250", "1251", "1252",
                                  "1253", "1254", "1255", "1256", "1257", "1258", "65001"};

// Runs `call`, which must fail; gives the description.
template <typename Call>
std::string failureOf(Call call) {
  try {
    call();
  } catch (const Failure& failure) {
    EXPECT_FALSE(failure.description().empty());
    return toUtf8(failure.description());
  }
  ADD_FAILURE() << "no failure";
  return {};
}

// The lines of a text by the plain rule.
std::vector<std::u16string> linesOf(std::u16string_view text) {
  std::vector<std::u16string> lines;
  while (!text.empty()) {
    const std::size_t feed = text.find(u'\n');
    std::u16string_view line = text.substr(0, feed);
    if (feed != std::u16string_view::npos && line.ends_with(u'\r')) line.remove_suffix(1);
    lines.emplace_back(line);
    text = feed == std::u16string_view::npos ? std::u16string_view() : text.substr(feed + 1);
  }
  return lines;
}

std::vector<std::u16string> readLines(const std::unique_ptr<TextReader>& reader) {
  std::vector<std::u16string> lines;
  while (!reader->AtEndOfStream()) lines.emplace_back(reader->ReadLine());
  EXPECT_NE(failureOf([&] { reader->ReadLine(); }), "");
  reader->Close();
  return lines;
}

std::string replaced(TextFiles& files, const ScratchFolder& folder, std::u16string_view text) {
  const auto writer = files.CreateTextFile(folder.path("out"), Writing::Replace);
  writer->Write(text);
  writer->Close();
  return folder.get("out");
}

// Arbitrary bytes with so many line ends in 256.
const std::string& arbitraryBytes(unsigned lineEnds) {
  static std::map<unsigned, std::string> made;
  std::string& bytes = made[lineEnds];
  std::minstd_rand random(lineEnds);
  while (bytes.size() < 131073) {
    const auto pick = static_cast<unsigned>(random() >> 8);
    bytes += pick % 256 < lineEnds ? "\r\n"[pick % 2] : static_cast<char>(pick >> 8);
  }
  return bytes;
}

// A file of which a read gives a few bytes, the next one all others.
class TwoReads : public ByteSource {
 public:
  TwoReads(std::string_view bytes, std::size_t first) : bytes_(bytes), most_(first) {}

  std::size_t size() override { return 0; }
  std::size_t read(char* to, std::size_t size) override {
    const std::size_t count = bytes_.copy(to, std::min(size, std::exchange(most_, size)));
    bytes_.remove_prefix(count);
    return count;
  }
  void close() override {}

 private:
  std::string_view bytes_;
  std::size_t most_;
};

class EveryPage : public testing::TestWithParam<const char*> {
 protected:
  CodePagePtr page_ = codePageByName(GetParam());
  ScratchFolder folder_;
};

INSTANTIATE_TEST_SUITE_P(Pages, EveryPage, testing::ValuesIn(kPages));

TEST_P(EveryPage, GivesBackArbitraryBytes) {
  ASSERT_TRUE(page_);
  EXPECT_EQ(std::to_string(page_->number()), GetParam());
  const auto files = makeTextFiles(page_);
  for (const std::size_t size : {1u, 2u, 3u, 7u, 100u, 65535u, 65536u, 131073u}) {
    for (const unsigned lineEnds : {0u, 4u, 40u}) {
      const std::string bytes = arbitraryBytes(lineEnds).substr(0, size);
      folder_.put("in", bytes);
      const std::u16string text = files->OpenTextFile(folder_.path("in"))->ReadAll();
      ASSERT_EQ(text, page_->decode(bytes)) << size;
      ASSERT_EQ(replaced(*files, folder_, text), bytes) << size;
      ASSERT_EQ(readLines(files->OpenTextFile(folder_.path("in"))), linesOf(text)) << size;
    }
  }
}

TEST_P(EveryPage, CutsNothingAtAnyPlace) {
  // Two lines of what the page has beyond ASCII.
  std::string sample = "\r\r\n";
  for (int byte = 0x80; byte < 0x100; ++byte) sample += static_cast<char>(byte);
  sample += "\xE3\x81\x82\xF0\x9F\x98\x80\xE3\x81\r\n\x81\x40\x30\x81";
  for (std::size_t at = 1; at <= sample.size(); ++at) {
    ASSERT_EQ(readLines(makeTextReader(page_, std::make_unique<TwoReads>(sample, at))), linesOf(page_->decode(sample)))
        << at;
  }
}

TEST_P(EveryPage, RefusesOnlyTheCharacterThatItLacks) {
  std::mt19937 random(static_cast<unsigned>(page_->number()));
  for (int round = 0; round < 2000; ++round) {
    std::u16string text(1 + random() % 20, u'\0');
    for (char16_t& unit : text) unit = static_cast<char16_t>(random() % (1u << (7 + random() % 10)));
    std::string bytes, before, again;
    const std::size_t bad = page_->encode(text, bytes);
    if (bad != std::u16string::npos) page_->encode(text.substr(0, bad), before);
    ASSERT_TRUE(bad == std::u16string::npos || before == bytes);
    ASSERT_EQ(page_->encode(page_->decode(bytes), again), std::u16string::npos);
    ASSERT_EQ(again, bytes);
  }
}

TEST(TextFiles, ReadTheRestAfterSomeLines) {
  const ScratchFolder folder;
  const auto files = makeTextFiles(codePageByName("1252"));
  const std::string rest = std::string(200000, 'y') + "\r\nz";
  folder.put("in", "\xEF\xBB\xBF\x1A\r\n\nb\n" + rest);
  const auto reader = files->OpenTextFile(folder.path("in"));
  EXPECT_EQ(reader->ReadLine(), u"\xEF\xBB\xBF\x1A");
  EXPECT_EQ(reader->ReadLine(), u"");
  EXPECT_EQ(reader->ReadLine(), u"b");
  EXPECT_EQ(reader->ReadAll(), fromAscii(rest));
  EXPECT_TRUE(reader->AtEndOfStream());
  failureOf([&] { reader->ReadAll(); });
  folder.put("empty", "");
  EXPECT_TRUE(readLines(files->OpenTextFile(folder.path("empty"))).empty());
  failureOf([&] { files->OpenTextFile(folder.path("empty"))->ReadAll(); });
}

TEST(TextFiles, RefuseWhatIsNoFile) {
  const ScratchFolder folder;
  folder.put("file", "x");
  std::filesystem::create_directory(folder.file("folder"));
  const auto files = makeTextFiles(codePageByName("1252"));
  for (const char* const name : {"missing", "folder", "folder/missing/file"}) {
    failureOf([&] { files->OpenTextFile(folder.path(name)); });
    EXPECT_FALSE(files->fileExists(folder.path(name))) << name;
  }
  EXPECT_TRUE(files->fileExists(folder.path("file")));
  EXPECT_FALSE(files->fileExists(u""));
  for (const Writing writing : {Writing::InPlace, Writing::Replace}) {
    failureOf([&] { files->CreateTextFile(folder.path("folder"), writing); });
    failureOf([&] { files->CreateTextFile(folder.path("folder/missing/file"), writing); });
    failureOf([&] { files->CreateTextFile(u"", writing); });
  }
  EXPECT_EQ(folder.names(), (Names{"file", "folder"}));
}

TEST(TextFiles, WriteLines) {
  const ScratchFolder folder;
  const auto files = makeTextFiles(codePageByName("1252"));
  for (const Writing writing : {Writing::InPlace, Writing::Replace}) {
    folder.put("out", "what was there before, and is longer");
    const auto writer = files->CreateTextFile(folder.path("out"), writing);
    writer->WriteLine(u"caf\u00E9 \u20AC");
    writer->Write(u"a\nb");
    writer->WriteLine(u"");
    writer->Close();
    EXPECT_EQ(folder.get("out"), "caf\xE9 \x80\r\na\nb\r\n");
  }
  EXPECT_EQ(folder.names(), Names{"out"});
}

TEST(TextFiles, WithoutCloseAReplacedFileIsTheOldOne) {
  const ScratchFolder folder;
  const auto files = makeTextFiles(codePageByName("1252"));
  folder.put("out", "old");
  {
    const auto writer = files->CreateTextFile(folder.path("out"), Writing::Replace);
    writer->Write(std::u16string(200000, u'n'));
    EXPECT_EQ(folder.get("out"), "old");
  }
  EXPECT_EQ(folder.get("out"), "old");
  files->CreateTextFile(folder.path("new"), Writing::Replace)->Write(u"n");
  EXPECT_EQ(folder.names(), Names{"out"});
  files->CreateTextFile(folder.path("out"), Writing::InPlace)->Write(u"new");
  EXPECT_EQ(folder.get("out"), "new");
}

TEST(TextFiles, NameTheCharacterThatThePageCannotHold) {
  const ScratchFolder folder;
  const auto files = makeTextFiles(codePageByName("1252"));
  folder.put("out", "old");
  {
    const auto writer = files->CreateTextFile(folder.path("out"), Writing::Replace);
    writer->WriteLine(u"one");
    const std::string description = failureOf([&] { writer->Write(u"two\nthr\u0416ee"); });
    for (const char* const word : {"\xD0\x96", "U+0416", "line 3", "1252"}) {
      EXPECT_NE(description.find(word), std::string::npos) << description;
    }
    failureOf([&] { writer->Close(); });
  }
  EXPECT_EQ(folder.get("out"), "old");
  {
    const auto writer = files->CreateTextFile(folder.path("out"), Writing::InPlace);
    writer->WriteLine(u"one");
    EXPECT_NE(failureOf([&] { writer->Write(u"two\U0001F600"); }).find("U+1F600"), std::string::npos);
    writer->WriteLine(u"three");
    writer->Close();
  }
  EXPECT_EQ(folder.get("out"), "one\r\nthree\r\n");
  EXPECT_EQ(folder.names(), Names{"out"});
}

TEST(TextFiles, KeepForeignCharactersInPaths) {
  const ScratchFolder folder;
  const std::u16string path = folder.path("") + u"\u0416 \u00E9\u0E01 \U0001F600.txt";
  replaceBytes(path, "first\0"s);
  replaceBytes(path, "second\0\xFF"s);
  EXPECT_EQ(readBytes(path), "second\0\xFF"s);
  const auto files = makeTextFiles(codePageByName("1252"));
  EXPECT_TRUE(files->fileExists(path));
  EXPECT_EQ(files->OpenTextFile(path)->ReadAll(), u"second\0\u00FF"s);
  failureOf([&] { readBytes(folder.path("missing")); });
  failureOf([&] { replaceBytes(folder.path("missing/file"), ""); });
}

TEST(Trees, ReplaceManyFilesAtOnce) {
  const ScratchFolder folder;
  const auto files = makeTreeFiles();
  folder.put("a", "old a");
  folder.put("a.bak", "older a");
  folder.put("b", "old b");
  {
    Replacements replacements(*files, ".bak");
    replacements.stage(folder.file("a"), "new a");
    replacements.stage(folder.file("b"), "new b");
    replacements.stage(folder.file("c"), "new c");
    EXPECT_NE(failureOf([&] { replacements.stage(folder.file("missing/d"), ""); }).find("missing"), std::string::npos);
    EXPECT_EQ(folder.get("a") + folder.get("b"), "old aold b");
    EXPECT_EQ(replacements.commit(), std::vector<std::u16string>(3));
  }
  EXPECT_EQ(folder.get("a") + folder.get("b") + folder.get("c"), "new anew bnew c");
  EXPECT_EQ(folder.get("a.bak") + folder.get("a.bak2") + folder.get("b.bak"), "older aold aold b");
  { Replacements(*files).stage(folder.file("a"), "given up"); }
  files->append(folder.file("b"), "!");
  EXPECT_EQ(folder.get("b"), "new b!");
  EXPECT_NE(failureOf([&] { files->append(folder.file("missing"), "!"); }).find("missing"), std::string::npos);
  EXPECT_EQ(folder.names(), (Names{"a", "a.bak", "a.bak2", "b", "b.bak", "c"}));
}

TEST(CodePages, HaveTheirCharacters) {
  const std::tuple<const char*, const char*, const char16_t*> cases[] = {
      {"874", "\xA1\x80\xFB", u"\u0E01\u20AC\u0E5B"},
      {"932", "\x82\xA0\xB1\x83\x5C", u"\u3042\uFF71\u30BD"},
      {"936", "\xC4\xE3\x80", u"\u4F60\u20AC"},
      {"949", "\xC7\xD1", u"\uD55C"},
      {"950", "\xA4\xA4\xB3\x5C", u"\u4E2D\u8A31"},
      {"1250", "\xB9\xF8", u"\u0105\u0159"},
      {"1251", "\xC6\xFF", u"\u0416\u044F"},
      {"1252", "\x80\x9F\xE3", u"\u20AC\u0178\u00E3"},
      {"1253", "\xE1\xD9", u"\u03B1\u03A9"},
      {"1254", "\xDD\xFD", u"\u0130\u0131"},
      {"1255", "\xE0\xC0\xF9", u"\u05D0\u05B0\u05E9"},
      {"1256", "\xC7\xED", u"\u0627\u064A"},
      {"1257", "\xE6\xE0", u"\u0119\u0105"},
      {"1258", "\xE2\xEC\xF5", u"\u00E2\u0301\u01A1"},
      {"65001", "\xE0\xB8\x81\xF0\x9F\x98\x80", u"\u0E01\U0001F600"},
  };
  for (const auto& [name, bytes, text] : cases) {
    const CodePagePtr page = codePageByName(name);
    ASSERT_TRUE(page) << name;
    EXPECT_EQ(page->decode(bytes), text) << name;
    std::string back;
    EXPECT_EQ(page->encode(text, back), std::u16string_view::npos);
    EXPECT_EQ(back, bytes) << name;
  }
  for (const char* const name : {"cp1252", "CP1252", "windows-1252", "Windows-1252"}) {
    EXPECT_EQ(codePageByName(name)->number(), 1252) << name;
  }
  for (const char* const name : {"utf-8", "UTF8", "Utf-8", "65001"}) EXPECT_TRUE(codePageByName(name)->isUtf8());
  for (const char* const name : {"", "0", "437", "12520", "cp", "latin1", "windows-cp1252", "1252 "}) {
    EXPECT_FALSE(codePageByName(name)) << name;
  }
}

TEST(RescueFolderContract, AFileIsLeftBehindOnceNobodyHasItInUse) {
  const auto folder = makeRescueFolder();
  ASSERT_NE(folder, nullptr);
  const std::u16string suffix = u".contract" + decimal(std::random_device{}());
  const auto left = [&] {
    std::vector<RescueFolder::Entry> entries = folder->entries();
    std::erase_if(entries, [&](const auto& entry) { return !entry.path.ends_with(suffix); });
    return entries;
  };
  auto file = folder->create(suffix);
  file->append("one");
  file->flush();
  file->append("two");
  EXPECT_TRUE(left().empty());
  file.reset();
  const auto entries = left();
  ASSERT_EQ(entries.size(), 1u);
  EXPECT_EQ(entries[0].size, 6u);
  EXPECT_EQ(folder->read(entries[0].path, 6), "onetwo");
  failureOf([&] { folder->read(entries[0].path, 5); });
  folder->remove(entries[0].path);
  EXPECT_TRUE(left().empty());
}

TEST(MemoryFileContract, BytesAreThoseOfAFileThatIsOpenedByItsPath) {
  std::string bytes(300'000, 'x');
  bytes.replace(0, 6, "\x1A\r\n\0\n\r"s);
  const auto copy = [&](std::FILE* from, std::FILE* to) {
    std::string part(1000, '\0');
    while (const std::size_t size = std::fread(part.data(), 1, part.size(), from))
      std::fwrite(part.data(), 1, size, to);
  };
  const ScratchFolder folder;
  const std::string plain = folder.put("plain", bytes).string();
  EXPECT_EQ(bytesWrittenBy([&](const std::string& path) {
              std::FILE* const from = std::fopen(plain.c_str(), "rb");
              std::FILE* const to = std::fopen(path.c_str(), "wb");
              copy(from, to);
              std::fclose(from);
              std::fclose(to);
            }),
            bytes);
  readFromMemory(bytes, [&](const std::string& path) {
    std::FILE* const from = std::fopen(path.c_str(), "r");
    std::FILE* const to = std::fopen(plain.c_str(), "wb");
    copy(from, to);
    std::fclose(from);
    std::fclose(to);
  });
  EXPECT_EQ(folder.get("plain"), bytes);
  // Where the other side gives up, or does not begin, nobody waits.
  std::FILE* left = nullptr;
  failureOf([&] {
    readFromMemory(bytes, [&](const std::string& path) {
      left = std::fopen(path.c_str(), "r");
      throw Failure(u"enough");
    });
  });
  std::fclose(left);
  EXPECT_EQ(bytesWrittenBy([](const std::string&) {}), "");
  readFromMemory(bytes, [](const std::string&) {});
}

}  // namespace

}  // namespace dravenna
