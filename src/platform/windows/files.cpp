#include "platform/windows/files.h"

#include <atomic>
#include <random>

#include "platform/file_state.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

std::string readBytes(std::u16string_view path) {
  windows::OpenFile file = windows::openForReading(windows::realSystemCalls(), path);
  std::string bytes;
  windows::readRest(file, bytes);
  return bytes;
}

void replaceBytes(std::u16string_view path, std::string_view bytes) {
  windows::FileReplacement replacement(windows::realSystemCalls(), path);
  replacement.write(bytes);
  replacement.flush();
  replacement.place();
}

std::optional<FileState> fileState(std::u16string_view path) {
  constexpr DWORD kShared = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  try {
    const windows::OpenFile file(windows::realSystemCalls(), windows::extendedPath(path), {0, kShared, OPEN_EXISTING},
                                 std::u16string(path));
    BY_HANDLE_FILE_INFORMATION found;
    if (!::GetFileInformationByHandle(file.handle(), &found)) return {};
    const auto joined = [](DWORD high, DWORD low) { return static_cast<std::uint64_t>(high) << 32 | low; };
    return FileState{
        found.dwVolumeSerialNumber, joined(found.nFileIndexHigh, found.nFileIndexLow),
        joined(found.nFileSizeHigh, found.nFileSizeLow),
        static_cast<std::int64_t>(joined(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime))};
  } catch (const Failure&) {
    return {};
  }
}

namespace windows {

namespace {

constexpr int kMostNames = 100;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kOwnAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                                 FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;  // those that can be set again

std::wstring folderOf(const std::wstring& path) { return path.substr(0, path.rfind(L'\\')); }

std::wstring newTemporaryName(const std::wstring& folder) {
  static std::atomic<unsigned> count{0};
  static const unsigned seed = std::random_device{}();
  return folder + L"\\.dravenna-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(seed + count++) +
         L".tmp";
}

// Calls that fill a buffer and give the length, or the size that is needed.
template <typename Call>
std::wstring filledBy(Call call) {
  std::wstring buffer(MAX_PATH, L'\0');
  for (;;) {
    const DWORD length = call(buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length < buffer.size()) return buffer.substr(0, length);
    buffer.resize(buffer.size() < length ? length : 2 * buffer.size());
  }
}

// The file that a link leads to; any other file is itself.
std::wstring resolveTarget(SystemCalls& calls, const std::wstring& path, DWORD attributes,
                           const std::u16string& shownPath) {
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return path;
  const OpenFile file(calls, path, {0, kShareAll, OPEN_EXISTING}, shownPath);
  std::wstring resolved = filledBy([&](wchar_t* buffer, DWORD size) {
    return ::GetFinalPathNameByHandleW(file.handle(), buffer, size, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
  });
  if (resolved.empty()) failWithLastError(shownPath);
  return resolved;
}

}  // namespace

std::wstring extendedPath(std::u16string_view path) {
  if (path.empty() || path.find(u'\0') != std::u16string_view::npos) throw SystemFailure(ERROR_FILE_NOT_FOUND, path);
  const std::wstring given = toWide(path);
  std::wstring full =
      filledBy([&](wchar_t* buffer, DWORD size) { return ::GetFullPathNameW(given.c_str(), size, buffer, nullptr); });
  if (full.empty()) failWithLastError(path);
  if (full.starts_with(L"\\\\?\\") || full.starts_with(L"\\\\.\\")) return full;
  return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

std::wstring programFile() {
  return filledBy([](wchar_t* buffer, DWORD size) { return ::GetModuleFileNameW(nullptr, buffer, size); });
}

DWORD attributesOf(SystemCalls& calls, const std::wstring& path) { return calls.getFileAttributes(path.c_str()); }

bool isFolder(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

OpenFile openForReading(SystemCalls& calls, std::u16string_view path) {
  return {calls,
          extendedPath(path),
          {GENERIC_READ, kShareAll, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN},
          std::u16string(path)};
}

OpenFile openForWriting(SystemCalls& calls, std::u16string_view path) {
  const std::wstring extended = extendedPath(path);
  const DWORD attributes = attributesOf(calls, extended);
  const bool readOnly = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
  if (readOnly && !isFolder(attributes)) throw SystemFailure(ERROR_ACCESS_DENIED, path);
  OpenFile file(calls, extended, {GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS}, std::u16string(path));
  if (::GetFileType(file.handle()) == FILE_TYPE_DISK) file.truncate();
  return file;
}

void readRest(OpenFile& file, std::string& bytes) {
  constexpr std::size_t kChunk = 65536;
  // One more than the file has, to see its end without growing.
  bytes.resize(::GetFileType(file.handle()) == FILE_TYPE_DISK ? file.size() + 1 : kChunk);
  for (std::size_t filled = 0;;) {
    if (filled == bytes.size()) bytes.resize(filled + filled / 2 + kChunk);
    const std::size_t count = file.read(bytes.data() + filled, bytes.size() - filled);
    filled += count;
    if (count == 0) {
      bytes.resize(filled);
      return;
    }
  }
}

void makeFolders(SystemCalls& calls, std::u16string_view folder) {
  const std::wstring path = extendedPath(folder);
  if (isFolder(attributesOf(calls, path)) || calls.createDirectory(path.c_str()) != 0) return;
  if (::GetLastError() == ERROR_ALREADY_EXISTS && isFolder(attributesOf(calls, path))) return;
  const std::wstring above = folderOf(path);
  if (::GetLastError() != ERROR_PATH_NOT_FOUND || above.empty() || above == path) failWithLastError(folder);
  makeFolders(calls, fromWide(above));
  if (calls.createDirectory(path.c_str()) == 0 && ::GetLastError() != ERROR_ALREADY_EXISTS) {
    failWithLastError(folder);
  }
}

FileReplacement::FileReplacement(SystemCalls& calls, std::u16string_view path)
    : calls_(calls), path_(path), target_(extendedPath(path)) {
  attributes_ = attributesOf(target_);
  if (attributes_ == INVALID_FILE_ATTRIBUTES) {
    if (::GetLastError() != ERROR_FILE_NOT_FOUND) failWithLastError(path_);
  } else {
    target_ = resolveTarget(calls_, target_, attributes_, path_);
    attributes_ = attributesOf(target_);
    if (isFolder(attributes_)) throw SystemFailure(kIsFolder, path_);
    if ((attributes_ & FILE_ATTRIBUTE_READONLY) != 0) throw SystemFailure(ERROR_ACCESS_DENIED, path_);
    const OpenFile old(calls_, target_, {GENERIC_WRITE, kShareAll, OPEN_EXISTING}, path_);
    if (::GetFileType(old.handle()) != FILE_TYPE_DISK) throw SystemFailure(ERROR_INVALID_PARAMETER, path_);
  }
  openTemporary();
}

void FileReplacement::openTemporary() {
  for (int names = 1;; ++names) {
    std::wstring name = newTemporaryName(folderOf(target_));
    try {
      file_ = OpenFile(calls_, name, {GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW}, path_);
      temporary_ = std::move(name);
      return;
    } catch (const SystemFailure& failure) {
      if (failure.error() != ERROR_FILE_EXISTS || names == kMostNames) throw;
    }
  }
}

FileReplacement::~FileReplacement() { removeTemporary(); }

void FileReplacement::removeTemporary() noexcept {
  file_.closeQuietly();
  if (!temporary_.empty()) calls_.deleteFile(temporary_.c_str());
  temporary_.clear();
}

void FileReplacement::flush() {
  file_.sync();
  file_.close();
}

void FileReplacement::place(std::u16string_view backupSuffix) {
  if (attributes_ != INVALID_FILE_ATTRIBUTES) {
    std::wstring backup = backupSuffix.empty() ? std::wstring() : target_ + toWide(backupSuffix);
    const std::size_t length = backup.size();
    for (int number = 2; !backup.empty() && attributesOf(backup) != INVALID_FILE_ATTRIBUTES; ++number) {
      backup.replace(length, std::wstring::npos, std::to_wstring(number));
    }
    placeOverOld(backup);
  } else if (calls_.moveFile(temporary_.c_str(), target_.c_str()) == 0) {
    failWithLastError(path_);
  }
  temporary_.clear();
}

void FileReplacement::placeOverOld(const std::wstring& backup) {
  // Not every file system and server replaces a file with all that belongs to it: the attributes at least are kept.
  calls_.setFileAttributes(temporary_.c_str(), attributes_ & kOwnAttributes);
  if (calls_.replaceFile(target_.c_str(), temporary_.c_str(), backup.empty() ? nullptr : backup.c_str()) != 0) {
    return;
  }
  DWORD error = ::GetLastError();
  if (error == ERROR_ACCESS_DENIED || error == ERROR_SHARING_VIOLATION || error == ERROR_UNABLE_TO_REMOVE_REPLACED) {
    throw SystemFailure(error, path_);
  }
  const bool oldStands = attributesOf(target_) != INVALID_FILE_ATTRIBUTES;
  if (oldStands && !backup.empty() && calls_.copyFile(target_.c_str(), backup.c_str()) == 0) {
    failWithLastError(path_);
  }
  if (calls_.moveFile(temporary_.c_str(), target_.c_str()) != 0) {
    return;
  }
  error = ::GetLastError();
  if (oldStands) throw SystemFailure(error, path_);
  const std::u16string kept = fromWide(temporary_);
  temporary_.clear();
  throw Failure(SystemFailure(error, path_).description() + u". The new contents are in '" + kept + u"'");
}

}  // namespace windows

}  // namespace dravenna
