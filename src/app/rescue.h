#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/commit_log.h"
#include "platform/failure.h"
#include "platform/rescue_folder.h"

namespace dravenna {

class DiskWatch;
class Principal;

// Keeps in the rescue folder what would be lost: a journal of the commits that are not saved, until they are or the
// user declines them, and the files that a save replaces though they are not what had been loaded.
class Rescue : public CommitLog {
 public:
  // What was left behind by a process that has ended, or replaced by any.
  struct Find {
    std::u16string file;    // in the rescue folder
    std::u16string path;    // of the script
    std::size_t texts = 0;  // of a journal; 0 for a file that was replaced
    std::int64_t age = 0;   // seconds
  };
  struct Restored {
    std::size_t texts = 0, of = 0;
  };

  // Without a folder, nothing is kept. `disk` are the files that the form works on. All of it outlives this.
  Rescue(RescueFolder* folder, DiskWatch& disk) : folder_(folder), disk_(disk) {}

  std::function<void(const Failure*)> onFailure;             // nothing more is kept; then null, when all is again
  std::function<void()> onFind;                              // there is one more
  std::function<void(const std::u16string& path)> onLoaded;  // N holds all of a file

  // To disk, what is not there yet. For moments in which nobody waits.
  void flush();

  // Removes what is too old, and the oldest of what is too much.
  std::vector<Find> finds();
  std::string contents(const Find& find) const;  // of a file that was replaced; throws Failure
  std::u16string texts(const Find& find) const;  // of a journal, for the eye: before and after in lines
  void throwAway(const Find& find);

  // Has the script opened, then commits the texts of a journal that are not in it. When all of them are, the journal is
  // gone: this process has its own.
  Restored restore(const Find& find, Principal& form, const std::function<void(const std::u16string& path)>& open);

  // CommitLog.
  void loaded(std::u16string_view path, bool whole) override;
  void committing(std::int32_t position, bool title, std::u16string_view before, std::u16string_view after) override;
  void replacing(std::u16string_view path) override;
  void saved() override;
  void declined() override { forget(); }

 private:
  void append();
  void forget();
  void note(const std::optional<Failure>& failure);

  RescueFolder* folder_;
  DiskWatch& disk_;
  std::u16string path_;
  bool whole_ = true;  // N had all of the file
  std::unique_ptr<RescueFile> file_;
  std::string pending_;      // of the journal, not in the file
  std::size_t commits_ = 0;  // in the journal
  bool flushed_ = true;
  bool failed_ = false;
};

}  // namespace dravenna
