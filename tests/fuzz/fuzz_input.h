#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "platform/posix/system_calls.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

// Ends the run with the input that shows the fault.
inline void require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "FAULT: %s\n", what);
  std::abort();
}

// Inputs are files that a person can write: some digits on top, then parts with a line "%%" between them.
class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  unsigned digit() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte >= '0' ? byte - unsigned{'0'} : byte;
  }
  std::string_view part(std::string_view separator = "%%\n") {
    const std::size_t at = rest_.find(separator);
    const std::string_view part = rest_.substr(0, at);
    rest_ = at == std::string_view::npos ? std::string_view() : rest_.substr(at + separator.size());
    return part;
  }
  std::string_view rest() { return std::exchange(rest_, {}); }
  bool empty() const { return rest_.empty(); }

 private:
  std::string_view rest_;
};

// The system, but a read gives only a few bytes at once.
class ShortReads : public posix::SystemCalls {
 public:
  std::size_t mostRead = 1;

  ssize_t read(int file, void* to, std::size_t size) override {
    return SystemCalls::read(file, to, std::min(size, mostRead));
  }

 protected:
  ssize_t make(const char* name, const std::function<ssize_t()>& call) override {
    return std::string_view(name) == "fsync" ? 0 : SystemCalls::make(name, call);
  }
};

inline CodePagePtr fuzzCodePage(unsigned digit) {
  static const char* const names[] = {"1252", "utf-8", "874",  "932",  "936",  "949",  "950", "1250",
                                      "1251", "1253",  "1254", "1255", "1256", "1257", "1258"};
  static CodePagePtr pages[std::size(names)];
  const std::size_t index = digit % std::size(names);
  if (pages[index] == nullptr) pages[index] = codePageByName(names[index]);
  require(pages[index] != nullptr, "a code page is missing");
  return pages[index];
}

// Pairs of command lists, the usual ones first.
inline std::pair<Text, Text> fuzzCommandLists(unsigned digit) {
  static const std::pair<const char16_t*, const char16_t*> lists[] = {
      {u",mes,menu,announce,mapannounce,areaannounce,debugmes,npctalk,logmes,globalmes,select,",
       u",mapannounce,areaannounce,"},
      {u"mes,menu,select", u"menu"},
      {u",,mes,", u",,"},
      {u"", u",mes,"},
      {u",a b,mes,SELECT,strasse,\u0411,", u",select,a b,"},
  };
  const auto& pair = lists[digit % std::size(lists)];
  return {pair.first, pair.second};
}

}  // namespace dravenna
