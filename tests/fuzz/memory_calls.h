#pragma once

#include <fcntl.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <memory>
#include <string>

#include "platform/posix/system_calls.h"

namespace dravenna {

// Files in memory, all in one folder; a read gives only a few bytes at once.
class MemoryCalls : public posix::SystemCalls {
 public:
  std::size_t mostRead = 1 << 20;

  std::string* find(const std::string& path) {
    const auto file = files_.find(path);
    return file == files_.end() ? nullptr : &file->second->bytes;
  }
  void put(const std::string& path, std::string_view bytes) {
    files_[path] = std::make_shared<Node>(Node{++nodes_, std::string(bytes)});
  }
  std::size_t count() const { return files_.size(); }

  int open(const char* path, int flags, mode_t) override {
    if ((flags & O_DIRECTORY) == 0) {
      if (find(path) == nullptr && (flags & O_CREAT) == 0) return fail(ENOENT);
      if (find(path) != nullptr && (flags & O_EXCL) != 0) return fail(EEXIST);
      if (find(path) == nullptr) put(path, "");
      if ((flags & O_TRUNC) != 0) find(path)->clear();
    }
    open_[++lastFile_] = {(flags & O_DIRECTORY) == 0 ? files_[path] : nullptr, 0};
    return lastFile_;
  }
  int close(int file) override { return open_.erase(file) == 1 ? 0 : fail(EBADF); }
  ssize_t read(int file, void* to, std::size_t size) override {
    Open& from = open_.at(file);
    const std::size_t count = from.node->bytes.copy(static_cast<char*>(to), std::min(size, mostRead), from.at);
    from.at += count;
    return static_cast<ssize_t>(count);
  }
  ssize_t write(int file, const void* from, std::size_t size) override {
    open_.at(file).node->bytes.append(static_cast<const char*>(from), size);
    return static_cast<ssize_t>(size);
  }
  int fsync(int) override { return 0; }
  int fstat(int file, struct stat& status) override { return describe(open_.at(file).node.get(), status); }
  int stat(const char* path, struct stat& status) override {
    if (std::strcmp(path, "/") == 0) return describe(nullptr, status);
    return find(path) == nullptr ? fail(ENOENT) : describe(files_[path].get(), status);
  }
  int lstat(const char* path, struct stat& status) override { return stat(path, status); }
  int mayWrite(const char* path) override { return find(path) == nullptr ? fail(ENOENT) : 0; }
  int realpath(const char* path, std::string& resolved) override {
    struct stat status {};
    if (stat(path, status) < 0) return -1;
    resolved = path;
    return 0;
  }
  int readlink(const char*, std::string&) override { return fail(EINVAL); }
  int fchmod(int, mode_t) override { return 0; }
  int fchown(int, uid_t, gid_t) override { return 0; }
  int rename(const char* from, const char* to) override {
    if (find(from) == nullptr) return fail(ENOENT);
    files_[to] = files_[from];
    files_.erase(from);
    return 0;
  }
  int unlink(const char* path) override { return files_.erase(path) == 1 ? 0 : fail(ENOENT); }
  int mkdir(const char*, mode_t) override { return fail(EACCES); }
  int flock(int, int) override { return 0; }

 private:
  struct Node {
    ino_t number;
    std::string bytes;
  };
  struct Open {
    std::shared_ptr<Node> node;  // null for a folder
    std::size_t at = 0;
  };

  static int fail(int error) {
    errno = error;
    return -1;
  }
  static int describe(const Node* node, struct stat& status) {
    status = {};
    status.st_mode = node == nullptr ? S_IFDIR | 0755 : S_IFREG | 0644;
    status.st_ino = node == nullptr ? 0 : node->number;
    status.st_size = node == nullptr ? 0 : static_cast<off_t>(node->bytes.size());
    return 0;
  }

  std::map<std::string, std::shared_ptr<Node>> files_;
  std::map<int, Open> open_;
  ino_t nodes_ = 0;
  int lastFile_ = 2;
};

}  // namespace dravenna
