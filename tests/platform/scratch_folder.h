#pragma once

#include <chrono>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

namespace dravenna {

// A new folder for one test; removed with all that is in it.
class ScratchFolder {
 public:
  ScratchFolder() {
    static int count = 0;
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    folder_ = std::filesystem::canonical(std::filesystem::temp_directory_path()) /
              ("dravenna-test-" + std::to_string(now) + "-" + std::to_string(count++));
    std::filesystem::create_directories(folder_);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
  }

  std::filesystem::path file(std::string_view name) const { return folder_ / name; }
  std::u16string path(std::string_view name) const { return file(name).u16string(); }

  std::filesystem::path put(std::string_view name, std::string_view bytes) const {
    std::ofstream(file(name), std::ios::binary) << bytes;
    return file(name);
  }

  std::string get(std::string_view name) const {
    std::ostringstream bytes;
    bytes << std::ifstream(file(name), std::ios::binary).rdbuf();
    return bytes.str();
  }

  std::set<std::string> names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

 private:
  std::filesystem::path folder_;
};

}  // namespace dravenna
