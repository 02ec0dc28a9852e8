#include <fmt/core.h>

#include <set>
#include <unordered_map>
#include <unordered_set>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "tool/carry/old_version.h"
#include "tool/po/po.h"
#include "tool/po/server_texts.h"
#include "tool/po_files/po_text.h"
#include "tool/run/for_each_script.h"
#include "tool/run/notices.h"

namespace dravenna {

namespace {

constexpr char kExportFooter[] =
    R"(msgid is the text with its colour codes, msgctxt its file, NPC and number. With --from the translations of the
tree are put in; with --old they are those of an older version, and a PO file may be of any: changed and unsure ones
become fuzzy.
--for hercules: LF, one line each under 1,024 bytes, the script's bytes, msgctxt the NPC's name, unsure ones empty.
Examples:
  dravenna-lxf po export npc --out npc.po
  dravenna-lxf po export npc --split --out po              one file a script
  dravenna-lxf po export npc-2026 --old npc-2019 --from npc-2019-es --out es.po --language es
  dravenna-lxf po export npc --from es.po --out es-new.po
  dravenna-lxf po export npc --from npc-es --for hercules --out server.po)";

struct PoExportOptions {
  std::vector<std::string> paths;
  std::string out;
  std::string old;
  std::string from;
  std::string language;
  bool split = false;
  bool force = false;
  bool forServer = false;         // what the server's own reader takes
  std::vector<std::string> with;  // of that: titles, choices
  ReportOptions report;
};

constexpr std::size_t kMostStaged = 64;  // PO files that wait for the disk together; each is open

struct ExportOutcome {
  std::vector<PoEntry> entries;
  std::vector<PoEntry> obsolete;
  std::shared_ptr<const PoEntries> po;  // where the translations are from one
  std::string serverEntries;
  std::size_t serverMessages = 0;
  std::vector<Notice> left;  // what the PO file lacks
  std::string warning;
  std::size_t translations = 0;
  bool unfit = false;
};

class PoExport {
 public:
  PoExport(Session& session, const PoExportOptions& options)
      : session_(session), options_(options), notices_(session, options.report) {
    for (const std::string& kind : options.with) (kind == "titles" ? more_.titles : more_.choices) = true;
  }

  void run();

 private:
  ExportOutcome readScript(const Script& script, const OldVersion* oldVersion) const;
  PoEntry entryOf(const Script& script, const Codec& codec, const OutlineText& text, std::string context,
                  const CarriedText& carried, const OldVersion::Carried& version) const;
  void refuseDoubles(const std::vector<Script>& scripts) const;
  void take(const Script& script, ExportOutcome&& outcome);
  void takeUnclaimed(const std::vector<const PoEntry*>& entries);
  void write(const std::string& path, ExportOutcome&& outcome);
  void takeOverComments(const std::string& path, PoFile& file);
  void placeStaged();

  Session& session_;
  const PoExportOptions& options_;
  Notices notices_;
  MoreTexts more_;
  ExportOutcome all_;  // what goes into the one PO file
  std::size_t messages_ = 0;
  std::size_t translations_ = 0;
  std::size_t done_ = 0;  // scripts
  std::set<std::string> folders_;
  Replacements replacements_{*session_.files};
};

// What a translator has written for a text that is no more.
void addObsolete(const PoEntry& entry, std::vector<PoEntry>& obsolete) {
  if (entry.text.empty() && entry.translatorComments.empty()) return;
  obsolete.push_back(entry);
  obsolete.back().file.clear();  // it stands nowhere
}

PoEntry PoExport::entryOf(const Script& script, const Codec& codec, const OutlineText& text, std::string context,
                          const CarriedText& carried, const OldVersion::Carried& version) const {
  PoEntry entry;
  entry.context = std::move(context);
  entry.id = poTextOf(codec, text.text);
  entry.file = poNameOf(script.relative);
  entry.line = text.lineNumber + 1;
  const bool unsure = carried.state == CarryState::Changed || carried.state == CarryState::Unsure;
  const OldText* const old = carried.oldRecord < version.old.size() ? &version.old[carried.oldRecord] : nullptr;
  const PoEntry* const from = old == nullptr ? nullptr : old->entry;
  if (from != nullptr) {
    entry.translatorComments = from->translatorComments;
    entry.flags = from->flags;
  }
  if (carried.state != CarryState::Carried && !unsure) return entry;
  if (carried.ofPage) {
    entry.comments.push_back(fmt::format("{}: {}", carried.why, poTextOf(codec, carried.translation)));
    return entry;
  }
  entry.text = from != nullptr ? from->text : poTextOf(codec, carried.translation);
  entry.fuzzy = unsure && !entry.text.empty();
  if (!entry.fuzzy) return entry;
  if (from == nullptr || !from->fuzzy) entry.comments.emplace_back(carried.why);
  if (from != nullptr) {
    entry.previousId = from->previousId.empty() ? from->id : from->previousId;
  } else if (old != nullptr) {
    entry.previousId = poTextOf(codec, old->text);
  }
  if (entry.previousId == entry.id) entry.previousId.clear();
  return entry;
}

ExportOutcome PoExport::readScript(const Script& script, const OldVersion* oldVersion) const {
  ExportOutcome outcome;
  const auto loaded = oldVersion == nullptr ? loadScript(session_, script.path, more_) : oldVersion->loadFresh(script);
  OldVersion::Carried version;
  version.result.texts.resize(loaded->records.size());
  if (oldVersion != nullptr) version = oldVersion->carry(script, *loaded);
  for (const CarriedText& text : version.result.texts) {
    if (text.state != CarryState::Untranslated && !text.translation.empty()) ++outcome.translations;
  }
  outcome.warning = version.warning;
  outcome.unfit = version.unfit;
  outcome.po = version.po;
  for (const PoEntry* const left : version.left) addObsolete(*left, outcome.obsolete);
  const Codec& codec = loaded->in.codec;
  const auto leave = [&](const OutlineText& text, const std::string& why) {
    outcome.left.push_back({script.path, text.lineNumber + 1, "left out", "", 0, why});
  };
  if (options_.forServer) {
    ServerEntries entries = serverEntriesOf(*loaded, version.result.texts);
    for (const ServerEntries::Left& left : entries.left) leave(*left.text, left.why);
    outcome.serverEntries = std::move(entries.bytes);
    outcome.serverMessages = entries.messages;
    return outcome;
  }
  PoContexts contexts(codec, script.relative);
  for (std::size_t i = 0; i < loaded->records.size(); ++i) {
    const OutlineText& text = *loaded->records[i];
    std::string context = contexts.next(*loaded, text);
    if (text.text.empty()) continue;
    if (!fitsPo(text.text)) {
      leave(text, "control characters");
    } else {
      outcome.entries.push_back(entryOf(script, codec, text, std::move(context), version.result.texts[i], version));
      const std::vector<std::string> around = surroundingsOf(*loaded, i);
      std::vector<std::string>& comments = outcome.entries.back().comments;
      comments.insert(comments.end(), around.begin(), around.end());
    }
  }
  return outcome;
}

// Two scripts must not share a PO file or the contexts in it.
void PoExport::refuseDoubles(const std::vector<Script>& scripts) const {
  std::unordered_map<std::string, std::string> owners;
  for (const Script& script : scripts) {
    const auto [owner, fresh] =
        owners.emplace(options_.split ? withExtension(script.relative, ".po") : script.relative, script.path);
    if (!fresh) {
      throw UsageError(fmt::format("{} and {} would both be {} in the PO files", shownName(owner->second),
                                   shownName(script.path), shownName(owner->first)));
    }
  }
}

// What translators have noted in the PO file that is replaced: to the same message, else to one with the same text,
// else to a new text in its place.
void PoExport::takeOverComments(const std::string& path, PoFile& file) {
  if (session_.files->pathKind(path) != PathKind::File) return;
  PoFile old;
  if (const auto failure = attempt([&] { old = readPoFile(*session_.files, path); })) {
    if (!options_.force) throw Failure(failure->description() + u"; --force overwrites it, comments and all");
    return session_.console.warning(fmt::format("{}; its comments are not taken over", shown(failure->description())));
  }
  if (file.header.empty()) {
    file.header = old.header;
    file.headerComments = old.headerComments;
  }
  std::unordered_set<std::string> known;
  for (const PoEntry& entry : old.entries) known.insert(entry.id);
  std::erase_if(old.entries, [](const PoEntry& entry) { return entry.translatorComments.empty(); });
  using Key = std::string (*)(const PoEntry&);
  constexpr Key kKeys[] = {[](const PoEntry& entry) { return entry.context + '\0' + entry.id; },
                           [](const PoEntry& entry) { return entry.id; },
                           [](const PoEntry& entry) { return entry.context; }};
  for (const Key key : kKeys) {
    if (old.entries.empty()) return;
    std::unordered_map<std::string, PoEntry*> places;
    for (PoEntry& entry : file.entries) {
      const bool fits = key != kKeys[2] || known.count(entry.id) == 0;
      if (fits && entry.translatorComments.empty()) places.emplace(key(entry), &entry);
    }
    std::erase_if(old.entries, [&](PoEntry& entry) {
      const auto place = places.find(key(entry));
      if (place == places.end() || !place->second->translatorComments.empty()) return false;
      place->second->translatorComments = std::move(entry.translatorComments);
      return true;
    });
  }
  for (const PoEntry& entry : old.entries) {
    notices_.warn(
        {.fate = "left out",
         .from = path,
         .fromLine = entry.ownLine,
         .why = "a comment whose message is no more: " +
                shownName(entry.translatorComments.substr(0, entry.translatorComments.find_last_not_of('\n') + 1))});
  }
}

void PoExport::write(const std::string& path, ExportOutcome&& outcome) {
  PoFile file{{}, {}, std::move(outcome.entries), std::move(outcome.obsolete)};
  if (outcome.po) {
    file.header = outcome.po->file.header;
    file.headerComments = outcome.po->file.headerComments;
  }
  std::unordered_set<std::string> keys;  // an entry may stand there once, obsolete ones counted
  const auto known = [&](const PoEntry& entry) { return !keys.insert(entry.context + '\0' + entry.id).second; };
  for (const PoEntry& entry : file.entries) known(entry);
  std::erase_if(file.obsolete, known);
  if (!options_.forServer) takeOverComments(path, file);
  const std::string bytes = options_.forServer ? outcome.serverEntries : poFileBytes(options_.language, file);
  if (path == "-") {
    if (!writeStandardOutput(bytes)) session_.console.fail();
    return;
  }
  if (!session_.outputs->mayWrite(path, bytes, Outputs::Kind::PoFile, options_.force)) return;
  const std::string folder = folderOf(path);
  if (folders_.insert(folder).second) session_.files->makeFolders(folder);
  replacements_.stage(path, bytes);
  if (replacements_.staged() == kMostStaged) placeStaged();
}

void PoExport::take(const Script& script, ExportOutcome&& outcome) {
  if (!outcome.warning.empty()) session_.console.warning(outcome.warning);
  if (outcome.unfit) session_.console.fail();
  for (const Notice& notice : outcome.left) notices_.warn(notice);
  const std::size_t found = options_.forServer ? outcome.serverMessages : outcome.entries.size();
  messages_ += found;
  translations_ += outcome.translations;
  ++done_;
  if (!options_.split) {
    std::move(outcome.entries.begin(), outcome.entries.end(), std::back_inserter(all_.entries));
    std::move(outcome.obsolete.begin(), outcome.obsolete.end(), std::back_inserter(all_.obsolete));
    if (!all_.po) all_.po = outcome.po;
    all_.serverEntries += outcome.serverEntries;
  } else if (found > 0 || !outcome.obsolete.empty()) {
    const std::string path = joinPath(options_.out, withExtension(script.relative, ".po"));
    const auto failure = attempt([&] { write(path, std::move(outcome)); });
    if (failure) session_.console.error(shown(failure->description()));
  }
}

// Entries of scripts that are no more.
void PoExport::takeUnclaimed(const std::vector<const PoEntry*>& entries) {
  if (options_.forServer) return;
  const std::size_t first = all_.obsolete.size();
  for (const PoEntry* const entry : entries) addObsolete(*entry, all_.obsolete);
  if (!options_.split) return;
  for (std::size_t i = first; i < all_.obsolete.size(); ++i) {
    const PoEntry& entry = all_.obsolete[i];
    notices_.warn({.fate = "left out",
                   .from = options_.from,
                   .fromLine = entry.ownLine,
                   .why = "its script is no more: " + shownName(entry.context.empty() ? entry.id : entry.context)});
  }
}

void PoExport::placeStaged() {
  for (const std::u16string& failure : replacements_.commit()) {
    if (!failure.empty()) session_.console.error(shown(failure));
  }
}

void PoExport::run() {
  const PathKind outKind = options_.out == "-" ? PathKind::File : session_.files->pathKind(options_.out);
  if (options_.split && outKind == PathKind::File) throw UsageError("--split needs a folder");
  if (!options_.split && outKind == PathKind::Folder) throw UsageError("--out: a folder needs --split");
  if (options_.out == "-" && options_.report.json && options_.report.file.empty())
    throw UsageError("--json needs --report FILE where the PO file goes to standard output");
  if (!options_.old.empty() && options_.from.empty()) throw UsageError("--old needs --from");
  if (!options_.with.empty() && !options_.forServer) throw UsageError("--with needs --for");
  if (!options_.from.empty() && options_.old.empty() && options_.paths.size() != 1) {
    throw UsageError("--from without --old takes one tree");
  }
  const std::vector<Script> scripts = collectScripts(session_, options_.paths);
  refuseDoubles(scripts);
  if (!options_.split && options_.out != "-") {
    session_.outputs->mayWrite(options_.out, {}, Outputs::Kind::PoFile, options_.force);  // told before the long work
  }
  bool whole = !session_.console.failed();
  std::unique_ptr<OldVersion> oldVersion;
  if (!options_.from.empty()) {
    oldVersion = std::make_unique<OldVersion>(session_, options_.old.empty() ? options_.paths[0] : options_.old,
                                              options_.from, more_);
    oldVersion->findRenamed(scripts);
  }
  whole &= forEachScript<ExportOutcome>(
      session_, scripts, [&](const Script& script, Buffers&) { return readScript(script, oldVersion.get()); },
      [&](const Script& script, ExportOutcome&& outcome) {
        take(script, std::move(outcome));
        return true;
      });
  if (interrupted()) return;
  const bool replaces = outKind == PathKind::File && options_.out != "-";
  if (!options_.split && !whole && (replaces || messages_ == 0)) {
    throw Failure(fromUtf8(options_.out) + u": not written, for it would lack a script");
  }
  if (oldVersion) takeUnclaimed(oldVersion->unclaimedEntries(scripts));
  if (!options_.split && (messages_ > 0 || !all_.obsolete.empty())) write(options_.out, std::move(all_));
  placeStaged();
  flushFolders(session_, folders_);
  notices_.endGroup("left out");
  notices_.close();
  if (!scripts.empty() && messages_ == 0) {
    session_.console.warning("no script has a text for a PO file");
    session_.console.fail();
  } else if (oldVersion && translations_ == 0) {
    session_.console.warning(fmt::format("{}: no text has a translation there", shownName(options_.from)));
    session_.console.fail();
  }
  session_.console.note(fmt::format("{}, {}{}", counted(done_, "script"), counted(messages_, "message"),
                                    options_.forServer ? " for the server" : ""));
}

}  // namespace

void addPoExport(Verb po, Session& session) {
  Verb verb = po.verb("export", "Write the texts of scripts as PO files");
  const auto options = std::make_shared<PoExportOptions>();
  verb.words("path", options->paths, "PATH...", "Files and folders");
  verb.text("-o,--out", options->out, "FILE", "The PO file, `-` for standard output; with --split a folder",
            Need::Required);
  verb.flag("--split", options->split, "One PO file a script, folders mirrored");
  verb.text("--from", options->from, "PATH", "Translations to put in: scripts, exchange files, PO files");
  verb.text("--old", options->old, "OLD", "The older version that --from translates");
  verb.text("--language", options->language, "CODE", "The Language field, such as es or pt_BR");
  verb.choice("--for", [options](const std::string&) { options->forServer = true; }, "SERVER",
              "The form of a server's own reader: hercules", {"hercules"});
  verb.each("--with", options->with, "KIND", "With --for: titles or choices (of `if (select())`), too",
            {"titles", "choices"});
  verb.flag("-f,--force", options->force, "Overwrite a PO file that holds translations");
  options->report.addTo(verb);
  session.addOptions(verb);
  verb.footer(kExportFooter);
  verb.onRun([&session, options] {
    session.prepare();
    if (!poFilesBuiltIn() && !options->forServer) throw Failure(u"PO files are not built into this program");
    PoExport(session, *options).run();
  });
}

}  // namespace dravenna
