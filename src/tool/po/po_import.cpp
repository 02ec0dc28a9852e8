#include <fmt/core.h>

#include <algorithm>
#include <set>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "tool/po/po.h"
#include "tool/po_files/po_entries.h"
#include "tool/po_files/po_text.h"
#include "tool/run/for_each_script.h"
#include "tool/run/notices.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr char kImportFooter[] =
    R"(The scripts must be those that the PO files were made from: an entry goes where its msgctxt says. Entries whose
place is not in the scripts are counted and named; the exit status is 1 when no entry has its place there.
Entries that are empty, fuzzy, or whose msgid is not the script's text are left out; the others are put in, all or
nothing for each script. A script keeps its line ends.
Examples:
  dravenna-lxf po import npc --from npc.po
  dravenna-lxf po import npc --from po --dry-run)";

struct PoImportOptions {
  std::vector<std::string> paths;
  std::string from;
  std::string backup;
  bool fuzzy = false;
  bool dryRun = false;
  bool crlf = false;
  ReportOptions report;
};

// A PO file, and which of its entries have found their place.
struct Entries {
  std::shared_ptr<const PoEntries> po;
  std::vector<bool> placed;
};

struct ImportOutcome {
  std::vector<Notice> left;
  std::vector<std::size_t> placed;  // entries
  std::size_t changed = 0;
  std::size_t fuzzy = 0;
  std::optional<Entries> own;  // of the script's own PO file
  bool withoutFile = false;
};

class PoImport {
 public:
  PoImport(Session& session, const PoImportOptions& options)
      : session_(session), options_(options), notices_(session, options.report) {}

  void run();

 private:
  Entries readEntries(const std::string& path) const;
  std::string ownPath(const Script& script) const;
  std::unique_ptr<LoadedScript> load(const Script& script) const;
  ImportOutcome importScript(const Script& script, std::optional<std::string>& bytes) const;
  std::string apply(const Script& script, const LoadedScript& loaded, const Entries& entries,
                    ImportOutcome& outcome) const;
  void take(const Script& script, ImportOutcome&& outcome);
  void tellUnplaced(const Entries& entries);
  void tellLeftFiles();
  void summary();

  Session& session_;
  const PoImportOptions& options_;
  Notices notices_;
  std::vector<Script> scripts_;
  Entries whole_;             // of the one PO file
  std::vector<Notice> lost_;  // entries without a place
  std::size_t changed_ = 0;
  std::size_t written_ = 0;
  std::size_t fuzzy_ = 0;
  std::size_t entries_ = 0;
  std::size_t placed_ = 0;
  std::size_t unplaced_ = 0;  // translated ones only: nothing is lost with the others
  std::size_t withoutFile_ = 0;
  bool split_ = false;
  bool wholeFolders_ = false;  // else only some scripts are meant, and entries of others are none to warn of
};

Entries PoImport::readEntries(const std::string& path) const {
  Entries entries{readPoEntries(session_, path), {}};
  entries.placed.resize(entries.po->file.entries.size());
  return entries;
}

std::string PoImport::ownPath(const Script& script) const {
  return joinPath(options_.from, withExtension(relativeIn(*session_.files, options_.from, script), ".po"));
}

void PoImport::tellUnplaced(const Entries& entries) {
  for (std::size_t i = 0; i < entries.placed.size(); ++i) {
    const PoEntry& entry = entries.po->file.entries[i];
    ++entries_;
    if (entries.placed[i]) ++placed_;
    if (entries.placed[i] || entry.text.empty()) continue;
    ++unplaced_;
    if (!wholeFolders_) continue;
    const std::string& name = entry.context.empty() ? entry.id : entry.context;
    lost_.push_back({entry.file.empty() ? "(no reference)" : entry.file, entry.line, "left out", entries.po->path,
                     entry.ownLine, "no such place in the scripts: " + shownName(name)});
  }
}

// PO files of the folder that no script is called after.
void PoImport::tellLeftFiles() {
  std::set<std::string> taken;
  for (const Script& script : scripts_) taken.insert(ownPath(script));
  const auto all = [](const std::string&) { return true; };
  for (const std::string& relative :
       filesBelow(session_, options_.from, all, [](const std::string& name) { return name.ends_with(".po"); })) {
    const std::string path = joinPath(options_.from, relative);
    if (taken.count(path) != 0 || interrupted()) continue;
    const auto failure = attempt([&] { tellUnplaced(readEntries(path)); });
    if (failure) session_.console.error(shown(failure->description()));
  }
}

// The script with its translations, in work bytes.
std::string PoImport::apply(const Script& script, const LoadedScript& loaded, const Entries& entries,
                            ImportOutcome& outcome) const {
  const Codec& codec = loaded.in.codec;
  std::string work;
  const PoEntries& po = *entries.po;
  PoContexts contexts(codec, relativeAmong(po, script));
  std::size_t copied = 0;
  for (const OutlineText* text : loaded.records) {
    const auto found = po.byContext.find(contexts.next(loaded, *text));
    if (found == po.byContext.end()) continue;
    outcome.placed.push_back(found->second);
    const PoEntry& entry = po.file.entries[found->second];
    if (entry.text.empty()) continue;
    if (entry.fuzzy && !options_.fuzzy) {
      ++outcome.fuzzy;
      continue;
    }
    const std::string now = poTextOf(codec, text->text);
    if (entry.text == now) continue;
    const auto leave = [&](const std::string& why) {
      outcome.left.push_back({script.path, text->lineNumber + 1, "left as it is", po.path, entry.ownLine, why});
    };
    if (entry.id != now) {
      leave("the text is not the entry's msgid");
      continue;
    }
    const std::string_view inFront = inFrontOf(text->text, loaded.work);
    std::string translation;
    if (const auto failure = attempt([&] { translation = fromPoText(codec, entry.text, text->text, inFront); })) {
      leave(shown(failure->description()));
      continue;
    }
    work.append(inFront.substr(copied)).append(translation);
    copied = inFront.size() + text->text.size();
    ++outcome.changed;
  }
  return work.append(loaded.work.substr(copied));
}

// Nothing but the other scripts tells the code page of one that is ASCII.
std::unique_ptr<LoadedScript> PoImport::load(const Script& script) const {
  std::string file;
  readFile(session_, script.path, file);
  const Encoding& in = isAscii(file) ? session_.pages->ofMost() : session_.pages->take(script.path, file);
  return std::make_unique<LoadedScript>(std::move(file), in);
}

ImportOutcome PoImport::importScript(const Script& script, std::optional<std::string>& bytes) const {
  ImportOutcome outcome;
  const auto loaded = load(script);
  if (split_) {
    const std::string path = ownPath(script);
    if (session_.files->pathKind(path) != PathKind::File) {
      // An export makes one of a script with such a text.
      outcome.withoutFile = std::any_of(loaded->records.begin(), loaded->records.end(),
                                        [](const OutlineText* text) { return fitsPo(text->text); });
      return outcome;
    }
    outcome.own = readEntries(path);
  }
  std::string work = apply(script, *loaded, split_ ? *outcome.own : whole_, outcome);
  if (outcome.changed == 0) return outcome;
  if (options_.crlf) work = withCrLf(work);
  std::string buffer;
  bytes = loaded->in.codec.toFile(work, buffer);
  return outcome;
}

void PoImport::take(const Script& script, ImportOutcome&& outcome) {
  for (const Notice& notice : outcome.left) notices_.warn(notice);
  if (!outcome.left.empty()) session_.console.fail();
  if (outcome.withoutFile) ++withoutFile_;
  Entries& entries = outcome.own ? *outcome.own : whole_;
  for (const std::size_t entry : outcome.placed) entries.placed[entry] = true;
  if (outcome.own) tellUnplaced(entries);
  fuzzy_ += outcome.fuzzy;
  if (outcome.changed == 0) return;
  if (options_.dryRun)
    session_.console.note(fmt::format("{}: {} would change", shownName(script.path), counted(outcome.changed, "text")));
  ++written_;
  changed_ += outcome.changed;
}

void PoImport::summary() {
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
  split_ = session_.files->pathKind(options_.from) == PathKind::Folder;
  scripts_ = collectScripts(session_, options_.paths);
  wholeFolders_ = std::any_of(scripts_.begin(), scripts_.end(), [](const Script& script) { return !script.named; });
  if (!split_) whole_ = readEntries(options_.from);
  rewriteEachScript<ImportOutcome>(
      session_, scripts_, options_.backup, options_.dryRun,
      [&](const Script& script, Buffers&, std::optional<std::string>& bytes) { return importScript(script, bytes); },
      [&](const Script& script, ImportOutcome&& outcome) {
        take(script, std::move(outcome));
        return true;
      });
  if (interrupted()) return session_.console.error("Interrupted; every script is the old or the new one");
  if (!split_) tellUnplaced(whole_);
  if (split_ && wholeFolders_) tellLeftFiles();
  notices_.endGroup("entries left out");
  for (const Notice& notice : lost_) notices_.warn(notice);
  notices_.endGroup("without a place");
  notices_.close();
  summary();
}

}  // namespace

void addPoImport(Verb po, Session& session) {
  Verb verb = po.verb("import", "Put the translations of PO files into scripts");
  const auto options = std::make_shared<PoImportOptions>();
  verb.words("path", options->paths, "PATH...", "Files and folders, as they were exported");
  verb.text("--from", options->from, "FILE", "The PO file, or the folder of a --split export", Need::Required);
  verb.flag("--fuzzy", options->fuzzy, "Take fuzzy entries too");
  verb.flag("--dry-run", options->dryRun, "Change nothing, tell what would change");
  addBackupOption(verb, options->backup);
  verb.choice("--eol", [options](const std::string& eol) { options->crlf = eol == "crlf"; }, "KIND",
              "Line ends of a script that is written: keep or crlf (default keep)", {"crlf", "keep"});
  options->report.addTo(verb);
  session.addOptions(verb);
  verb.footer(kImportFooter);
  verb.onRun([&session, options] {
    session.prepare();
    if (!poFilesBuiltIn()) throw Failure(u"PO files are not built into this program");
    PoImport(session, *options).run();
  });
}

}  // namespace dravenna
