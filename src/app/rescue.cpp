#include "app/rescue.h"

#include <algorithm>

#include "app/disk_watch.h"
#include "app/principal.h"
#include "editing/commit_journal.h"

namespace dravenna {

namespace {

constexpr char16_t kJournal[] = u".journal";
constexpr char16_t kReplaced[] = u".replaced";
constexpr std::uint64_t kMostBytes = 64 << 20;                   // of all files together
constexpr std::int64_t kMostAge = std::int64_t{90} * 24 * 3600;  // seconds

bool isJournal(std::u16string_view file) { return file.ends_with(kJournal); }

}  // namespace

void Rescue::loaded(std::u16string_view path, bool whole) {
  file_.reset();  // what is neither saved nor declined stays
  pending_.clear();
  commits_ = 0;
  path_ = absolutePath(path);
  whole_ = whole;
  if (whole && onLoaded) onLoaded(path_);
}

void Rescue::committing(std::int32_t position, bool title, std::u16string_view before, std::u16string_view after) {
  if (folder_ == nullptr) return;
  note(attempt([&] {
    if (commits_ == 0) pending_ = journalHead(path_);
    pending_ += journalLine(++commits_, {position, title, std::u16string(before), std::u16string(after)});
    append();
  }));
}

void Rescue::append() {
  const bool fresh = file_ == nullptr;
  try {
    if (fresh) file_ = folder_->create(kJournal);
    file_->append(pending_);
    pending_.clear();
    flushed_ = false;
  } catch (const Failure&) {
    // A part of the lines may stand there: they are written again, behind a line end or into a new file.
    if (!fresh) {
      pending_.insert(0, "\n");
    } else if (file_ != nullptr) {
      file_->remove();
      file_.reset();
    }
    throw;
  }
}

void Rescue::flush() {
  if (file_ == nullptr || flushed_) return;
  note(attempt([this] { file_->flush(); }));
  flushed_ = true;  // or there is no use in trying again
}

void Rescue::note(const std::optional<Failure>& failure) {
  if (failure.has_value() != failed_ && onFailure) onFailure(failure ? &*failure : nullptr);
  failed_ = failure.has_value();
}

void Rescue::replacing(std::u16string_view path) {
  if (folder_ == nullptr || !disk_.fileExists(path) || (whole_ && !disk_.changed(std::u16string(path)))) return;
  std::unique_ptr<RescueFile> file;
  const std::optional<Failure> failure = attempt([&] {
    const std::string bytes = folder_->read(path, kMostBytes);
    file = folder_->create(kReplaced);
    file->append(journalHead(absolutePath(path)));
    file->append(bytes);
    file->flush();
  });
  if (failure && file != nullptr) file->remove();
  file.reset();
  note(failure);
  if (!failure && onFind) onFind();
}

void Rescue::saved() {
  whole_ = true;
  forget();
}

void Rescue::forget() {
  if (file_ != nullptr) file_->remove();
  file_.reset();
  pending_.clear();
  commits_ = 0;
}

std::vector<Rescue::Find> Rescue::finds() {
  std::vector<Find> found;
  if (folder_ == nullptr) return found;
  std::vector<RescueFolder::Entry> entries = folder_->entries();
  std::reverse(entries.begin(), entries.end());
  std::stable_partition(entries.begin(), entries.end(), [](const auto& entry) { return isJournal(entry.path); });
  std::uint64_t bytes = 0;
  for (const RescueFolder::Entry& entry : entries) {
    bytes += entry.size;
    if (entry.age > kMostAge || bytes > kMostBytes) {
      folder_->remove(entry.path);
      continue;
    }
    static_cast<void>(attempt([&] {
      const std::string content = folder_->read(entry.path, kMostBytes);
      std::string_view rest = content;
      if (isJournal(entry.path)) {
        CommitJournal journal = readJournal(content);
        if (!journal.commits.empty()) {
          found.push_back({entry.path, std::move(journal.path), journal.commits.size(), entry.age});
        }
      } else if (std::u16string path = takeJournalHead(rest); entry.path.ends_with(kReplaced) && !path.empty()) {
        found.push_back({entry.path, std::move(path), 0, entry.age});
      }
    }));
  }
  return found;
}

std::string Rescue::contents(const Find& find) const {
  const std::string bytes = folder_->read(find.file, kMostBytes);
  std::string_view rest = bytes;
  takeJournalHead(rest);
  return std::string(rest);
}

std::u16string Rescue::texts(const Find& find) const {
  std::u16string lines;
  for (const JournalledCommit& commit : readJournal(folder_->read(find.file, kMostBytes)).commits) {
    lines.append(commit.before).append(u"\n\u2192 ").append(commit.after).append(u"\n\n");
  }
  return lines;
}

void Rescue::throwAway(const Find& find) { folder_->remove(find.file); }

Rescue::Restored Rescue::restore(const Find& find, Principal& form,
                                 const std::function<void(const std::u16string& path)>& open) {
  const CommitJournal journal = readJournal(folder_->read(find.file, kMostBytes));
  Restored restored{0, journal.commits.size()};
  open(journal.path);
  if (form.ScriptPath != journal.path || form.Modified || !form.ScriptLoaded) return restored;
  for (const JournalledCommit& commit : journal.commits) restored.texts += form.retype(commit) ? 1 : 0;
  flush();
  if (restored.texts == restored.of && !failed_) throwAway(find);
  return restored;
}

bool Principal::retype(const JournalledCommit& commit) {
  const auto stands = [&](std::u16string_view text) {
    const auto at = static_cast<std::size_t>(commit.position);
    const std::u16string_view behind = std::u16string_view(N.Text()).substr(std::min(at - 1, N.Text().size()));
    return behind.starts_with(u'"') && behind.substr(1).starts_with(text) &&
           behind.substr(1 + text.size()).starts_with(u'"');
  };
  if (stands(commit.after)) return true;
  if (!stands(commit.before)) return false;
  Ini = commit.position;
  ShowCurrentText();
  const bool inner = N.SelStart() > Ini;
  if ((N.SelColor() == clrTitle) != commit.title || (inner && commit.after.size() < 2)) return false;
  EDT.userEdited(selectedPart(commit.after), 0, 0);
  this->commit();
  return true;
}

}  // namespace dravenna
