#include "platform/rescue_folder.h"

#include <algorithm>
#include <random>
#include <utility>

#include "platform/windows/files.h"

namespace dravenna {

namespace windows {

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Others may read the file meanwhile, but not open it for writing: that is the mark that it is in use. The folders of a
// user's own data are closed to all others.
class WindowsRescueFile : public RescueFile {
 public:
  WindowsRescueFile(SystemCalls& calls, const std::u16string& path)
      : calls_(calls),
        path_(extendedPath(path)),
        file_(calls, path_, {GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_NEW}, path) {}

  void append(std::string_view bytes) override { file_.writeAll(bytes); }
  void flush() override { file_.sync(); }
  void remove() noexcept override {
    file_.closeQuietly();
    calls_.deleteFile(path_.c_str());
  }

 private:
  SystemCalls& calls_;
  std::wstring path_;
  OpenFile file_;
};

class WindowsRescueFolder : public RescueFolder {
 public:
  WindowsRescueFolder(std::u16string folder, SystemCalls& calls) : folder_(std::move(folder)), calls_(calls) {}

  std::unique_ptr<RescueFile> create(std::u16string_view suffix) override {
    makeFolders(calls_, folder_);
    for (;;) {
      const std::wstring name = std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(random_());
      try {
        return std::make_unique<WindowsRescueFile>(calls_, folder_ + u"\\" + fromWide(name) + std::u16string(suffix));
      } catch (const SystemFailure& failure) {
        if (failure.error() != ERROR_FILE_EXISTS) throw;
      }
    }
  }

  std::vector<Entry> entries() override {
    std::vector<Entry> found;
    WIN32_FIND_DATAW entry;
    const std::wstring pattern = extendedPath(folder_) + L"\\*";
    const HANDLE search = ::FindFirstFileW(pattern.c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) return found;
    FILETIME now;
    ::GetSystemTimeAsFileTime(&now);
    const auto joined = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
    const auto seconds = [&](const FILETIME& time) {
      return static_cast<std::int64_t>(joined(time.dwHighDateTime, time.dwLowDateTime) / 10'000'000);
    };
    do {
      if (isFolder(entry.dwFileAttributes)) continue;
      const std::u16string path = folder_ + u"\\" + fromWide(entry.cFileName);
      try {
        const OpenFile unused(calls_, extendedPath(path), {GENERIC_WRITE, kShareAll, OPEN_EXISTING}, path);
      } catch (const SystemFailure&) {
        continue;
      }
      found.push_back(
          {path, joined(entry.nFileSizeHigh, entry.nFileSizeLow), seconds(now) - seconds(entry.ftLastWriteTime)});
    } while (::FindNextFileW(search, &entry) != 0);
    ::FindClose(search);
    std::sort(found.begin(), found.end(), [](const Entry& one, const Entry& other) { return one.age > other.age; });
    return found;
  }

  std::string read(std::u16string_view path, std::uint64_t limit) override {
    OpenFile file = openForReading(calls_, path);
    if (file.size() > limit) throw SystemFailure(ERROR_FILE_TOO_LARGE, path);
    std::string bytes;
    readRest(file, bytes);
    return bytes;
  }

  void remove(std::u16string_view path) noexcept override {
    try {
      calls_.deleteFile(extendedPath(path).c_str());
    } catch (const Failure&) {
      // What has no path is not there.
    }
  }

 private:
  std::u16string folder_;
  SystemCalls& calls_;
  std::random_device random_;
};

}  // namespace

}  // namespace windows

std::u16string absolutePath(std::u16string_view path) {
  try {
    const std::wstring full = windows::extendedPath(path);
    constexpr std::wstring_view kLocal = L"\\\\?\\", kShare = L"\\\\?\\UNC\\";
    if (full.starts_with(kShare)) return u"\\\\" + windows::fromWide(full.substr(kShare.size()));
    return windows::fromWide(full.starts_with(kLocal) ? full.substr(kLocal.size()) : full);
  } catch (const Failure&) {
    return std::u16string(path);
  }
}

std::unique_ptr<RescueFolder> makeRescueFolder() {
  const std::u16string local = windows::environment(L"LOCALAPPDATA");
  if (local.empty()) return nullptr;
  return std::make_unique<windows::WindowsRescueFolder>(local + u"\\dravenna\\rescue", windows::realSystemCalls());
}

}  // namespace dravenna
