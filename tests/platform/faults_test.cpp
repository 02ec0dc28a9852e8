// Each single call to the system fails in turn: whatever happens, nothing that was stored is lost.

#include <gtest/gtest.h>

#include "faulty_calls.h"
#include "platform/posix/registry_file.h"
#include "platform/posix/text_files.h"
#include "platform/system.h"
#include "scratch_folder.h"
#include "settings/registry_text.h"

namespace dravenna {

namespace {

using Fault = FaultyCalls::Fault;
using Names = std::set<std::string>;

constexpr int kErrors[] = {EIO, ENOSPC, EACCES, EPERM, EMFILE, EINVAL};
constexpr int kMostCalls = 1000;

bool save(posix::SystemCalls& calls, std::u16string_view path, std::size_t size) {
  try {
    const auto files = posix::makeTextFiles(codePageByName("1252"), calls);
    const auto writer = files->createTextFile(path, Writing::Replace);
    writer->write(std::u16string(size, u'n'));
    writer->write(std::u16string(size, u'n'));
    writer->close();
  } catch (const Failure& failure) {
    EXPECT_FALSE(failure.description().empty());
    return false;
  }
  return true;
}

TEST(Faults, AReplacedFileIsTheOldOrTheNewOne) {
  const ScratchFolder folder;
  const std::string newText(200000, 'n');
  Names failures;
  for (const bool exists : {true, false}) {
    const std::string old = exists ? "old" : "";
    for (const int error : kErrors) {
      for (int at = 0; at < kMostCalls; ++at) {
        std::filesystem::remove(folder.file("file"));
        if (exists) folder.put("file", old);
        FaultyCalls calls(Fault::Error, at, error);
        const bool saved = save(calls, folder.path("file"), newText.size() / 2);
        if (!calls.happened()) break;
        SCOPED_TRACE(calls.failed() + " number " + std::to_string(at) + " with errno " + std::to_string(error));
        const bool flushed = calls.failed() == "fsync";  // of the folder, when the new file is in its place
        if (saved) {
          EXPECT_EQ(folder.get("file"), newText);
        } else {
          failures.insert(calls.failed());
          EXPECT_TRUE(folder.get("file") == old || (flushed && folder.get("file") == newText));
        }
        EXPECT_EQ(folder.names(), !saved && !exists && folder.get("file").empty() ? Names{} : Names{"file"});
      }
    }
  }
  // What is only tried is missing here: the owner.
  EXPECT_EQ(failures, (Names{"close", "fchmod", "fstat", "fsync", "lstat", "mayWrite", "open", "realpath", "rename",
                             "stat", "write"}));
}

TEST(Faults, InterruptionsAndShortWritesAreNone) {
  const ScratchFolder folder;
  for (const Fault fault : {Fault::Interrupted, Fault::ShortWrite}) {
    for (int at = 0; at < kMostCalls; ++at) {
      folder.put("file", "old");
      FaultyCalls calls(fault, at);
      EXPECT_TRUE(save(calls, folder.path("file"), 70000)) << calls.failed() << at;
      EXPECT_EQ(folder.get("file"), std::string(140000, 'n')) << calls.failed() << at;
      if (!calls.happened()) {
        EXPECT_GT(at, 0);
        break;
      }
      FaultyCalls readCalls(fault, at);
      const auto files = posix::makeTextFiles(codePageByName("1252"), readCalls);
      EXPECT_EQ(files->openTextFile(folder.path("file"))->readAll().size(), 140000u);
    }
  }
}

TEST(Faults, ReadingFailsInsteadOfEndingEarly) {
  const ScratchFolder folder;
  folder.put("file", std::string(200000, 'x'));
  for (int at = 0; at < kMostCalls; ++at) {
    FaultyCalls calls(Fault::Error, at);
    const auto files = posix::makeTextFiles(codePageByName("1252"), calls);
    std::size_t size = 0;
    try {
      const auto reader = files->openTextFile(folder.path("file"));
      while (!reader->atEndOfStream()) size += reader->readLine().size();
    } catch (const Failure&) {
      EXPECT_TRUE(calls.happened());
      continue;
    }
    EXPECT_EQ(size, 200000u);
    if (!calls.happened()) break;
    EXPECT_EQ(calls.failed(), "close");
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
  for (const std::string& old : {std::string(), whole, whole + "what is this?\n"}) {
    const bool damaged = parseRegistryText(old).damaged;
    Names failures;
    for (const int error : kErrors) {
      for (int at = 0; at < kMostCalls; ++at) {
        const ScratchFolder folder;
        if (!old.empty()) {
          std::filesystem::create_directory(folder.file("below"));
          folder.put(kPath, old);
        }
        FaultyCalls calls(Fault::Error, at, error);
        const std::int32_t status = store(calls, folder);
        if (!calls.happened()) {
          EXPECT_EQ(status, 0);
          break;
        }
        SCOPED_TRACE(calls.failed() + " number " + std::to_string(at) + " with errno " + std::to_string(error));
        const std::string now = folder.get(kPath);
        RegistryTree keys = parseRegistryText(now).keys;
        auto& values = keys[u"HKEY_LOCAL_MACHINE\\Software\\Halvex\\Test"].values;
        EXPECT_EQ(values.count(u"Old"), old.empty() ? 0u : 1u);
        if (status == 0) {
          EXPECT_EQ(values.count(u"New"), 1u);
        } else {
          failures.insert(calls.failed());
        }
        if (damaged && now != old) {
          const std::string kept = std::string(kPath) + ".bad";
          EXPECT_TRUE(folder.get(kept) == old || folder.get(kept + "2") == old);
        }
        for (const char* const temporary : {".new", ".bad.new", ".bad2.new"}) {
          EXPECT_FALSE(std::filesystem::exists(folder.file(std::string(kPath) + temporary))) << temporary;
        }
        FaultyCalls sound(Fault::Error, kMostCalls);
        EXPECT_EQ(store(sound, folder), 0);
      }
    }
    for (const char* const name : {"open", "write", "fsync", "rename", "flock"}) {
      EXPECT_TRUE(failures.contains(name)) << name;
    }
  }
}

}  // namespace

}  // namespace dravenna
