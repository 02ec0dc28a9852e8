#include <fmt/core.h>

#include <algorithm>
#include <set>
#include <unordered_map>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "tool/po/po.h"
#include "tool/po/po_file.h"
#include "tool/po/po_text.h"
#include "tool/run/for_each_script.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr std::size_t kMostWarnings = 20;

// The entries of a PO file, and which of them have found their place.
struct Entries {
  std::string path;
  std::vector<PoEntry> list;
  std::vector<bool> placed;
  std::unordered_map<std::string, std::size_t> byContext;  // the first one of several
};

class PoImport {
 public:
  PoImport(Session& session, const PoImportOptions& options) : session_(session), options_(options) {}

  void run();

 private:
  Entries readEntries(const std::string& path);
  void importAll(const std::vector<Script>& scripts);
  std::unique_ptr<LoadedScript> load(const Script& script) const;
  void importScript(const Script& script, const LoadedScript& loaded, Entries& entries);
  void importSplit(const Script& script, const LoadedScript& loaded, std::set<std::string>& taken);
  void apply(const Script& script, Entries& entries, const LoadedScript& loaded, std::string& work);
  void tellUnplaced(const Entries& entries);
  void tellLeftFiles(const std::set<std::string>& taken);
  void warn(const std::string& text);
  void summary();

  Session& session_;
  const PoImportOptions& options_;
  std::set<std::string> folders_;
  std::size_t changed_ = 0;
  std::size_t written_ = 0;
  std::size_t fuzzy_ = 0;
  std::size_t warnings_ = 0;
  std::size_t inScript_ = 0;
  std::size_t entries_ = 0;
  std::size_t placed_ = 0;
  std::size_t unplaced_ = 0;  // translated ones only: nothing is lost with the others
  std::size_t withoutFile_ = 0;
  bool split_ = false;
  bool wholeFolders_ = false;  // else only some scripts are meant, and entries of others are none to warn of
};

Entries PoImport::readEntries(const std::string& path) {
  Entries entries{path, readPoFile(*session_.files, path), {}, {}};
  entries.placed.resize(entries.list.size());
  for (std::size_t i = 0; i < entries.list.size(); ++i) entries.byContext.emplace(entries.list[i].context, i);
  return entries;
}

void PoImport::tellUnplaced(const Entries& entries) {
  for (std::size_t i = 0; i < entries.list.size(); ++i) {
    const PoEntry& entry = entries.list[i];
    ++entries_;
    if (entries.placed[i]) ++placed_;
    if (entries.placed[i] || entry.text.empty()) continue;
    if (++unplaced_ > kMostWarnings || !wholeFolders_) continue;
    session_.console.warning(fmt::format("{}:{}: left out of {}: no such place in the scripts: {}",
                                         entry.file.empty() ? "(no reference)" : shownName(entry.file), entry.line,
                                         shownName(entries.path),
                                         shownName(entry.context.empty() ? entry.id : entry.context)));
  }
}

// PO files of the folder that no script is called after.
void PoImport::tellLeftFiles(const std::set<std::string>& taken) {
  const auto all = [](const std::string&) { return true; };
  for (const std::string& relative : session_.files->filesBelow(options_.from, all, [](const std::string& name) {
         return name.size() > 3 && name.compare(name.size() - 3, 3, ".po") == 0;
       })) {
    const std::string path = joinPath(options_.from, relative);
    if (taken.count(path) != 0 || interrupted()) continue;
    try {
      tellUnplaced(readEntries(path));
    } catch (const Failure& failure) {
      session_.console.error(shown(failure.description()));
    }
  }
}

void PoImport::warn(const std::string& text) {
  session_.console.fail();
  if (++warnings_ <= kMostWarnings) session_.console.warning(text);
}

// The script with its translations, in work bytes.
void PoImport::apply(const Script& script, Entries& entries, const LoadedScript& loaded, std::string& work) {
  const Codec& codec = loaded.in.codec;
  PoContexts contexts(codec, script.relative);
  std::size_t copied = 0;
  inScript_ = 0;
  for (const OutlineText* text : loaded.records) {
    const auto found = entries.byContext.find(contexts.next(loaded, *text));
    if (found == entries.byContext.end()) continue;
    entries.placed[found->second] = true;
    const PoEntry& entry = entries.list[found->second];
    if (entry.text.empty()) continue;
    const std::string place = fmt::format("{}:{}", shownName(script.path), text->lineNumber + 1);
    if (entry.fuzzy && !options_.fuzzy) {
      ++fuzzy_;
      continue;
    }
    const std::string now = poTextOf(codec, text->text);
    if (entry.text == now) continue;
    if (entry.id != now) {
      warn(fmt::format("{}: left as it is: {}:{}: the text is not the entry's msgid", place, shownName(entries.path),
                       entry.ownLine));
      continue;
    }
    std::string translation;
    if (const auto failure = attempt([&] { translation = fromPoText(codec, entry.text, text->text); })) {
      warn(fmt::format("{}: left as it is: {}:{}: {}", place, shownName(entries.path), entry.ownLine,
                       shown(failure->description())));
      continue;
    }
    const auto begin = static_cast<std::size_t>(text->text.data() - loaded.work.data());
    work.append(loaded.work.substr(copied, begin - copied)).append(translation);
    copied = begin + text->text.size();
    ++inScript_;
  }
  work.append(loaded.work.substr(copied));
}

void PoImport::importScript(const Script& script, const LoadedScript& loaded, Entries& entries) {
  std::string work;
  apply(script, entries, loaded, work);
  if (inScript_ == 0) return;
  if (options_.crlf) {
    std::string lines;
    forEachLine(work, [&](const ScriptLine& line) { lines.append(line.text).append("\r\n"); });
    work.swap(lines);
  }
  std::string buffer;
  if (options_.dryRun) {
    session_.console.note(fmt::format("{}: {} would change", shownName(script.path), counted(inScript_, "text")));
  } else {
    replaceScript(session_, script.path, loaded.in.codec.toFile(work, buffer), options_.backup);
    folders_.insert(folderOf(script.path));
  }
  ++written_;
  changed_ += inScript_;
}

// With the PO file of its own, if it has one.
void PoImport::importSplit(const Script& script, const LoadedScript& loaded, std::set<std::string>& taken) {
  const std::string path = joinPath(options_.from, withExtension(script.relative, ".po"));
  if (session_.files->pathKind(path) == PathKind::File) {
    taken.insert(path);
    Entries entries = readEntries(path);
    importScript(script, loaded, entries);
    tellUnplaced(entries);
  } else if (std::any_of(loaded.records.begin(), loaded.records.end(),
                         [](const OutlineText* text) { return fitsPo(text->text); })) {
    ++withoutFile_;  // an export makes one of such a script
  }
}

// Nothing but the other scripts tells the code page of one that is ASCII.
std::unique_ptr<LoadedScript> PoImport::load(const Script& script) const {
  std::string file;
  readFile(session_, script.path, file);
  const Encoding& in = isAscii(file) ? session_.pages->ofMost() : takeEncoding(session_, script.path, file);
  return std::make_unique<LoadedScript>(std::move(file), in);
}

void PoImport::importAll(const std::vector<Script>& scripts) {
  Entries whole;
  std::set<std::string> taken;
  if (!split_) whole = readEntries(options_.from);
  forEachScript<std::unique_ptr<LoadedScript>>(
      session_, scripts, [&](const Script& script, Buffers&) { return load(script); },
      [&](const Script& script, std::unique_ptr<LoadedScript>&& loaded) {
        const auto failure =
            attempt([&] { split_ ? importSplit(script, *loaded, taken) : importScript(script, *loaded, whole); });
        if (failure) session_.console.error(shown(failure->description()));
        return true;
      });
  flushFolders(session_, folders_);
  if (interrupted()) return;
  if (!split_) tellUnplaced(whole);
  if (split_ && wholeFolders_) tellLeftFiles(taken);
}

void PoImport::summary() {
  if (wholeFolders_ && unplaced_ > kMostWarnings) {
    session_.console.warning(fmt::format("and {} more without a place", unplaced_ - kMostWarnings));
  }
  if (warnings_ > kMostWarnings)
    session_.console.warning(fmt::format("and {} more entries left out", warnings_ - kMostWarnings));
  if (interrupted()) return session_.console.error("Interrupted; every script is the old or the new one");
  if (placed_ == 0 && (entries_ > 0 || withoutFile_ > 0)) {
    session_.console.error(fmt::format("{}: nothing fits: {}", shownName(options_.from),
                                       entries_ > 0 ? "it was made from other scripts, or from another folder of them"
                                                    : "no script has its PO file there"));
  }
  std::string text =
      fmt::format("{}{} {}, {} changed, {} fuzzy ones left out, {} without a place", options_.dryRun ? "dry run: " : "",
                  counted(written_, "script"), options_.dryRun ? "would be written" : "written",
                  counted(changed_, "text"), fuzzy_, unplaced_);
  if (split_) text += fmt::format(", {} without a PO file", counted(withoutFile_, "script"));
  session_.console.note(text);
}

void PoImport::run() {
  session_.prepare();
  if (!poFilesBuiltIn()) throw Failure(u"PO files are not built into this program");
  split_ = session_.files->pathKind(options_.from) == PathKind::Folder;
  wholeFolders_ = std::any_of(options_.paths.begin(), options_.paths.end(), [this](const std::string& path) {
    return session_.files->pathKind(path) == PathKind::Folder;
  });
  importAll(collectScripts(session_, options_.paths));
  summary();
}

}  // namespace

void importPo(Session& session, const PoImportOptions& options) { PoImport(session, options).run(); }

}  // namespace dravenna
