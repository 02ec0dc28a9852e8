#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/file_replacement.h"
#include "platform/script_page.h"
#include "platform/text_files.h"
#include "platform/tree_files.h"
#include "platform/windows/system_calls.h"
#include "text/code_page.h"

// Everything that fails throws SystemFailure unless told otherwise; failures name the path as it was given.
namespace dravenna::windows {

// The path in the form that the system takes at any length (`\\?\C:\folder\file`). Fails on an empty path and on one
// with a NUL in it.
std::wstring extendedPath(std::u16string_view path);

// The running program's file.
std::wstring programFile();

// FILE_ATTRIBUTE_... of what stands at the path; INVALID_FILE_ATTRIBUTES, with the last error, for nothing.
DWORD attributesOf(SystemCalls& calls, const std::wstring& path);

bool isFolder(DWORD attributes);

OpenFile openForReading(SystemCalls& calls, std::u16string_view path);

// Makes or empties the file. A hidden file stays hidden.
OpenFile openForWriting(SystemCalls& calls, std::u16string_view path);

// What stands from the present place to the end, into a buffer that may be used again.
void readRest(OpenFile& file, std::string& bytes);

// The folder and the missing ones above it.
void makeFolders(SystemCalls& calls, std::u16string_view folder);

class FileReplacement : public dravenna::FileReplacement {
 public:
  // Refuses a folder and anything else that is no plain file, and a file that is read-only or that this user may not
  // write. An existing file keeps its attributes and its access list.
  FileReplacement(SystemCalls& calls, std::u16string_view path);
  FileReplacement(const FileReplacement&) = delete;
  FileReplacement& operator=(const FileReplacement&) = delete;
  ~FileReplacement() override;

  const std::u16string& path() const override { return path_; }
  void write(std::string_view bytes) override { file_.writeAll(bytes); }
  void flush() override;
  void close() override { file_.close(); }

  // Should the system have taken the old file away and then failed, the temporary file is kept and the description
  // names it.
  void place(std::u16string_view backupSuffix = {}) override;

 private:
  DWORD attributesOf(const std::wstring& path) { return windows::attributesOf(calls_, path); }
  void openTemporary();
  void placeOverOld(const std::wstring& backup);
  void removeTemporary() noexcept;

  SystemCalls& calls_;
  std::u16string path_;
  std::wstring target_;  // links resolved
  std::wstring temporary_;
  DWORD attributes_ = INVALID_FILE_ATTRIBUTES;  // of the old file; invalid for none
  OpenFile file_;
};

std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, SystemCalls& calls,
                                         Utf8Scripts utf8 = Utf8Scripts::AsAllOthers);
std::unique_ptr<TreeFiles> makeTreeFiles(SystemCalls& calls);

}  // namespace dravenna::windows
