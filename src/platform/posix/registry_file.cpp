#include "platform/posix/registry_file.h"

#include <fcntl.h>
#include <sys/file.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <map>
#include <optional>
#include <thread>

#include "platform/posix/files.h"
#include "platform/posix/user_folders.h"
#include "platform/registry_text.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

std::unique_ptr<RegistryCalls> makeRegistry() {
  return posix::makeRegistryFile(posix::registryPath(), posix::realSystemCalls());
}

namespace posix {

namespace {

// The statuses of the calls.
constexpr std::int32_t kSuccess = 0;
constexpr std::int32_t kNotFound = 2;
constexpr std::int32_t kRefused = 5;
constexpr std::int32_t kBadHandle = 6;
constexpr std::int32_t kWriteFault = 29;
constexpr std::int32_t kBadParameter = 87;

constexpr int kMostKept = 100;
constexpr std::chrono::seconds kLongestWait{5};
constexpr std::size_t kLargestRegistryFile = 64u << 20;  // bytes

// Tells one version of the file from the next.
struct Stamp {
  dev_t device = 0;
  ino_t node = 0;
  off_t size = 0;
  time_t seconds = 0;  // of the last change
  long nanoseconds = 0;

  static Stamp of(const struct stat& status) {
    return {status.st_dev, status.st_ino, status.st_size, status.st_ctim.tv_sec, status.st_ctim.tv_nsec};
  }
  bool operator==(const Stamp&) const = default;
};

// "HKEY_...\A\B" for a key; nothing for an unknown root or a name that cannot stand in the file.
std::optional<std::u16string> fullPath(std::uint32_t root, std::u16string_view path) {
  std::u16string full;
  if (root == HKEY_CLASSES_ROOT_ID) full = u"HKEY_CLASSES_ROOT";
  if (root == HKEY_LOCAL_MACHINE_ID) full = u"HKEY_LOCAL_MACHINE";
  if (full.empty() || !isWritableName(path)) return std::nullopt;
  for (std::size_t at = 0; at < path.size();) {
    const std::size_t end = std::min(path.find(u'\\', at), path.size());
    if (end > at) full.append(u"\\").append(path.substr(at, end - at));
    at = end + 1;
  }
  return full;
}

bool isRoot(std::u16string_view full) { return full.find(u'\\') == std::u16string_view::npos; }

class RegistryFile : public RegistryCalls {
 public:
  RegistryFile(std::string path, SystemCalls& calls) : path_(std::move(path)), calls_(calls) {}

  std::int32_t RegOpenKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    return open(root, path, handle, false);
  }

  std::int32_t RegCreateKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    return open(root, path, handle, true);
  }

  std::int32_t RegQueryValueExA(Handle handle, std::u16string_view name, std::uint32_t& type, char16_t* data,
                                std::uint32_t& size) override {
    return guarded([&] {
      const auto key = handles_.find(handle);
      if (key == handles_.end()) return kBadHandle;
      const auto found = keys_.find(key->second);
      if (found == keys_.end()) return kNotFound;
      const auto value = found->second.values.find(name);
      if (value == found->second.values.end()) return kNotFound;
      type = value->second.type;
      const std::u16string& string = value->second.string;
      const std::size_t count = data == nullptr ? string.size() : std::min<std::size_t>(size, string.size());
      if (data != nullptr) string.copy(data, count);
      size = static_cast<std::uint32_t>(count);
      return kSuccess;
    });
  }

  std::int32_t RegSetValueExA(Handle handle, std::u16string_view name, std::u16string_view data) override {
    return guarded([&] {
      const auto key = handles_.find(handle);
      if (key == handles_.end()) return kBadHandle;
      if (!isWritableName(name)) return kBadParameter;
      change([&](RegistryTree& keys) {
        auto& values = makeRegistryKey(keys, key->second).values;
        RegistryValue value{kRegSz, std::u16string(data), {}};
        const auto old = values.find(name);
        if (old != values.end() && old->second == value) return false;
        values.insert_or_assign(std::u16string(name), std::move(value));
        return true;
      });
      return kSuccess;
    });
  }

  std::int32_t RegDeleteKeyA(std::uint32_t root, std::u16string_view path) override {
    return guarded([&] {
      const auto full = fullPath(root, path);
      if (!full || isRoot(*full)) return kBadParameter;
      if (!exists(*full)) return kNotFound;
      std::int32_t status = kSuccess;
      change([&](RegistryTree& keys) {
        status = hasSubKeys(keys, *full) ? kRefused : kSuccess;
        return status == kSuccess && keys.erase(*full) != 0;
      });
      return status;
    });
  }

  std::int32_t RegCloseKey(Handle handle) override { return handles_.erase(handle) != 0 ? kSuccess : kBadHandle; }

 private:
  template <typename Call>
  static std::int32_t guarded(Call call) {
    try {
      return call();
    } catch (const SystemFailure& failure) {
      const int error = failure.error();
      return error == EACCES || error == EPERM || error == EROFS ? kRefused : kWriteFault;
    } catch (const std::exception&) {
      return kWriteFault;
    }
  }

  std::int32_t open(std::uint32_t root, std::u16string_view path, Handle& handle, bool create) {
    handle = 0;
    return guarded([&] {
      const auto full = fullPath(root, path);
      if (!full) return kBadParameter;
      if (!exists(*full)) {
        if (!create) return kNotFound;
        change([&](RegistryTree& keys) {
          makeRegistryKey(keys, *full);
          return true;
        });
      }
      handle = ++lastHandle_;
      handles_.emplace(handle, *full);
      return kSuccess;
    });
  }

  bool exists(const std::u16string& full) {
    refresh();
    return isRoot(full) || keys_.contains(full);
  }

  // Brings keys_ up to the file. A file that is missing or cannot be read counts as empty.
  void refresh() {
    struct stat status {};
    if (path_.empty() || calls_.stat(path_.c_str(), status) < 0) {
      forget();
      return;
    }
    if (stamp_ == Stamp::of(status)) return;
    forget();
    stamp_ = Stamp::of(status);
    try {
      keys_ = parseRegistryText(readFile(path_, stamp_).value_or("")).keys;
    } catch (const SystemFailure&) {
      keys_.clear();
    }
  }

  void forget() {
    stamp_.reset();
    keys_.clear();
  }

  // Nothing if the file is missing. Throws SystemFailure.
  std::optional<std::string> readFile(const std::string& path, std::optional<Stamp>& stamp) {
    OpenFile file;
    try {
      file = OpenFile(calls_, path, O_RDONLY | O_NONBLOCK, 0, path);
    } catch (const SystemFailure& failure) {
      if (failure.error() == ENOENT) return std::nullopt;
      throw;
    }
    const struct stat status = file.status();
    if (!S_ISREG(status.st_mode)) file.fail(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    stamp = Stamp::of(status);
    return readWholeFile(file, kLargestRegistryFile);
  }

  // Waits for the lock, but not for ever: a program that hangs must not hang this one.
  OpenFile lockFile(const std::string& path) {
    OpenFile lock(calls_, path, O_RDWR | O_CREAT, 0600, path);
    const auto end = std::chrono::steady_clock::now() + kLongestWait;
    while (uninterrupted([&] { return calls_.flock(lock.number(), LOCK_EX | LOCK_NB); }) < 0) {
      if (errno != EWOULDBLOCK || std::chrono::steady_clock::now() > end) failWithErrno(path);
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return lock;
  }

  // Reads, changes and replaces the file, alone. `apply` tells whether it has changed anything. Throws SystemFailure;
  // then the file is as it was, unless only the flush of its folder has failed.
  template <typename Change>
  void change(Change apply) {
    if (path_.empty()) throw SystemFailure(ENOENT, path_);
    makeFolders(calls_, folderOf(path_), 0700);
    const std::string target = resolveTarget(calls_, path_);
    const OpenFile lock = lockFile(target + ".lock");
    std::optional<Stamp> stamp;
    const std::optional<std::string> before = readFile(target, stamp);
    RegistryText text = parseRegistryText(before.value_or(""));
    if (apply(text.keys)) {
      if (text.damaged) keepAside(target, *before);
      replaceFile(calls_, target, writeRegistryText(text.keys), {.newFileMode = 0666, .locked = true});
    }
    forget();  // a look at the file under its new stamp comes with the next call that opens a key
    keys_ = std::move(text.keys);
  }

  void keepAside(const std::string& target, const std::string& bytes) {
    struct stat status {};
    if (calls_.stat(target.c_str(), status) < 0) failWithErrno(target);
    for (int number = 1;; ++number) {
      const std::string name = target + ".bad" + (number == 1 ? "" : std::to_string(number));
      std::optional<Stamp> stamp;
      std::optional<std::string> kept;
      try {
        kept = readFile(name, stamp);
      } catch (const SystemFailure&) {
        if (number == kMostKept) throw;
        continue;  // not ours to read
      }
      if (!kept) replaceFile(calls_, name, bytes, {.newFileMode = status.st_mode & 0777, .locked = true});
      if (!kept || kept == bytes) return;
    }
  }

  std::string path_;
  SystemCalls& calls_;
  std::optional<Stamp> stamp_;  // of what keys_ was read from
  RegistryTree keys_;
  std::map<Handle, std::u16string> handles_;  // full paths
  Handle lastHandle_ = 0;
};

}  // namespace

std::string registryPath() {
  const char* const named = std::getenv("DRAVENNA_REGISTRY");
  if (named != nullptr && named[0] != '\0') return named;
  const std::string folder = userFolder("XDG_CONFIG_HOME", "/.config");
  return folder.empty() ? "" : folder + "/dravenna/registry.reg";
}

std::unique_ptr<RegistryCalls> makeRegistryFile(std::string path, SystemCalls& calls) {
  return std::make_unique<RegistryFile>(std::move(path), calls);
}

}  // namespace posix

}  // namespace dravenna
