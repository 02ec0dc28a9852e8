#include <algorithm>
#include <utility>

#include "platform/windows/files.h"
#include "text/text.h"

namespace dravenna {

std::unique_ptr<TreeFiles> makeTreeFiles() { return windows::makeTreeFiles(windows::realSystemCalls()); }

namespace windows {

namespace {

namespace fs = std::filesystem;

using Chooser = TreeFiles::Chooser;

std::u16string textOf(const fs::path& path) { return fromWide(path.native()); }

class FolderListing {
 public:
  explicit FolderListing(const fs::path& folder) : path_(textOf(folder.empty() ? fs::path(L".") : folder)) {
    std::wstring pattern = extendedPath(path_);
    pattern += pattern.ends_with(L'\\') ? L"*" : L"\\*";
    handle_ = ::FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry_, FindExSearchNameMatch, nullptr, 0);
    if (handle_ == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_FILE_NOT_FOUND) {
      failWithLastError(path_);
    }
  }
  FolderListing(const FolderListing&) = delete;
  FolderListing& operator=(const FolderListing&) = delete;
  ~FolderListing() {
    if (handle_ != INVALID_HANDLE_VALUE) ::FindClose(handle_);
  }

  // Null at the end.
  const WIN32_FIND_DATAW* next() {
    if (handle_ == INVALID_HANDLE_VALUE) return nullptr;
    if (!std::exchange(first_, false) && ::FindNextFileW(handle_, &entry_) == 0) {
      if (::GetLastError() != ERROR_NO_MORE_FILES) failWithLastError(path_);
      return nullptr;
    }
    return &entry_;
  }

 private:
  std::u16string path_;
  HANDLE handle_;
  WIN32_FIND_DATAW entry_{};
  bool first_ = true;
};

void listFolder(const fs::path& folder, const std::string& relative, const Chooser& enter, const Chooser& take,
                const TreeFiles::Hearer* hearer, std::vector<std::string>& out) {
  FolderListing listing(folder);
  while (const WIN32_FIND_DATAW* entry = listing.next()) {
    const std::wstring_view file = entry->cFileName;
    if (file == L"." || file == L"..") continue;
    std::string name = relative + toUtf8(fromWide(file));
    if (isFolder(entry->dwFileAttributes)) {
      const bool link = (entry->dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                        IsReparseTagNameSurrogate(entry->dwReserved0);
      if (link && hearer != nullptr) hearer->passedBy(name);
      if (link || !enter(name)) continue;
      const auto failure = attempt([&] { listFolder(folder / file, name + "/", enter, take, hearer, out); });
      if (failure && hearer == nullptr) throw *failure;
      if (failure) hearer->unreadable(*failure);
    } else if (take(name)) {
      out.push_back(std::move(name));
    }
  }
}

class WindowsTreeFiles : public TreeFiles {
 public:
  explicit WindowsTreeFiles(SystemCalls& calls) : calls_(calls) {}

  PathKind pathKind(const fs::path& path) override {
    if (path.empty()) return PathKind::Missing;
    const DWORD attributes = attributesOf(calls_, extendedPath(textOf(path)));
    if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::Missing;
    return isFolder(attributes) ? PathKind::Folder : PathKind::File;
  }

  std::optional<FileIdentity> identity(const fs::path& path) override {
    if (pathKind(path) == PathKind::Missing) return std::nullopt;
    const std::u16string text = textOf(path);
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    // The flag opens folders too.
    const OpenFile file(calls_, extendedPath(text), {0, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS}, text);
    BY_HANDLE_FILE_INFORMATION about{};
    if (::GetFileInformationByHandle(file.handle(), &about) == 0) return FileIdentity{0, 0, false};  // a device
    return FileIdentity{about.dwVolumeSerialNumber,
                        std::uint64_t{about.nFileIndexHigh} << 32 | std::uint64_t{about.nFileIndexLow},
                        !isFolder(about.dwFileAttributes) && ::GetFileType(file.handle()) == FILE_TYPE_DISK};
  }

  std::vector<std::string> filesBelow(const fs::path& folder, const Chooser& enter, const Chooser& take,
                                      const Hearer* hearer) override {
    std::vector<std::string> out;
    listFolder(folder, {}, enter, take, hearer, out);
    std::sort(out.begin(), out.end());
    return out;
  }

  void readWhole(const fs::path& path, std::string& bytes) override {
    OpenFile file = openForReading(calls_, textOf(path));
    readRest(file, bytes);
  }

  void writeDevice(const fs::path& path, std::string_view bytes) override {
    OpenFile file = openForWriting(calls_, textOf(path));
    file.writeAll(bytes);
    file.close();
  }

  void append(const fs::path& path, std::string_view bytes) override {
    const std::u16string text = textOf(path);
    OpenFile file(calls_, extendedPath(text), {FILE_APPEND_DATA, FILE_SHARE_READ, OPEN_EXISTING}, text);
    file.writeAll(bytes);
    file.close();
  }

  void makeFolders(const fs::path& folder) override {
    if (!folder.empty()) windows::makeFolders(calls_, textOf(folder));
  }

  std::unique_ptr<dravenna::FileReplacement> replace(const fs::path& path) override {
    return std::make_unique<FileReplacement>(calls_, textOf(path));
  }

  // The system brings the renames in a folder to disk by itself.
  void flushFolder(const fs::path&) override {}

 private:
  SystemCalls& calls_;
};

}  // namespace

std::unique_ptr<TreeFiles> makeTreeFiles(SystemCalls& calls) { return std::make_unique<WindowsTreeFiles>(calls); }

}  // namespace windows

}  // namespace dravenna
