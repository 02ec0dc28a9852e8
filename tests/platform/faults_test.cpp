// Each single call to the system fails in turn. The same for a script that is replaced: robustness/.

#include <gtest/gtest.h>

#include <functional>

#include "faulty_calls.h"
#include "platform/posix/registry_file.h"
#include "platform/posix/text_files.h"
#include "platform/posix/tree_files.h"
#include "platform/registry_text.h"
#include "platform/system.h"
#include "scratch_folder.h"

namespace dravenna {

namespace {

namespace fs = std::filesystem;
using Names = std::set<std::string>;

bool tells(const std::function<void()>& act) {
  try {
    act();
    return false;
  } catch (const Failure&) {
    return true;
  }
}

TEST(Faults, ReadingFailsInsteadOfEndingEarly) {
  const ScratchFolder folder;
  folder.put("file", std::string(200000, 'x'));
  const auto texts = [&](FaultyCalls& calls) {
    const auto files = posix::makeTextFiles(codePageByName("1252"), calls);
    return files->OpenTextFile(folder.path("file"))->ReadAll().size();
  };
  const auto script = [&](FaultyCalls& calls) {
    const auto files = posix::makeTextFiles(codePageByName("1252"), calls);
    return files->openScript(folder.path("file"))->ReadAll().size();
  };
  const auto bytes = [&](FaultyCalls& calls) {
    std::string all;
    posix::makeTreeFiles(calls)->readWhole(folder.file("file"), all);
    return all.size();
  };
  for (const std::function<std::size_t(FaultyCalls&)>& read :
       {std::function(texts), std::function(script), std::function(bytes)}) {
    Names failed;
    atEachCall([&](FaultyCalls calls) {
      const bool told = calls.attempt([&] { return tells([&] { EXPECT_EQ(read(calls), 200000U); }); });
      if (told) failed.insert(calls.failed());
      return calls.happened();
    });
    EXPECT_EQ(failed, (Names{"fstat", "open", "read"}));
  }
}

TEST(Faults, WritingIntoADeviceTells) {
  Names failed;
  atEachCall([&](FaultyCalls calls) {
    if (calls.attempt([&] { return tells([&] { posix::makeTreeFiles(calls)->writeDevice("/dev/null", "new"); }); })) {
      failed.insert(calls.failed());
    }
    return calls.happened();
  });
  EXPECT_EQ(failed, (Names{"close", "open", "write"}));
}

constexpr char16_t kKey[] = u"Software\\Halvex\\Test";
constexpr char kPath[] = "below/registry.reg";

std::int32_t store(posix::SystemCalls& calls, const ScratchFolder& folder) {
  const auto registry = posix::makeRegistryFile(folder.file(kPath).string(), calls);
  RegistryCalls::Handle handle = 0;
  const std::int32_t created = registry->RegCreateKeyA(HKEY_LOCAL_MACHINE_ID, kKey, handle);
  const std::int32_t stored = registry->RegSetValueExA(handle, u"New", u"n");
  registry->RegCloseKey(handle);
  return created != 0 ? created : stored;
}

TEST(Faults, TheRegistryFileLosesNothing) {
  const std::string whole =
      "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Halvex\\Test]\n\"Old\"=\"o\"\n";
  const std::string damaged = whole + "what is this?\n";
  for (const std::string& old : {std::string(), whole, damaged}) {
    Names failed;
    atEachCall([&](FaultyCalls calls) {
      const ScratchFolder folder;
      if (!old.empty()) {
        fs::create_directory(folder.file("below"));
        folder.put(kPath, old);
      }
      const bool told = calls.attempt([&] { return store(calls, folder) != 0; });
      if (told) failed.insert(calls.failed());
      const std::string now = folder.get(kPath);
      const RegistryText text = parseRegistryText(now);
      const auto found = text.keys.find(u"HKEY_LOCAL_MACHINE\\Software\\Halvex\\Test");
      const auto has = [&](const char16_t* name) {
        return found != text.keys.end() && found->second.values.contains(name);
      };
      EXPECT_EQ(has(u"Old"), !old.empty()) << calls.failed();
      EXPECT_TRUE(told || calls.killed() || has(u"New")) << calls.failed();
      EXPECT_TRUE(calls.happened() || calls.onDisk());
      EXPECT_TRUE(now == old || !text.damaged);
      const std::string kept = std::string(kPath) + ".bad";
      EXPECT_TRUE(old != damaged || now == old || folder.get(kept) == old || folder.get(kept + "2") == old);
      const auto leavesNothing = [&] {
        for (const char* const temporary : {".new", ".bad.new", ".bad2.new"}) {
          EXPECT_FALSE(fs::exists(folder.file(std::string(kPath) + temporary))) << temporary;
        }
      };
      if (!calls.killed()) leavesNothing();
      FaultyCalls sound;
      EXPECT_EQ(store(sound, folder), 0);
      leavesNothing();
      return calls.happened();
    });
    for (const char* const name : {"open", "write", "fsync", "rename", "flock"}) {
      EXPECT_TRUE(failed.contains(name)) << name;
    }
  }
}

}  // namespace

}  // namespace dravenna
