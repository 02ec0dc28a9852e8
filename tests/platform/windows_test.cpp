// What only Windows has: real keys, attributes, long paths.

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <sstream>

#include "platform/system.h"
#include "platform/tree_files.h"
#include "platform/windows/files.h"
#include "scratch_folder.h"
#include "settings/registry.h"
#include "text/text.h"

namespace dravenna {

namespace {

using namespace std::string_literals;
using Names = std::set<std::string>;

constexpr std::uint32_t kRoot = HKEY_LOCAL_MACHINE_ID;
constexpr char16_t kKey[] = u"Software\\Halvex\\DravennaWindowsTest";
constexpr wchar_t kWideKey[] = L"Software\\Halvex\\DravennaWindowsTest";

class RealRegistry : public testing::Test {
 protected:
  RealRegistry() {
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kWideKey);
    ::RegCreateKeyW(HKEY_LOCAL_MACHINE, kWideKey, &key_);
  }
  ~RealRegistry() override {
    ::RegCloseKey(key_);
    ::RegDeleteTreeW(HKEY_LOCAL_MACHINE, kWideKey);
  }

  void store(const wchar_t* name, DWORD type, const void* data, std::size_t bytes) {
    ASSERT_EQ(::RegSetValueExW(key_, name, 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(bytes)), 0);
  }
  std::u16string get(std::u16string_view name) { return registry_.GetRegValue(kRoot, kKey, name, u"default"); }

  // As a program reads it that knows only 8-bit text.
  std::string eightBit(const char* name) {
    char data[64];
    DWORD size = sizeof data;
    DWORD type = 0;
    if (::RegQueryValueExA(key_, name, nullptr, &type, reinterpret_cast<BYTE*>(data), &size) != 0) return "missing";
    EXPECT_EQ(type, DWORD{REG_SZ});
    return {data, size};
  }

  HKEY key_ = nullptr;
  std::unique_ptr<RegistryCalls> calls_ = makeRegistry();
  Registry registry_{*calls_};
};

TEST_F(RealRegistry, ValuesOfOtherTypesAreMissing) {
  const DWORD number = 65;
  store(L"Number", REG_DWORD, &number, sizeof number);
  store(L"Path", REG_EXPAND_SZ, L"%TEMP%", sizeof L"%TEMP%");
  store(L"Bytes", REG_BINARY, "abc", 3);
  store(L"Many", REG_MULTI_SZ, L"a\0b\0", sizeof L"a\0b\0");
  store(L"Word", REG_SZ, L"word", sizeof L"word");
  for (const char16_t* const name : {u"Number", u"Path", u"Bytes", u"Many"}) EXPECT_EQ(get(name), u"default");
  EXPECT_EQ(get(u"Word"), u"word");
}

TEST_F(RealRegistry, StringsEndAtTheirFirstNul) {
  store(L"Cut", REG_SZ, L"ab\0cd", sizeof L"ab\0cd");
  store(L"Bare", REG_SZ, L"whole", 10);
  store(L"Empty", REG_SZ, L"", 2);
  store(L"Nothing", REG_SZ, nullptr, 0);
  store(L"Long", REG_SZ, std::wstring(40000, L'x').c_str(), 80002);
  EXPECT_EQ(get(u"Cut"), u"ab");
  EXPECT_EQ(get(u"Bare"), u"whole");
  EXPECT_EQ(get(u"Empty"), u"");
  EXPECT_EQ(get(u"Nothing"), u"");
  EXPECT_EQ(get(u"Long"), u"default");
}

TEST_F(RealRegistry, OtherProgramsSeeTheSameText) {
  ASSERT_EQ(::GetACP(), 1252u) << "the prefix of this test has the Western code page";
  // 0x81 is undefined in the page: the text of a script has it as a lone surrogate.
  ASSERT_TRUE(registry_.SetRegValue(kRoot, kKey, u"Text", u"caf\u00E9 \u20AC\xDC81"));
  EXPECT_EQ(eightBit("Text"), "caf\xE9 \x80\x81\0"s);
  EXPECT_EQ(get(u"Text"), u"caf\u00E9 \u20AC\xDC81");
  ASSERT_EQ(::RegSetValueExA(key_, "Theirs", 0, REG_SZ, reinterpret_cast<const BYTE*>("na\xEFve \x81"), 8), 0);
  EXPECT_EQ(get(u"Theirs"), u"na\u00EFve \xDC81");
  // Beyond the page: nothing is lost.
  ASSERT_TRUE(registry_.SetRegValue(kRoot, kKey, u"Path", u"C:\\\u0416.txt"));
  EXPECT_EQ(get(u"Path"), u"C:\\\u0416.txt");
}

TEST_F(RealRegistry, ATreeIsDeletedFromBelow) {
  const std::u16string verb = std::u16string(kKey) + u"\\shell\\Dravenna";
  ASSERT_TRUE(registry_.SetRegValue(kRoot, verb + u"\\command", u"", u"x"));
  registry_.DeleteRegKey(kRoot, verb);
  EXPECT_EQ(registry_.GetRegValue(kRoot, verb + u"\\command", u"", u"gone"), u"x");
  registry_.DeleteRegKey(kRoot, verb + u"\\command");
  registry_.DeleteRegKey(kRoot, verb);
  HKEY key = nullptr;
  EXPECT_NE(::RegOpenKeyW(key_, L"shell\\Dravenna", &key), 0);
  EXPECT_EQ(::RegOpenKeyW(key_, L"shell", &key), 0);
  ::RegCloseKey(key);
}

TEST_F(RealRegistry, AKeyOfTheUserStandsForBothRoots) {
  ::SetEnvironmentVariableW(L"DRAVENNA_REGISTRY", kWideKey);
  const auto calls = makeRegistry();
  ::SetEnvironmentVariableW(L"DRAVENNA_REGISTRY", nullptr);
  Registry own(*calls);
  ASSERT_TRUE(own.SetRegValue(HKEY_CLASSES_ROOT_ID, u"txtfile", u"Name", u"mine"));
  EXPECT_EQ(own.GetRegValue(HKEY_CLASSES_ROOT_ID, u"txtfile", u"Name", u""), u"mine");
  EXPECT_EQ(own.GetRegValue(kRoot, u"txtfile", u"Name", u"none"), u"none");
  EXPECT_EQ(registry_.GetRegValue(HKEY_CLASSES_ROOT_ID, u"txtfile", u"Name", u"none"), u"none");
  EXPECT_EQ(::RegDeleteTreeW(HKEY_CURRENT_USER, kWideKey), 0);
}

class WindowsFiles : public testing::Test {
 protected:
  DWORD attributes(std::string_view name) { return ::GetFileAttributesW(folder_.file(name).c_str()); }
  void setAttributes(std::string_view name, DWORD bits) {
    ASSERT_NE(::SetFileAttributesW(folder_.file(name).c_str(), bits), 0);
  }
  template <typename Call>
  static DWORD errorOf(Call call) {
    try {
      call();
    } catch (const windows::SystemFailure& failure) {
      return failure.error();
    }
    return ERROR_SUCCESS;
  }

  ScratchFolder folder_;
};

TEST_F(WindowsFiles, AReplacedFileKeepsItsAttributes) {
  folder_.put("file", "old");
  setAttributes("file", FILE_ATTRIBUTE_HIDDEN);
  replaceBytes(folder_.path("file"), "new");
  EXPECT_EQ(folder_.get("file"), "new");
  EXPECT_NE(attributes("file") & FILE_ATTRIBUTE_HIDDEN, 0u);
  makeTextFiles(codePageByName("1252"))->CreateTextFile(folder_.path("file"), Writing::InPlace)->Write(u"in place");
  EXPECT_EQ(folder_.get("file"), "in place");
  EXPECT_NE(attributes("file") & FILE_ATTRIBUTE_HIDDEN, 0u);
  EXPECT_EQ(folder_.names(), Names{"file"});
}

TEST_F(WindowsFiles, WhatMayNotBeWrittenIsRefusedAtOnce) {
  folder_.put("file", "old");
  setAttributes("file", FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(errorOf([&] { replaceBytes(folder_.path("file"), "new"); }), DWORD{ERROR_ACCESS_DENIED});
  setAttributes("file", FILE_ATTRIBUTE_NORMAL);
  {
    const windows::OpenFile busy(windows::realSystemCalls(), folder_.file("file").native(),
                                 {GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING}, u"");
    EXPECT_EQ(errorOf([&] { replaceBytes(folder_.path("file"), "new"); }), DWORD{ERROR_SHARING_VIOLATION});
  }
  std::filesystem::create_directory(folder_.file("folder"));
  EXPECT_EQ(errorOf([&] { replaceBytes(folder_.path("folder"), "new"); }), windows::kIsFolder);
  EXPECT_EQ(errorOf([&] { readBytes(folder_.path("folder")); }), windows::kIsFolder);
  EXPECT_EQ(errorOf([&] { readBytes(folder_.path("a<b>?")); }), DWORD{ERROR_INVALID_NAME});
  EXPECT_EQ(folder_.get("file"), "old");
  EXPECT_EQ(folder_.names(), (Names{"file", "folder"}));
}

// The system with one call that fails, or at which the process ends.
class FaultyCalls : public windows::SystemCalls {
 public:
  enum class Fault { Error, EndBefore, EndAfter };
  FaultyCalls(Fault fault, int at) : fault_(fault), left_(at) {}
  bool happened() const { return left_ < 0; }

 private:
  bool make(const char* name, const std::function<bool()>& call) override {
    if (left_-- != 0) return call();
    if (fault_ == Fault::EndBefore) ::TerminateProcess(::GetCurrentProcess(), 9);
    if (fault_ == Fault::EndAfter || name == "closeHandle"s) call();
    if (fault_ == Fault::EndAfter) ::TerminateProcess(::GetCurrentProcess(), 9);
    ::SetLastError(ERROR_GEN_FAILURE);
    return false;
  }

  Fault fault_;
  int left_;
};

bool replaceTells(FaultyCalls& calls, const std::filesystem::path& path) {
  try {
    const auto replacement = windows::makeTreeFiles(calls)->replace(path);
    replacement->write("new");
    replacement->flush();
    replacement->place();
    return false;
  } catch (const Failure&) {
    return true;
  }
}

constexpr wchar_t kChild[] = L"DRAVENNA_TEST_CHILD";  // "fault at path" for the process that is to end

TEST_F(WindowsFiles, TheChildEnds) {
  std::wistringstream words(windows::toWide(windows::environment(kChild)));
  int fault = 0;
  int at = 0;
  std::wstring path;
  if (!(words >> fault >> at >> path)) GTEST_SKIP() << "a part of the next test";
  FaultyCalls calls(FaultyCalls::Fault{fault}, at);
  EXPECT_FALSE(replaceTells(calls, path));
}

TEST_F(WindowsFiles, AReplacedFileIsTheOldOrTheNewOne) {
  for (const int fault : {0, 1, 2}) {
    bool happened = true;
    for (int at = 0; happened && !HasFailure(); ++at) {
      SCOPED_TRACE("fault " + std::to_string(fault) + ", call " + std::to_string(at));
      const std::filesystem::path path = folder_.put("file", "old");
      bool told = false;
      if (fault == 0) {
        FaultyCalls calls(FaultyCalls::Fault::Error, at);
        told = replaceTells(calls, path);
        happened = calls.happened();
        EXPECT_EQ(folder_.names(), Names{"file"});
      } else {
        const std::wstring words = std::to_wstring(fault) + L" " + std::to_wstring(at) + L" " + path.native();
        ::SetEnvironmentVariableW(kChild, words.c_str());
        const std::wstring command = L"\"" + windows::programFile() + L"\" --gtest_filter=*.TheChildEnds";
        happened = ::_wsystem(command.c_str()) == 9;
        ::SetEnvironmentVariableW(kChild, nullptr);
      }
      const std::string now = folder_.get("file");
      EXPECT_TRUE(now == "new" || (now == "old" && (told || (fault > 0 && happened)))) << now;
      EXPECT_TRUE(happened || at > 5) << "there were no calls";
    }
  }
}

TEST_F(WindowsFiles, PathsMayBeLong) {
  std::u16string path = folder_.path("");
  for (int i = 0; i < 4; ++i) path += u"\\" + std::u16string(100, u'd');
  windows::makeFolders(windows::realSystemCalls(), path);
  const std::u16string file = path + u"/\u0416.txt";
  replaceBytes(file, "one");
  replaceBytes(file, "two");
  EXPECT_EQ(readBytes(file), "two");
  EXPECT_TRUE(makeTextFiles(codePageByName("1252"))->fileExists(file));
  const std::vector<std::string> found = makeTreeFiles()->filesBelow(
      folder_.file(""), [](const std::string&) { return true; }, [](const std::string&) { return true; });
  ASSERT_EQ(found.size(), 1u);
  EXPECT_TRUE(found[0].ends_with("d/\xD0\x96.txt")) << found[0];
}

}  // namespace

}  // namespace dravenna
