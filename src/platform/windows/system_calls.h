#pragma once

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <functional>
#include <string>
#include <string_view>

#include "platform/failure.h"

// Text and files of the system. Paths are the extended ones of paths.h.
namespace dravenna::windows {

constexpr DWORD kIsFolder = 336;  // ERROR_DIRECTORY_NOT_SUPPORTED, not in every compiler's headers

std::wstring toWide(std::u16string_view text);
std::u16string fromWide(std::wstring_view text);

// An environment variable; empty if it is not set.
std::u16string environment(const wchar_t* name);

// Every call to the system that changes, opens or reads files. Results and the last error are those of the system. A
// test puts its own in place to make single calls fail.
class SystemCalls {
 public:
  virtual ~SystemCalls() = default;

  HANDLE createFile(const wchar_t* path, DWORD access, DWORD sharing, DWORD disposition, DWORD flags);
  BOOL closeHandle(HANDLE file);
  BOOL readFile(HANDLE file, void* to, DWORD size, DWORD& count);
  BOOL writeFile(HANDLE file, const void* from, DWORD size, DWORD& count);
  BOOL setEndOfFile(HANDLE file);
  BOOL flushFileBuffers(HANDLE file);
  DWORD getFileAttributes(const wchar_t* path);
  BOOL setFileAttributes(const wchar_t* path, DWORD attributes);
  BOOL moveFile(const wchar_t* from, const wchar_t* to);  // over another one, to disk
  BOOL replaceFile(const wchar_t* target, const wchar_t* replacement,
                   const wchar_t* backup);  // null: no backup
  BOOL copyFile(const wchar_t* from, const wchar_t* to);
  BOOL deleteFile(const wchar_t* path);
  BOOL createDirectory(const wchar_t* path);

 protected:
  // Makes a call, which gives whether it has succeeded; `name` is that of the function above.
  virtual bool make(const char* name, const std::function<bool()>& call);

 private:
  template <typename Result, typename Function, typename... Arguments>
  Result made(const char* name, Result failure, Function function, Arguments... arguments) {
    Result result = failure;
    make(name, [&] { return (result = function(arguments...)) != failure; });
    return result;
  }
};

SystemCalls& realSystemCalls();

// A failure with its error number of the system. The description is the word for it, in English, and the path in
// quotes; the common ones read as on other systems.
class SystemFailure : public Failure {
 public:
  SystemFailure(DWORD error, std::u16string_view path);
  DWORD error() const { return error_; }

 private:
  DWORD error_;
};

// Throws SystemFailure with the calling thread's last error.
[[noreturn]] void failWithLastError(std::u16string_view path);

// An open file. Closed by the destructor without a failure.
class OpenFile {
 public:
  struct How {
    DWORD access;       // GENERIC_...
    DWORD sharing;      // FILE_SHARE_...
    DWORD disposition;  // CREATE_NEW, OPEN_EXISTING, ...
    DWORD flags = FILE_ATTRIBUTE_NORMAL;
  };

  OpenFile() = default;
  // Throws SystemFailure; a folder fails as such. `shownPath` is the path that failures name.
  OpenFile(SystemCalls& calls, const std::wstring& path, How how, std::u16string shownPath);
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&& other) noexcept;
  ~OpenFile() { closeQuietly(); }

  bool isOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE handle() const { return handle_; }

  // These throw SystemFailure. `read` gives 0 at the end; `writeAll` stops only at a failure.
  std::size_t size() const;
  std::size_t read(void* to, std::size_t size);
  void writeAll(std::string_view bytes);
  void truncate();  // at the present position
  void sync();
  void close();

  void closeQuietly() noexcept;

 private:
  SystemCalls* calls_ = nullptr;
  std::u16string shownPath_;
  HANDLE handle_ = INVALID_HANDLE_VALUE;
};

}  // namespace dravenna::windows
