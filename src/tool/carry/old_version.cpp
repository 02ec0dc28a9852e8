#include "tool/carry/old_version.h"

#include <fmt/core.h>

#include <algorithm>
#include <set>
#include <unordered_map>

#include "platform/failure.h"
#include "platform/tree_files.h"
#include "tool/po_files/po_text.h"
#include "tool/script/align.h"
#include "tool/script/contents.h"
#include "tool/script/exchange_file.h"
#include "tool/script/records.h"

namespace dravenna {

namespace {

// `id` is the entry's, in work bytes.
Translation translationFrom(const PoEntry& entry, const Codec& codec, std::string_view id) {
  Translation translation;
  if (entry.text.empty()) return translation;
  translation.state = entry.fuzzy ? Translation::State::Unsure : Translation::State::Known;
  translation.meant = true;
  if (entry.fuzzy) translation.why = "fuzzy";
  if (const auto failure = attempt([&] { translation.text = fromPoText(codec, entry.text, id); })) {
    translation.state = Translation::State::Unsure;
    translation.why = shown(failure->description());
  }
  return translation;
}

}  // namespace

std::vector<OldText> oldTextsOf(const LoadedScript& script) {
  std::vector<OldText> texts;
  for (const OutlineText* text : script.records) texts.push_back({std::string(text->text), text->lineNumber + 1});
  return texts;
}

OldVersion::OldVersion(Session& session, std::string tree, std::string translations, MoreTexts more)
    : session_(session), tree_(std::move(tree)), translations_(std::move(translations)), more_(more) {
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
  if (translations_.ends_with(".po") || contentsOf(bytes, session_.pages->usual().lists) == Contents::PoFile)
    po_ = readPoEntries(session_, translations_);
}

void OldVersion::findRenamed(const std::vector<Script>& fresh) {
  needOneScript(*session_.files, "the old version", tree_, fresh.size());
  if (!po_) needOneScript(*session_.files, "--from", translations_, fresh.size());
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
  for (const std::string& name : {relative, withExtension(relative, ".lxf"), withExtension(relative, ".po")}) {
    std::string path = joinPath(translations_, name);
    if (session_.files->pathKind(path) == PathKind::File) return path;
  }
  return {};
}

// The exchange file was made from the old script, as it is read or in its own code page.
bool OldVersion::isOriginal(const std::string& lxf, const LoadedScript& old, const std::string& oldPath) const {
  TextDigest digest;
  for (const OutlineText* text : old.records) {
    if (text->record) digest.add(text->text);
  }
  if (index_->isOriginal(lxf, digest.value())) return true;
  std::string bytes;
  std::string buffer;
  readFile(session_, oldPath, bytes);
  const Encoding& own = session_.pages->of(bytes);
  return index_->isOriginal(lxf, digestOf(own.codec.toWork(bytes, buffer), own.lists).value());
}

std::vector<Translation> OldVersion::translationsFor(const std::string& relative, const LoadedScript& old,
                                                     Carried& carried) const {
  const Encoding& in = old.in;
  std::vector<Translation> translations(old.records.size());
  const std::string path = translationOf(relative);
  if (path.empty()) {
    if (!old.records.empty()) carried.warning = fmt::format("{}: no translation of it", shownName(carried.oldPath));
    return translations;
  }
  std::string file;
  readFile(session_, path, file);
  const auto misfit = attempt([&] {
    if (const auto lacked = session_.pages->bring(path, file, in)) throw *lacked;
    if (withExtension(path, ".lxf") != path) {
      translations = translationsFromScript(old, LoadedScript(std::move(file), in, more_));
      return;
    }
    if (const auto wrong = wrongEncodingOf(file, path, old.file, in.codec.page())) throw *wrong;
    std::string buffer;
    if (index_ && !isOriginal(withExtension(relative, ".lxf"), old, carried.oldPath))
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
    const std::string path = translationOf(oldNameIn(translations_, script));
    if (po_ || path.ends_with(".po")) {  // UTF-8 in any case
      return std::make_unique<LoadedScript>(std::move(file), session_.pages->ofMost(), more_);
    }
    if (!path.empty()) readFile(session_, path, translation);
  }
  const Encoding& in = session_.pages->take(script.path, file, translation);
  return std::make_unique<LoadedScript>(std::move(file), in, more_);
}

std::shared_ptr<const PoEntries> OldVersion::poEntriesFor(const Script& script) const {
  if (po_) return po_;
  const std::string path = translationOf(oldNameIn(translations_, script));
  return path.ends_with(".po") ? readPoEntries(session_, path) : nullptr;
}

std::string OldVersion::nameIn(const PoEntries& po, const Script& script) const {
  const auto renamed = renamed_.find(script.relative);
  return poNameOf(renamed == renamed_.end() ? relativeAmong(po, script) : renamed->second);
}

void OldVersion::carryFromPo(const Script& script, const LoadedScript& fresh, Carried& carried) const {
  const PoEntries& po = *carried.po;
  carried.oldPath = po.path;
  std::vector<Translation> translations;
  std::vector<std::string_view> texts;
  if (const auto own = po.byFile.find(nameIn(po, script)); own != po.byFile.end()) {
    carried.left = own->second.obsolete;
    for (const PoEntry* const entry : own->second.entries) {
      const auto id = workOf(fresh.in.codec, entry->id);
      if (!id) {
        carried.left.push_back(entry);
        continue;
      }
      translations.push_back(translationFrom(*entry, fresh.in.codec, *id));
      carried.old.push_back({*id, entry->ownLine, entry});
    }
  }
  for (const OldText& old : carried.old) texts.push_back(old.text);
  carried.result = carryTranslations(texts, translations, recordTexts(fresh));
  for (const std::size_t record : carried.result.gone) carried.left.push_back(carried.old[record].entry);
}

std::vector<const PoEntry*> OldVersion::unclaimedEntries(const std::vector<Script>& fresh) const {
  std::vector<const PoEntry*> left;
  if (!po_ || std::any_of(fresh.begin(), fresh.end(), [](const Script& script) { return script.named; })) return left;
  std::set<std::string> claimed;
  for (const Script& script : fresh) claimed.insert(nameIn(*po_, script));
  for (const auto& [name, places] : po_->byFile) {
    if (claimed.count(name) != 0) continue;
    left.insert(left.end(), places.entries.begin(), places.entries.end());
    left.insert(left.end(), places.obsolete.begin(), places.obsolete.end());
  }
  return left;
}

OldVersion::Carried OldVersion::carry(const Script& script, const LoadedScript& fresh) const {
  Carried carried;
  if ((carried.po = poEntriesFor(script))) {
    carryFromPo(script, fresh, carried);
    return carried;
  }
  carried.oldPath = oldPathOf(script);
  if (session_.files->pathKind(carried.oldPath) != PathKind::File) {
    carried.result.texts.resize(fresh.records.size());
    return carried;
  }
  std::string file;
  readBeside(session_, carried.oldPath, fresh.in, file);
  const LoadedScript old(std::move(file), fresh.in, more_);
  const std::vector<Translation> translations = translationsFor(oldNameIn(translations_, script), old, carried);
  carried.old = oldTextsOf(old);
  carried.result = carryTranslations(recordTexts(old), translations, recordTexts(fresh));
  return carried;
}

}  // namespace dravenna
