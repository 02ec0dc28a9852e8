#include <system_error>
#include <utility>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "text/text.h"

namespace dravenna {

namespace {

void failOn(const std::error_code& error, const std::filesystem::path& path) {
  if (error) throw Failure(fromUtf8(error.message()) + u": '" + path.u16string() + u"'");
}

}  // namespace

void removeFile(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::remove(path, error);
  failOn(error, path);
}

bool isLink(const std::filesystem::path& path) {
  std::error_code error;
  const bool link = std::filesystem::is_symlink(path, error);
  failOn(error, path);
  return link;
}

void allowToRun(const std::filesystem::path& path) {
  using std::filesystem::perms;
  std::error_code error;
  const perms run = perms::owner_exec | perms::group_exec | perms::others_exec;
  std::filesystem::permissions(path, run, std::filesystem::perm_options::add, error);
  failOn(error, path);
}

Replacements::Replacements(TreeFiles& files, std::string_view backupSuffix)
    : files_(files), backupSuffix_(fromUtf8(backupSuffix)) {}

Replacements::~Replacements() = default;

void Replacements::stage(const std::filesystem::path& path, std::string_view bytes) {
  auto staged = files_.replace(path);
  staged->write(bytes);
  staged->startFlush();
  staged_.push_back(std::move(staged));
}

std::vector<std::u16string> Replacements::commit() {
  std::vector<std::u16string> outcomes(staged_.size());
  const auto each = [&](auto step) {
    for (std::size_t i = 0; i < staged_.size(); ++i) {
      if (!outcomes[i].empty()) continue;
      try {
        if (interrupted()) throw Failure(u"Interrupted: '" + staged_[i]->path() + u"'");
        step(*staged_[i]);
      } catch (const Failure& failure) {
        outcomes[i] = failure.description();
      }
    }
  };
  each([](FileReplacement& replacement) { replacement.flush(); });
  each([&](FileReplacement& replacement) { replacement.place(backupSuffix_); });
  staged_.clear();
  return outcomes;
}

}  // namespace dravenna
