#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/failure.h"
#include "platform/posix/desktop_entry.h"
#include "platform/posix/files.h"
#include "platform/posix/recent_files.h"
#include "platform/system.h"
#include "scratch_folder.h"
#include "text/text.h"

namespace dravenna {

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

// The rights of an ordinary user for a while, when the tests run as root.
class AsNobody {
 public:
  AsNobody() { EXPECT_TRUE(::getuid() != 0 || ::seteuid(65534) == 0); }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;
  ~AsNobody() { EXPECT_TRUE(::getuid() != 0 || ::seteuid(0) == 0); }
};

std::string save(const fs::path& path, std::u16string_view text) {
  try {
    const auto writer = makeTextFiles(codePageByName("utf-8"))->CreateTextFile(path.u16string(), Writing::Replace);
    writer->Write(text);
    writer->Close();
  } catch (const Failure& failure) {
    return toUtf8(failure.description());
  }
  return "saved";
}

TEST(Replace, FollowsLinks) {
  const ScratchFolder folder;
  fs::create_directory(folder.file("real"));
  fs::create_directory(folder.file("links"));
  folder.put("real/file", "old");
  fs::create_symlink("../real/file", folder.file("links/one"));
  fs::create_symlink("one", folder.file("links/two"));
  fs::create_symlink("../real/missing", folder.file("links/dangling"));
  fs::create_symlink("dangling", folder.file("links/twice"));
  fs::create_symlink("../nowhere/missing", folder.file("links/lost"));
  fs::create_symlink("loop", folder.file("links/loop"));
  EXPECT_EQ(save(folder.file("links/two"), u"new"), "saved");
  EXPECT_EQ(folder.get("real/file"), "new");
  EXPECT_EQ(save(folder.file("links/twice"), u"made"), "saved");
  EXPECT_EQ(folder.get("real/missing"), "made");
  for (const char* const name : {"links/one", "links/two", "links/dangling", "links/twice"}) {
    EXPECT_TRUE(fs::is_symlink(folder.file(name))) << name;
  }
  EXPECT_NE(save(folder.file("links/lost"), u"x").find("No such file or directory: '"), std::string::npos);
  EXPECT_NE(save(folder.file("links/loop"), u"x").find("symbolic links"), std::string::npos);
}

TEST(Replace, KeepsPermissionBitsAndOwner) {
  const ScratchFolder folder;
  const bool root = ::geteuid() == 0;
  for (const mode_t mode : {0600u, 0664u, 06755u, 0200u}) {
    const fs::path file = folder.put("file", "old");
    ASSERT_TRUE((!root || ::chown(file.c_str(), 1234, 2345) == 0) && ::chmod(file.c_str(), mode) == 0);
    EXPECT_EQ(save(file, u"new"), "saved");
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & (root ? 07777 : 0777), mode & (root ? 07777 : 0777));  // a write takes the others away
    EXPECT_TRUE(!root || (status.st_uid == 1234 && status.st_gid == 2345));
  }
  const mode_t mask = ::umask(027);
  EXPECT_EQ(save(folder.file("fresh"), u"new"), "saved");
  ::umask(mask);
  EXPECT_EQ(fs::status(folder.file("fresh")).permissions(), fs::perms(0640));
}

TEST(Replace, DropsTheSetIdBitsOfAnOwnerThatCannotBeKept) {
  struct AnotherOwner : posix::SystemCalls {
    int fstat(int file, struct stat& status) override {
      const int result = SystemCalls::fstat(file, status);
      ++status.st_uid;
      return result;
    }
    ssize_t make(const char* name, const std::function<ssize_t()>& call) override {
      if (std::string_view(name) != "fchown") return call();
      errno = EPERM;
      return -1;
    }
  } calls;
  const ScratchFolder folder;
  const fs::path file = folder.put("file", "old");
  ASSERT_EQ(::chmod(file.c_str(), 06755), 0);
  posix::replaceFile(calls, file, "new", {});
  EXPECT_EQ(folder.get("file"), "new");
  EXPECT_EQ(fs::status(file).permissions(), fs::perms(0755));
}

TEST(Replace, RefusesWhatMayNotBeWritten) {
  const ScratchFolder folder;
  fs::create_directory(folder.file("folder"));
  const fs::path file = folder.put("folder/file", "old");
  const std::string denied = "Permission denied: '" + file.string() + "'";
  ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
  EXPECT_EQ(save(file, u"new"), denied);
  ASSERT_EQ(::chmod(file.c_str(), 0666), 0);
  ASSERT_EQ(::chmod(folder.file("folder").c_str(), 0555), 0);
  {
    const AsNobody nobody;
    EXPECT_EQ(save(file, u"new"), denied);
  }
  ASSERT_EQ(::chmod(folder.file("folder").c_str(), 0777), 0);
  if (::geteuid() == 0) {  // another user's file, in a folder that is open to all
    ASSERT_EQ(::chmod(file.c_str(), 0644), 0);
    const AsNobody nobody;
    EXPECT_EQ(save(file, u"new"), denied);
  }
  EXPECT_EQ(folder.get("folder/file"), "old");
  EXPECT_EQ(fs::directory_iterator(folder.file("folder"))->path(), file);
  // A folder that can be written and not be listed.
  ASSERT_EQ(::chmod(file.c_str(), 0666), 0);
  ASSERT_EQ(::chmod(folder.file("folder").c_str(), 0333), 0);
  {
    const AsNobody nobody;
    EXPECT_EQ(save(file, u"new"), "saved");
  }
  ASSERT_EQ(::chmod(folder.file("folder").c_str(), 0777), 0);
  EXPECT_EQ(folder.get("folder/file"), "new");
  EXPECT_EQ(save(folder.file("folder"), u"x"), "Is a directory: '" + folder.file("folder").string() + "'");
  ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0666), 0);
  EXPECT_EQ(save(folder.file("pipe"), u"x"), "Invalid argument: '" + folder.file("pipe").string() + "'");
  EXPECT_TRUE(fs::is_fifo(folder.file("pipe")));
}

TEST(Paths, KeepBytesThatAreNoUtf8) {
  const ScratchFolder folder;
  folder.put("caf\xE9", "x");
  const std::u16string path = fromUtf8(folder.file("caf\xE9").string());
  EXPECT_EQ(path.back(), 0xDCE9);
  const auto files = makeTextFiles(codePageByName("1252"));
  EXPECT_TRUE(files->fileExists(path));
  EXPECT_FALSE(files->fileExists(path + u'\0'));
  replaceBytes(path, "y");
  EXPECT_EQ(folder.get("caf\xE9"), "y");
  EXPECT_THROW(replaceBytes(path + u'\0' + u"z", "z"), Failure);
  EXPECT_EQ(folder.names(), Names{"caf\xE9"});
}

TEST(CodePages, FollowTheLocale) {
  const auto pageIn = [](const char* all, const char* type, const char* lang, const char* own = nullptr) {
    const std::pair<const char*, const char*> variables[] = {
        {"LC_ALL", all}, {"LC_CTYPE", type}, {"LANG", lang}, {"DRAVENNA_CODEPAGE", own}};
    for (const auto& [name, value] : variables) value != nullptr ? ::setenv(name, value, 1) : ::unsetenv(name);
    return systemCodePage()->number();
  };
  const std::pair<int, std::vector<const char*>> languages[] = {{1252, {"C", "C.UTF-8", "POSIX", "pt_BR.UTF-8", "thx"}},
                                                                {936, {"zh_CN.UTF-8", "zh"}},
                                                                {950, {"zh_TW.UTF-8", "zh_HK"}},
                                                                {1250, {"cs", "sr_RS@latin", "sr_RS.UTF-8@latin"}},
                                                                {1251, {"sr_RS", "ru_RU.KOI8-R", "uz_UZ@cyrillic"}}};
  for (const auto& [number, locales] : languages) {
    for (const char* const locale : locales) EXPECT_EQ(pageIn(nullptr, nullptr, locale), number) << locale;
  }
  EXPECT_EQ(pageIn("th_TH", "ru_RU", "ja_JP"), 874);
  EXPECT_EQ(pageIn("", "ru_RU", "ja_JP"), 1251);
  EXPECT_EQ(pageIn(nullptr, nullptr, nullptr), 1252);
  EXPECT_EQ(pageIn("th_TH", nullptr, nullptr, "utf-8"), kUtf8CodePage);
  EXPECT_EQ(pageIn("th_TH", nullptr, nullptr, "cp1251"), 1251);
  EXPECT_EQ(pageIn("th_TH", nullptr, nullptr, "437"), 874);
  pageIn(nullptr, nullptr, nullptr);
}

TEST(Process, KnowsItsCommandLineAndFolder) {
  const auto process = makeProcess({u"\"a", u"b  c\"", u""});
  EXPECT_EQ(process->commandLine(), u"\"a b  c\" ");
  EXPECT_EQ(makeProcess({})->commandLine(), u"");
  EXPECT_EQ(toUtf8(process->programFolder()), fs::read_symlink("/proc/self/exe").parent_path().string());
}

class DesktopEntry : public testing::Test {
 protected:
  DesktopEntry() {
    ::setenv("XDG_DATA_HOME", folder_.file("data").c_str(), 1);
    ::setenv("XDG_CONFIG_HOME", folder_.file("config").c_str(), 1);
    ::setenv("XDG_DATA_DIRS", (folder_.file("system").string() + "/").c_str(), 1);
    fs::create_directories(folder_.file("system/applications/kde"));
    fs::create_directory(folder_.file("config"));
  }
  ~DesktopEntry() override {
    for (const char* const name : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_DATA_DIRS"}) ::unsetenv(name);
  }

  void add() { posix::addDesktopEntry(posix::realSystemCalls(), "/opt/my \"$tools\\50%/dravenna"); }
  void remove() { posix::removeDesktopEntry(posix::realSystemCalls()); }
  std::string lists() { return folder_.get("config/mimeapps.list"); }

  ScratchFolder folder_;
};

TEST_F(DesktopEntry, ComesAndGoesWithoutATrace) {
  add();
  const std::string entry = folder_.get("data/applications/dravenna-open.desktop");
  EXPECT_NE(entry.find("\nExec=\"/opt/my \\\\\"\\\\$tools\\\\\\\\50%%/dravenna\" %f\n"), std::string::npos) << entry;
  EXPECT_NE(entry.find("\nMimeType=text/plain;\n"), std::string::npos);
  EXPECT_EQ(lists(), "[Added Associations]\ntext/plain=dravenna-open.desktop;\n");
  add();
  EXPECT_EQ(lists(), "[Added Associations]\ntext/plain=dravenna-open.desktop;\n");
  remove();
  EXPECT_FALSE(fs::exists(folder_.file("data/applications/dravenna-open.desktop")));
  EXPECT_FALSE(fs::exists(folder_.file("config/mimeapps.list")));
  remove();
}

TEST_F(DesktopEntry, StaysBehindTheProgramThatOpensTextFilesNow) {
  folder_.put("system/applications/mimeinfo.cache",
              "[MIME Cache]\nimage/png=p.desktop;\ntext/plain=gone.desktop;kde-edit.desktop;z.desktop;\n");
  folder_.put("system/applications/kde/edit.desktop", "");
  folder_.put("system/applications/z.desktop", "");
  add();
  add();
  EXPECT_EQ(lists(), "[Added Associations]\ntext/plain=kde-edit.desktop;dravenna-open.desktop;\n");
  remove();
  EXPECT_FALSE(fs::exists(folder_.file("config/mimeapps.list")));
}

TEST_F(DesktopEntry, IsTheInstalledOneForTheInstalledProgram) {
  folder_.put("system/applications/org.orvane.Dravenna.desktop", "");
  add();
  EXPECT_EQ(lists(), "[Added Associations]\ntext/plain=dravenna-open.desktop;\n");
  posix::addDesktopEntry(posix::realSystemCalls(), folder_.file("bin/dravenna"));
  EXPECT_EQ(lists(), "[Added Associations]\ntext/plain=org.orvane.Dravenna.desktop;\n");
  const std::string entry = folder_.get("data/applications/dravenna-open.desktop");
  EXPECT_NE(entry.find("\nHidden=true\n"), std::string::npos) << entry;
  EXPECT_EQ(entry.find("MimeType"), std::string::npos) << entry;  // some readers do not know Hidden
  remove();
  EXPECT_FALSE(fs::exists(folder_.file("config/mimeapps.list")));
}

TEST_F(DesktopEntry, LeavesWhatOthersHaveInTheList) {
  const std::string before = "# mine\n[Default Applications]\ntext/plain=vi.desktop\n\n[Added Associations]\n";
  const std::string behind = "\n[X]\ntext/plain=y\n";
  folder_.put("config/mimeapps.list", before + "text/plain = a.desktop; b.desktop\n" + behind);
  add();
  EXPECT_EQ(lists(), before + "text/plain=a.desktop;b.desktop;dravenna-open.desktop;\n" + behind);
  remove();
  EXPECT_EQ(lists(), before + "text/plain=a.desktop;b.desktop;\n" + behind);
}

TEST_F(DesktopEntry, AnOpenedFileGoesIntoTheListOfRecentOnes) {
  const auto open = [](const char* time) { posix::addRecentFile(posix::realSystemCalls(), "/s/a b&'%.txt", time); };
  const auto list = [this] { return folder_.get("data/recently-used.xbel"); };
  const auto count = [&](std::string_view what) {
    std::size_t found = 0;
    const std::string text = list();
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++found;
    return found;
  };
  const std::string href = "<bookmark href=\"file:///s/a%20b&amp;&apos;%25.txt\"";
  open("2026-01-01T00:00:00Z");
  open("2026-01-02T00:00:00Z");
  EXPECT_EQ(count(href), 1U) << list();
  EXPECT_EQ(count("added=\"2026-01-01T00:00:00Z\" modified=\"2026-01-02T00:00:00Z\""), 1U) << list();
  EXPECT_EQ(count("name=\"dravenna\" exec=\"&apos;dravenna %f&apos;\" modified=\"2026-01-02T00:00:00Z\" count=\"2\"/>"),
            1U)
      << list();

  std::string others = list();
  others.replace(others.find("name=\"dravenna\""), 15, "name=\"vi\"");
  folder_.put("data/recently-used.xbel", others);
  open("2026-01-03T00:00:00Z");
  EXPECT_EQ(count("name=\"vi\""), 1U);
  EXPECT_EQ(count("name=\"dravenna\""), 1U);
  EXPECT_EQ(count(href), 1U);
  for (const std::string damaged :
       {"", "<xbel version=\"1.0\"></xbel>", "<xbel xmlns:bookmark=\"\" xmlns:mime=\"\">"}) {
    folder_.put("data/recently-used.xbel", damaged);
    open("2026-01-04T00:00:00Z");
    EXPECT_EQ(list(), damaged);
  }
}

}  // namespace

}  // namespace dravenna
