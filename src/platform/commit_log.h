#pragma once

#include <cstdint>
#include <string_view>

namespace dravenna {

// Is told what becomes of texts that are not saved. The form never hears of it again: nothing here fails, asks or shows
// anything.
class CommitLog {
 public:
  virtual ~CommitLog() = default;

  // N holds the file, or, where its load has failed, a part of it or what it held before.
  virtual void loaded(std::u16string_view /*path*/, bool /*whole*/) {}

  // The text behind the quote mark at a position (from 1) is to be written over; both texts with their brackets. Of a
  // title that means all its places.
  virtual void committing(std::int32_t /*position*/, bool /*title*/, std::u16string_view /*before*/,
                          std::u16string_view /*after*/) {}

  // The script's file is to be replaced by the text of N, and has been.
  virtual void replacing(std::u16string_view /*path*/) {}
  virtual void saved() {}

  // The user does not want what is not saved.
  virtual void declined() {}

  // One that keeps nothing.
  static CommitLog& none() {
    static CommitLog log;
    return log;
  }
};

}  // namespace dravenna
