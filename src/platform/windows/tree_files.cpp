#include "platform/tree_files.h"

#include <algorithm>
#include <utility>

#include "platform/windows/files.h"
#include "text/text.h"

namespace dravenna {

namespace fs = std::filesystem;
using windows::fromWide;

namespace {

using Chooser = std::function<bool(const std::string&)>;

std::u16string textOf(const fs::path& path) { return fromWide(path.native()); }

class FolderListing {
 public:
  explicit FolderListing(const fs::path& folder) : path_(textOf(folder.empty() ? fs::path(L".") : folder)) {
    std::wstring pattern = windows::extendedPath(path_);
    pattern += pattern.ends_with(L'\\') ? L"*" : L"\\*";
    handle_ = ::FindFirstFileExW(pattern.c_str(), FindExInfoBasic, &entry_, FindExSearchNameMatch, nullptr, 0);
    if (handle_ == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_FILE_NOT_FOUND) {
      windows::failWithLastError(path_);
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
      if (::GetLastError() != ERROR_NO_MORE_FILES) windows::failWithLastError(path_);
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
                std::vector<std::string>& out) {
  FolderListing listing(folder);
  while (const WIN32_FIND_DATAW* entry = listing.next()) {
    const std::wstring_view file = entry->cFileName;
    if (file == L"." || file == L"..") continue;
    std::string name = relative + toUtf8(fromWide(file));
    if (windows::isFolder(entry->dwFileAttributes)) {
      const bool link = (entry->dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
                        IsReparseTagNameSurrogate(entry->dwReserved0);
      if (!link && enter(name)) listFolder(folder / file, name + "/", enter, take, out);
    } else if (take(name)) {
      out.push_back(std::move(name));
    }
  }
}

}  // namespace

PathKind pathKind(const fs::path& path) {
  if (path.empty()) return PathKind::Missing;
  const DWORD attributes = windows::attributesOf(windows::extendedPath(textOf(path)));
  if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::Missing;
  return windows::isFolder(attributes) ? PathKind::Folder : PathKind::File;
}

std::vector<std::string> filesBelow(const fs::path& folder, const Chooser& enter, const Chooser& take) {
  std::vector<std::string> out;
  listFolder(folder, {}, enter, take, out);
  std::sort(out.begin(), out.end());
  return out;
}

void readWhole(const fs::path& path, std::string& bytes) {
  windows::OpenFile file = windows::openForReading(textOf(path));
  windows::readRest(file, bytes);
}

void writeWhole(const fs::path& path, std::string_view bytes) {
  windows::OpenFile file = windows::openForWriting(textOf(path));
  file.writeAll(bytes);
  file.close();
}

void makeFolders(const fs::path& folder) {
  if (!folder.empty()) windows::makeFolderTree(textOf(folder));
}

std::unique_ptr<FileReplacement> replaceTreeFile(const fs::path& path) {
  if (pathKind(path) == PathKind::Missing) throw windows::SystemFailure(ERROR_FILE_NOT_FOUND, textOf(path));
  return std::make_unique<windows::FileReplacement>(textOf(path));
}

void moveOver(const fs::path& from, const fs::path& to) {
  const std::wstring old = windows::extendedPath(textOf(from));
  const std::wstring target = windows::extendedPath(textOf(to));
  if (::MoveFileExW(old.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) == 0) {
    windows::failWithLastError(textOf(to));
  }
}

void removeFile(const fs::path& path) {
  if (::DeleteFileW(windows::extendedPath(textOf(path)).c_str()) != 0) return;
  if (::GetLastError() != ERROR_FILE_NOT_FOUND) windows::failWithLastError(textOf(path));
}

// The system brings the renames in a folder to disk by itself.
void flushFolder(const fs::path&) {}

}  // namespace dravenna
