// Each single call to the system fails in turn. The same for a script that is replaced: robustness/.

#include <gtest/gtest.h>

#include <functional>

#include "faulty_calls.h"
#include "platform/posix/registry_file.h"
#include "platform/posix/text_files.h"
#include "platform/registry_text.h"
#include "platform/system.h"
#include "scratch_folder.h"

namespace dravenna {

namespace {

using Fault = FaultyCalls::Fault;
using Names = std::set<std::string>;

constexpr int kMostCalls = 1000;

// Runs `act` with the first call failing, then the second and so on, until all calls are made.
void failEach(Fault fault, int error, const std::function<void(FaultyCalls&)>& act) {
  bool happened = true;
  for (int at = 0; happened; ++at) {
    ASSERT_LT(at, kMostCalls);
    FaultyCalls calls(fault, at, error);
    SCOPED_TRACE("call number " + std::to_string(at) + ", errno " + std::to_string(error));
    act(calls);
    happened = calls.happened();
  }
}

TEST(Faults, ReadingFailsInsteadOfEndingEarly) {
  const ScratchFolder folder;
  folder.put("file", std::string(200000, 'x'));
  for (const Fault fault : {Fault::Error, Fault::Interrupted}) {
    failEach(fault, EIO, [&](FaultyCalls& calls) {
      const auto files = posix::makeTextFiles(codePageByName("1252"), calls);
      try {
        EXPECT_EQ(files->openTextFile(folder.path("file"))->readAll().size(), 200000u);
        EXPECT_TRUE(!calls.happened() || fault == Fault::Interrupted || calls.failed() == "close") << calls.failed();
      } catch (const Failure&) {
        EXPECT_TRUE(calls.happened() && fault == Fault::Error);
      }
    });
  }
}

constexpr char16_t kKey[] = u"Software\\Halvex\\Test";
constexpr char kPath[] = "below/registry.reg";

std::int32_t store(posix::SystemCalls& calls, const ScratchFolder& folder) {
  const auto registry = posix::makeRegistryFile(folder.file(kPath).string(), calls);
  RegistryCalls::Handle handle = 0;
  const std::int32_t created = registry->createKey(HKEY_LOCAL_MACHINE_ID, kKey, handle);
  const std::int32_t stored = registry->setValue(handle, u"New", u"n");
  registry->closeKey(handle);
  return created != 0 ? created : stored;
}

TEST(Faults, TheRegistryFileLosesNothing) {
  const std::string whole =
      "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\Software\\Halvex\\Test]\n\"Old\"=\"o\"\n";
  const std::string damaged = whole + "what is this?\n";
  for (const std::string& old : {std::string(), whole, damaged}) {
    Names failures;
    for (const int error : {EIO, EACCES, EINVAL}) {
      failEach(Fault::Error, error, [&](FaultyCalls& calls) {
        const ScratchFolder folder;
        if (!old.empty()) {
          std::filesystem::create_directory(folder.file("below"));
          folder.put(kPath, old);
        }
        const std::int32_t status = store(calls, folder);
        if (status != 0) failures.insert(calls.failed());
        const std::string now = folder.get(kPath);
        const auto values = parseRegistryText(now).keys[u"HKEY_LOCAL_MACHINE\\Software\\Halvex\\Test"].values;
        EXPECT_EQ(values.count(u"Old"), old.empty() ? 0u : 1u) << calls.failed();
        EXPECT_TRUE(status != 0 || values.count(u"New") == 1) << calls.failed();
        const std::string kept = std::string(kPath) + ".bad";
        EXPECT_TRUE(old != damaged || now == old || folder.get(kept) == old || folder.get(kept + "2") == old);
        for (const char* const temporary : {".new", ".bad.new", ".bad2.new"}) {
          EXPECT_FALSE(std::filesystem::exists(folder.file(std::string(kPath) + temporary))) << temporary;
        }
        FaultyCalls sound(Fault::Error, kMostCalls);
        EXPECT_EQ(store(sound, folder), 0);
      });
    }
    for (const char* const name : {"open", "write", "fsync", "rename", "flock"}) {
      EXPECT_TRUE(failures.contains(name)) << name;
    }
  }
}

}  // namespace

}  // namespace dravenna
