#include <fmt/format.h>

#include <set>

#include "batch/old_version.h"
#include "batch/ordered_pool.h"
#include "batch/po.h"
#include "batch/po_file.h"
#include "batch/po_text.h"
#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"

namespace dravenna {

namespace {

constexpr std::size_t kServerLine = 1024;  // bytes of a line that the server reads, its end included

struct Outcome {
  std::vector<PoEntry> entries;
  std::string serverEntries;
  std::size_t left = 0;  // texts that no PO file can hold
  std::string warning;
  std::string error;
};

class PoExport {
 public:
  PoExport(Session& session, const PoExportOptions& options) : session_(session), options_(options) {}

  void run();

 private:
  Outcome readScript(const Script& script, const OldVersion* oldVersion) const;
  PoEntry entryOf(const Script& script, const OutlineText& text, std::string context, const CarriedText& carried,
                  const OldVersion::Carried& version) const;
  void addServerEntry(const LoadedScript& script, const OutlineText& text, const CarriedText& carried,
                      std::set<std::string>& seen, Outcome& outcome) const;
  void write(const std::string& path, const Outcome& outcome);
  void refuseToOverwrite(const std::string& path) const;

  Session& session_;
  const PoExportOptions& options_;
  std::set<std::string> folders_;
};

PoEntry PoExport::entryOf(const Script& script, const OutlineText& text, std::string context,
                          const CarriedText& carried, const OldVersion::Carried& version) const {
  PoEntry entry;
  entry.context = std::move(context);
  entry.id = poTextOf(*session_.codec, text.text);
  entry.file = poNameOf(script.relative);
  entry.line = text.lineNumber + 1;
  const bool unsure = carried.state == CarryState::Changed || carried.state == CarryState::Unsure;
  if (carried.state != CarryState::Carried && !unsure) return entry;
  entry.text = poTextOf(*session_.codec, carried.translation);
  entry.fuzzy = unsure && !entry.text.empty();
  if (!entry.fuzzy) return entry;
  entry.comments.emplace_back(carried.why);
  if (version.old && carried.oldRecord < version.old->records.size()) {
    entry.previousId = poTextOf(*session_.codec, version.old->records[carried.oldRecord]->text);
  }
  return entry;
}

// One entry as the server's reader takes it: it knows no escapes but \" and no lines that go on.
void PoExport::addServerEntry(const LoadedScript& script, const OutlineText& text, const CarriedText& carried,
                              std::set<std::string>& seen, Outcome& outcome) const {
  std::string buffer;
  const auto fileBytes = [&](std::string_view work) { return std::string(session_.codec->toFile(work, buffer)); };
  const bool sure = carried.state == CarryState::Carried;
  const std::string context = fmt::format("msgctxt \"{}\"\n", fileBytes(script.outline.npcs[text.npc]));
  const std::string id = fmt::format("msgid \"{}\"\n", fileBytes(text.text));
  std::string translation = fmt::format("msgstr \"{}\"\n", sure ? fileBytes(carried.translation) : std::string());
  const auto tooLong = [](const std::string& line) { return line.size() >= kServerLine; };
  if (script.outline.npcs[text.npc].empty() || tooLong(context) || tooLong(id) || tooLong(translation)) {
    ++outcome.left;
    return;
  }
  if (!seen.insert(context + id).second) return;  // the server finds the first one only
  outcome.serverEntries += context + id + translation + "\n";
}

Outcome PoExport::readScript(const Script& script, const OldVersion* oldVersion) const {
  Outcome outcome;
  try {
    const auto loaded = loadScript(session_, script.path);
    OldVersion::Carried version;
    version.result.texts.resize(loaded->records.size());
    if (oldVersion != nullptr) version = oldVersion->carry(script, *loaded);
    outcome.warning = version.warning;
    PoContexts contexts(*session_.codec, script.relative);
    std::set<std::string> seen;
    for (std::size_t i = 0; i < loaded->records.size(); ++i) {
      const OutlineText& text = *loaded->records[i];
      std::string context = contexts.next(*loaded, text);
      if (text.text.empty()) continue;
      if (!fitsPo(text.text)) {
        ++outcome.left;
      } else if (options_.forServer) {
        addServerEntry(*loaded, text, version.result.texts[i], seen, outcome);
      } else {
        outcome.entries.push_back(entryOf(script, text, std::move(context), version.result.texts[i], version));
      }
    }
  } catch (const Failure& failure) {
    outcome.error = shown(failure.description());
  }
  return outcome;
}

// In a PO file the translator's work itself may stand.
void PoExport::refuseToOverwrite(const std::string& path) const {
  if (options_.force || path == "-" || pathKind(path) != PathKind::File) return;
  std::string bytes;
  readWhole(path, bytes);
  bool translated = false;
  if (options_.forServer || !poFilesBuiltIn()) {
    for (std::size_t at = bytes.find("\nmsgstr \""); at != std::string::npos; at = bytes.find("\nmsgstr \"", at + 1)) {
      translated |= bytes.compare(at + 9, 1, "\"") != 0;
    }
  } else {
    for (const PoEntry& entry : readPoFile(path)) translated |= !entry.text.empty();
  }
  if (translated) throw Failure(fromUtf8(path) + u": holds translations; --force overwrites it");
}

void PoExport::write(const std::string& path, const Outcome& outcome) {
  refuseToOverwrite(path);
  const std::string folder = folderOf(path);
  if (path != "-" && !folder.empty() && folders_.insert(folder).second) makeFolders(folder);
  if (!options_.forServer) {
    writePoFile(path, options_.language, outcome.entries);
  } else if (path == "-") {
    if (!writeStandardOutput(outcome.serverEntries)) session_.console.fail();
  } else {
    writeWhole(path, outcome.serverEntries);
  }
}

void PoExport::run() {
  session_.prepare();
  if (!poFilesBuiltIn() && !options_.forServer) throw Failure(u"PO files are not built into this program");
  if (options_.split && options_.out == "-") throw UsageError("--split needs a folder");
  if (!options_.old.empty() && options_.from.empty()) throw UsageError("--old needs --from");
  if (!options_.from.empty() && options_.old.empty() && options_.paths.size() != 1) {
    throw UsageError("--from without --old takes one tree");
  }
  if (!options_.split) refuseToOverwrite(options_.out);
  const std::vector<Script> scripts = collectScripts(session_, options_.paths);
  std::unique_ptr<OldVersion> oldVersion;
  if (!options_.from.empty()) {
    oldVersion =
        std::make_unique<OldVersion>(session_, options_.old.empty() ? options_.paths[0] : options_.old, options_.from);
    oldVersion->findRenamed(scripts);
  }
  Outcome all;
  std::size_t messages = 0;
  runOrdered<Outcome>(
      scripts.size(), session_.jobs, [&](std::size_t i) { return readScript(scripts[i], oldVersion.get()); },
      [&](std::size_t i, Outcome&& outcome) {
        if (!outcome.warning.empty()) session_.console.warning(outcome.warning);
        if (!outcome.error.empty()) session_.console.error(outcome.error);
        all.left += outcome.left;
        messages += outcome.entries.size();
        if (!options_.split) {
          std::move(outcome.entries.begin(), outcome.entries.end(), std::back_inserter(all.entries));
          all.serverEntries += outcome.serverEntries;
        } else if (!outcome.entries.empty() || !outcome.serverEntries.empty()) {
          try {
            write(joinPath(options_.out, withExtension(scripts[i].relative, ".po")), outcome);
          } catch (const Failure& failure) {
            session_.console.error(shown(failure.description()));
          }
        }
        session_.console.progress(i + 1, scripts.size());
        return true;
      });
  session_.console.endProgress();
  if (interrupted()) return;
  if (!options_.split) write(options_.out, all);
  if (all.left > 0) {
    session_.console.warning(
        fmt::format("{} left out: control characters, or too long for the server", counted(all.left, "text")));
  }
  session_.console.note(fmt::format("{}, {}", counted(scripts.size(), "script"),
                                    options_.forServer ? "written for the server" : counted(messages, "message")));
}

}  // namespace

void exportPo(Session& session, const PoExportOptions& options) { PoExport(session, options).run(); }

}  // namespace dravenna
