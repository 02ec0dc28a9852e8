#include "tool/carry/old_version.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>
#include <unordered_map>

#include "platform/failure.h"
#include "platform/tree_files.h"
#include "tool/script/align.h"
#include "tool/script/contents.h"
#include "tool/script/exchange_file.h"
#include "tool/script/records.h"

namespace dravenna {

OldVersion::OldVersion(Session& session, std::string tree, std::string translations)
    : session_(session), tree_(std::move(tree)), translations_(std::move(translations)) {
  for (const std::string& path : {tree_, translations_}) {
    if (session_.files->pathKind(path) == PathKind::Missing)
      throw Failure(u"No such file or directory: '" + fromUtf8(path) + u"'");
  }
  if (session_.files->pathKind(translations_) == PathKind::Folder) {
    index_.emplace(session_, translations_);
    return;
  }
  std::string bytes;
  session_.files->readWhole(translations_, bytes);
  if (contentsOf(bytes, session_.pages->usual().lists) == Contents::PoFile) {
    throw UsageError(
        fmt::format("--from: {} is a PO file, not scripts or exchange files; `po import` puts it into scripts",
                    shownName(translations_)));
  }
}

void OldVersion::findRenamed(const std::vector<Script>& fresh) {
  needOneScript(*session_.files, "the old version", tree_, fresh.size());
  needOneScript(*session_.files, "--from", translations_, fresh.size());
  if (session_.files->pathKind(tree_) != PathKind::Folder) return;
  std::set<std::string> names;
  std::vector<const Script*> homeless;
  for (const Script& script : fresh) {
    names.insert(relativeIn(*session_.files, tree_, script));
    if (session_.files->pathKind(partnerIn(*session_.files, tree_, script)) != PathKind::File)
      homeless.push_back(&script);
  }
  if (homeless.empty()) return;

  std::vector<std::string> left;
  std::unordered_map<std::uint64_t, std::vector<std::size_t>> owners;
  // A script that cannot be read has no texts here; who carries it tells why.
  const auto hashesOf = [&](const std::string& path) {
    std::set<std::uint64_t> hashes;
    static_cast<void>(attempt([&] {
      std::string bytes;
      readFile(session_, path, bytes);
      const Encoding& in = session_.pages->of(bytes);
      const auto script = std::make_unique<LoadedScript>(std::move(bytes), in);
      for (const OutlineText* text : script->records) hashes.insert(hashOf(withoutColor(text->text)));
    }));
    return hashes;
  };
  for (const Script& old : collectScripts(session_, {tree_})) {
    if (names.count(old.relative) != 0) continue;
    for (const std::uint64_t hash : hashesOf(old.path)) owners[hash].push_back(left.size());
    left.push_back(old.relative);
  }
  for (const Script* script : homeless) {
    std::vector<std::size_t> votes(left.size());
    const std::set<std::uint64_t> hashes = hashesOf(script->path);
    for (const std::uint64_t hash : hashes) {
      const auto found = owners.find(hash);
      if (found == owners.end()) continue;
      for (const std::size_t owner : found->second) ++votes[owner];
    }
    const auto best = std::max_element(votes.begin(), votes.end());
    if (best != votes.end() && *best > 0 && *best * 2 >= hashes.size()) {
      renamed_[script->relative] = left[static_cast<std::size_t>(best - votes.begin())];
    }
  }
}

std::string OldVersion::oldNameIn(const std::string& tree, const Script& script) const {
  const auto renamed = renamed_.find(script.relative);
  return renamed == renamed_.end() ? relativeIn(*session_.files, tree, script) : renamed->second;
}

std::string OldVersion::oldPathOf(const Script& script) const {
  return session_.files->pathKind(tree_) == PathKind::File ? tree_ : joinPath(tree_, oldNameIn(tree_, script));
}

std::vector<std::string> OldVersion::unclaimed(const std::vector<Script>& fresh) const {
  std::vector<std::string> paths;
  const bool some = std::any_of(fresh.begin(), fresh.end(), [](const Script& script) { return script.named; });
  if (some || session_.files->pathKind(tree_) != PathKind::Folder) return paths;
  std::set<std::string> claimed;
  for (const Script& script : fresh) claimed.insert(script.relative);
  for (const auto& [name, old] : renamed_) claimed.insert(old);
  for (const Script& old : collectScripts(session_, {tree_})) {
    if (claimed.count(old.relative) == 0) paths.push_back(old.path);
  }
  return paths;
}

std::string OldVersion::translationOf(const std::string& relative) const {
  if (session_.files->pathKind(translations_) == PathKind::File) return translations_;
  for (const std::string& name : {relative, withExtension(relative, ".lxf")}) {
    std::string path = joinPath(translations_, name);
    if (session_.files->pathKind(path) == PathKind::File) return path;
  }
  return {};
}

// The exchange file was made from the old script, as it is read or in its own code page.
bool OldVersion::isOriginal(const std::string& lxf, const Carried& carried) const {
  TextDigest digest;
  for (const OutlineText* text : carried.old->records) digest.add(text->text);
  if (index_->isOriginal(lxf, digest.value())) return true;
  std::string bytes;
  std::string buffer;
  readFile(session_, carried.oldPath, bytes);
  const Encoding& own = session_.pages->of(bytes);
  return index_->isOriginal(lxf, digestOf(own.codec.toWork(bytes, buffer), own.lists).value());
}

std::vector<Translation> OldVersion::translationsFor(const std::string& relative, Carried& carried) const {
  const LoadedScript& old = *carried.old;
  const Encoding& in = old.in;
  std::vector<Translation> translations(old.records.size());
  const std::string path = translationOf(relative);
  if (path.empty()) {
    if (!old.records.empty())
      carried.warning = fmt::format("{}: no translation of it", shownName(joinPath(tree_, relative)));
    return translations;
  }
  std::string file;
  readFile(session_, path, file);
  const auto misfit = attempt([&] {
    if (const auto lacked = session_.pages->bring(path, file, in)) throw *lacked;
    if (withExtension(path, ".lxf") != path) {
      translations = translationsFromScript(old, LoadedScript(std::move(file), in));
      return;
    }
    if (const auto wrong = wrongEncodingOf(file, path, old.file, in.codec.page())) throw *wrong;
    std::string buffer;
    if (index_ && !isOriginal(withExtension(relative, ".lxf"), carried))
      throw Failure(fromUtf8(path) + u": made from other texts than " + fromUtf8(carried.oldPath) + u" has");
    translations = translationsFromExchange(old, in.codec.toWork(file, buffer), path);
  });
  carried.unfit = misfit.has_value();
  if (misfit) carried.warning = fmt::format("not used: {}", shown(misfit->description()));
  return translations;
}

std::unique_ptr<LoadedScript> OldVersion::loadFresh(const Script& script) const {
  std::string file;
  std::string translation;
  readFile(session_, script.path, file);
  if (!session_.pages->named() && isAscii(file)) {
    if (const std::string path = translationOf(oldNameIn(translations_, script)); !path.empty()) {
      readFile(session_, path, translation);
    }
  }
  const Encoding& in = takeEncoding(session_, script.path, file, translation);
  return std::make_unique<LoadedScript>(std::move(file), in);
}

OldVersion::Carried OldVersion::carry(const Script& script, const LoadedScript& fresh) const {
  Carried carried;
  carried.oldPath = oldPathOf(script);
  if (session_.files->pathKind(carried.oldPath) != PathKind::File) {
    carried.result.texts.resize(fresh.records.size());
    return carried;
  }
  std::string file;
  readBeside(session_, carried.oldPath, fresh.in, file);
  carried.old = std::make_unique<LoadedScript>(std::move(file), fresh.in);
  const std::vector<Translation> translations = translationsFor(oldNameIn(translations_, script), carried);
  carried.result = carryTranslations(*carried.old, translations, fresh);
  return carried;
}

}  // namespace dravenna
