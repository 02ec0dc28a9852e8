#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/registry_file.h"
#include "platform/registry_text.h"
#include "scratch_folder.h"
#include "settings/registry.h"
#include "text/text.h"

namespace dravenna {

namespace {

using namespace std::string_literals;
using Names = std::set<std::string>;

constexpr char16_t kOurKey[] = u"Software\\Halvex\\Dravenna";
const std::string kHead = "Windows Registry Editor Version 5.00\n\n";
const std::string kKeyLine = "[HKEY_LOCAL_MACHINE\\Software\\Halvex\\Dravenna]\n";

class RegistryFile : public testing::Test {
 protected:
  std::u16string get(std::u16string_view name) {
    return Registry(*registry_).GetRegValue(HKEY_LOCAL_MACHINE_ID, kOurKey, name, u"default");
  }
  bool set(std::u16string_view name, std::u16string_view value) {
    return Registry(*registry_).SetRegValue(HKEY_LOCAL_MACHINE_ID, kOurKey, name, value);
  }

  ScratchFolder folder_;
  std::unique_ptr<RegistryCalls> registry_ =
      posix::makeRegistryFile(folder_.file("r").string(), posix::realSystemCalls());
};

// Runs `work` in a process of its own.
template <typename Work>
pid_t inChild(Work work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work() ? 0 : 1);
  return child;
}

TEST_F(RegistryFile, ReadsWhatOthersWrote) {
  folder_.put("r", kHead + kKeyLine +
                       "@=\"d\"\n\"Word\"=\"W\"\n\"Number\"=dword:00000001\n"
                       "\"Ended\"=hex(1):41,00,00,00,42,00\n");
  EXPECT_EQ(get(u"") + get(u"word") + get(u"Ended"), u"dWA");
  EXPECT_EQ(get(u"Number"), u"default");
  EXPECT_EQ(get(u"Missing"), u"default");
  folder_.put("r", kHead + kKeyLine + "\"Word\"=\"other\"\n");
  EXPECT_EQ(get(u"Word"), u"other");
  std::filesystem::remove(folder_.file("r"));
  EXPECT_EQ(get(u"Word"), u"default");
  EXPECT_TRUE(folder_.names().empty());
}

TEST_F(RegistryFile, KeepsWhatItDoesNotKnow) {
  folder_.put("r", "REGEDIT4\r\n; by hand\r\n" + kKeyLine +
                       "; note\r\n\"N\"=dword:0000000a\r\n\r\n"
                       "[HKEY_CURRENT_USER\\Other]\r\n\"x\"=hex:00,\\\r\n  01\r\n");
  EXPECT_TRUE(set(u"Word", u"w"));
  EXPECT_EQ(folder_.get("r"), kHead +
                                  "; by hand\n\n[HKEY_CURRENT_USER]\n\n[HKEY_CURRENT_USER\\Other]\n\"x\"=hex:00,01\n\n"
                                  "[HKEY_LOCAL_MACHINE]\n\n[HKEY_LOCAL_MACHINE\\Software]\n\n"
                                  "[HKEY_LOCAL_MACHINE\\Software\\Halvex]\n\n" +
                                  kKeyLine + "; note\n\"N\"=dword:0000000a\n\"Word\"=\"w\"\n");
  EXPECT_EQ(folder_.names(), (Names{"r", "r.lock"}));
}

TEST_F(RegistryFile, KeepsADamagedFileAside) {
  const std::string damaged = kHead + kKeyLine + "\"Kept\"=\"k\"\n\"Cut\"=\"cu";
  folder_.put("r", damaged);
  EXPECT_EQ(get(u"Kept") + get(u"Cut"), u"kdefault");
  EXPECT_EQ(folder_.get("r"), damaged);
  EXPECT_TRUE(set(u"New", u"n") && set(u"New", u"m"));
  EXPECT_EQ(folder_.get("r.bad"), damaged);
  EXPECT_EQ(get(u"Kept") + get(u"New"), u"km");
  folder_.put("r", damaged);  // the same again needs no second copy
  EXPECT_TRUE(set(u"New", u"n"));
  EXPECT_EQ(folder_.names(), (Names{"r", "r.bad", "r.lock"}));
  // Another file altogether; the copy is as private as the file was.
  const std::string foreign(4096, '\0');
  ASSERT_EQ(::chmod(folder_.put("r", foreign).c_str(), 0600), 0);
  EXPECT_TRUE(set(u"New", u"n") && set(u"New", u"o"));
  EXPECT_EQ(get(u"New"), u"o");
  EXPECT_EQ(folder_.get("r.bad2"), foreign);
  EXPECT_EQ(std::filesystem::status(folder_.file("r.bad2")).permissions(), std::filesystem::perms(0600));
  EXPECT_EQ(folder_.names().size(), 4u);
}

TEST_F(RegistryFile, FailsWhereNothingCanBeWritten) {
  std::filesystem::create_directory(folder_.file("r"));
  EXPECT_EQ(get(u"x"), u"default");
  EXPECT_FALSE(set(u"x", u"y"));
  std::filesystem::remove(folder_.file("r"));
  const std::string bytes = kHead + kKeyLine + "\"x\"=\"y\"\n";
  ASSERT_EQ(::chmod(folder_.put("r", bytes).c_str(), 0444), 0);
  EXPECT_EQ(get(u"x"), u"y");
  EXPECT_FALSE(set(u"x", u"z"));
  EXPECT_EQ(folder_.get("r"), bytes);
  for (const char* const path : {"", "/proc/none/registry.reg", "/dev/zero"}) {
    registry_ = posix::makeRegistryFile(path, posix::realSystemCalls());
    EXPECT_EQ(get(u"x"), u"default") << path;
    EXPECT_FALSE(set(u"x", u"y")) << path;
  }
  registry_ = posix::makeRegistryFile(folder_.file("new").string(), posix::realSystemCalls());
  EXPECT_FALSE(set(u"two\nlines", u"x"));
  EXPECT_FALSE(set(u"\xDC80", u"x"));
  EXPECT_TRUE(set(u"Word", u"w"));
  EXPECT_FALSE(parseRegistryText(folder_.get("new")).damaged);
}

TEST_F(RegistryFile, GoesThroughALink) {
  std::filesystem::create_symlink("real", folder_.file("r"));
  EXPECT_TRUE(set(u"x", u"y"));
  EXPECT_TRUE(std::filesystem::is_symlink(folder_.file("r")));
  EXPECT_EQ(folder_.names(), (Names{"r", "real", "real.lock"}));
}

TEST_F(RegistryFile, LosesNothingWhenProgramsWriteAtOnce) {
  constexpr int kWriters = 3;
  constexpr int kValues = 40;
  std::vector<pid_t> writers;
  writers.reserve(kWriters);
  for (int writer = 0; writer < kWriters; ++writer) {
    writers.push_back(inChild([&] {
      for (int value = 0; value < kValues; ++value) {
        if (!set(decimal(writer * kValues + value), decimal(value))) return false;
      }
      return true;
    }));
  }
  for (const pid_t writer : writers) {
    int status = 1;
    ::waitpid(writer, &status, 0);
    EXPECT_EQ(status, 0);
  }
  for (int value = 0; value < kWriters * kValues; ++value) EXPECT_EQ(get(decimal(value)), decimal(value % kValues));
}

}  // namespace

}  // namespace dravenna
