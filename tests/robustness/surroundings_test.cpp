// Out of space, fed with what is no script.

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "long_script.h"
#include "platform/scratch_folder.h"
#include "support/quiet_form.h"
#include "text/text.h"

namespace dravenna {
namespace {

QuietForm formIn(const ScratchFolder& folder, posix::SystemCalls& calls = posix::realSystemCalls()) {
  return {codePageByName("1252"), calls, folder.file("registry.reg")};
}

// Runs `work` in a process of its own; a failed expectation there fails here.
void inChild(const std::function<void()>& work) {
  const pid_t child = ::fork();
  if (child == 0) {
    work();
    std::fflush(nullptr);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
}

// Takes all space of a file system but so many bytes.
void fillUp(const std::filesystem::path& path, std::uintmax_t left) {
  std::ofstream file(path, std::ios::binary);
  const std::string block(4096, 'x');
  while (file.write(block.data(), 4096).flush()) {
  }
  file.close();
  const std::uintmax_t size = std::filesystem::file_size(path);
  std::filesystem::resize_file(path, size - std::min(size, left));
}

TEST(FullDisk, LosesNothing) {
  constexpr int kMessages = 6000;
  const ScratchFolder folder;
  const std::string disk = folder.file("disk");
  std::filesystem::create_directory(disk);
  if (::mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=1m") != 0) GTEST_SKIP() << "needs root and the right to mount";
  const std::string script = scriptOf(kMessages, "Old ");
  const std::string settings = "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A]\n\"a\"=\"1\"\n";
  folder.put("disk/guard.txt", script);
  folder.put("disk/guard.lxf", exchangeFileOf(kMessages, "New "));
  folder.put("disk/registry.reg", settings);
  QuietForm form{codePageByName("1252"), posix::realSystemCalls(), disk + "/registry.reg"};
  form.open(folder.path("disk/guard.txt"));
  form.typeAndCommit(u"New 1");
  const std::u16string edited = form->N.Text();
  fillUp(disk + "/filler", 65536);

  const auto isFailure = [&](std::ptrdiff_t files) {
    EXPECT_TRUE(form.said(u"Error: No space left on device"));
    EXPECT_TRUE(folder.get("disk/guard.txt") == script && form->N.Text() == edited && form->Modified);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(disk), {}), files);
    form.boxes.clear();
  };
  form->Salvar();
  isFailure(4);
  form->mnu_Import_Click();
  isFailure(4);
  EXPECT_FALSE(form->registry().SetRegValue(HKEY_LOCAL_MACHINE_ID, u"A", u"b", std::u16string(99999, u'x')));
  EXPECT_EQ(folder.get("disk/registry.reg"), settings);
  std::filesystem::remove(disk + "/guard.lxf");
  fillUp(disk + "/more", 8192);
  form->mnu_Export_Click();
  isFailure(6);  // the second filler and the lock of the registry
  EXPECT_TRUE(folder.get("disk/guard.lxf").starts_with("1:New 1\r\n2:Old 2\r\n"));

  std::filesystem::remove(disk + "/filler");
  form->Salvar();
  EXPECT_TRUE(!form.saidError() && !form->Modified && folder.get("disk/guard.txt").find("New 1") != std::string::npos);
  EXPECT_EQ(::umount(disk.c_str()), 0);
}

TEST(BadInput, FileThatShrinksOrBreaksWhileItIsRead) {
  struct Breaking : posix::SystemCalls {
    std::filesystem::path path;
    bool shrinks = false;
    int reads = 0;
    ssize_t read(int file, void* to, std::size_t size) override {
      errno = EIO;
      if (++reads == 2 && !shrinks) return -1;
      const ssize_t count = SystemCalls::read(file, to, size);
      if (shrinks) std::filesystem::resize_file(path, 10);
      return count;
    }
  };
  const std::u16string script = fromUtf8(scriptOf(10000, "Text "));
  for (const bool shrinks : {false, true}) {
    const ScratchFolder folder;
    Breaking calls;
    calls.path = folder.put("guard.txt", toUtf8(script));
    calls.shrinks = shrinks;
    QuietForm form = formIn(folder, calls);
    form.open(folder.path("guard.txt"));
    EXPECT_EQ(form.said(u"Error: Input/output error"), !shrinks);
    EXPECT_TRUE(form->ScriptLoaded && form->Ini > 0 && form->N.Text().size() > 10000);
    EXPECT_TRUE(script.starts_with(form->N.Text().substr(0, form->N.Text().size() - 2)));
  }
}

// Bytes of address space that this process has now.
[[maybe_unused]] std::size_t addressSpace() {
  std::size_t pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  return pages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

// Loads, steps and saves with no more memory than a document of this size may take.
void comesBack(const std::string& script, bool hasTexts) {
  const ScratchFolder folder;
  folder.put("guard.txt", script);
  inChild([&] {
#ifndef DRAVENNA_ASAN  // which takes address space of its own
    const rlim_t most = addressSpace() + (32U << 20) + 20 * script.size();
    const rlimit limit{most, most};
    ::setrlimit(RLIMIT_AS, &limit);
#endif
    QuietForm form = formIn(folder);
    form.open(folder.path("guard.txt"));
    EXPECT_EQ(form->N.Text().size(), script.size());
    form->dispatchKey({kKeyDown, kShift, 0, Control::N});
    form->dispatchKey({kKeyUp, kCtrl, 0, Control::EDT});
    EXPECT_EQ(form->Ini > 0, hasTexts);
    form->Salvar();
    EXPECT_TRUE(folder.get("guard.txt") == script && !form.saidError());
  });
}

#ifdef DRAVENNA_ASAN
constexpr std::size_t kMega = 1U << 17;  // slow
#else
constexpr std::size_t kMega = 1U << 20;
#endif

TEST(BadInput, ComesBackAsItWas) {
  using namespace std::string_literals;
  comesBack("mes \"" + std::string(4 * kMega, 'a') + "\";\r\n", true);
  comesBack(std::string(2 * kMega, '"') + "\r\n", false);
  std::string lines;
  for (std::size_t i = 0; i < kMega / 5; ++i) lines += i % 2 == 0 ? "\"\r\n" : "\"\"\r\n";
  comesBack(lines, false);
  comesBack("\0mes \"a\0b\0\"; // \0\r\n\0\r\n"s, true);
  comesBack(std::string(kMega, '\0') + "\r\n", false);
}

}  // namespace
}  // namespace dravenna
