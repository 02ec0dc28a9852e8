#include <fmt/core.h>

#include <set>
#include <unordered_map>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "tool/carry/old_version.h"
#include "tool/po/po.h"
#include "tool/po/po_file.h"
#include "tool/po/po_text.h"
#include "tool/run/for_each_script.h"

namespace dravenna {

namespace {

constexpr std::size_t kServerLine = 1024;  // bytes of a line that the server reads, its end included
constexpr std::size_t kMostWarnings = 20;
constexpr std::size_t kMostStaged = 64;  // PO files that wait for the disk together; each is open

struct Outcome {
  std::vector<PoEntry> entries;
  std::string serverEntries;
  std::vector<std::string> left;  // what the PO file lacks: "file:line: why"
  std::string warning;
  bool unfit = false;
};

// A message as the server reads it: msgctxt and msgid lines, and the translation.
struct ServerEntry {
  std::string key;
  std::string translation;
  std::size_t line;  // of the text that the translation is from
};

struct ServerEntries {
  std::vector<ServerEntry> list;
  std::unordered_map<std::string, std::size_t> byKey;
};

class PoExport {
 public:
  PoExport(Session& session, const PoExportOptions& options) : session_(session), options_(options) {}

  void run();

 private:
  Outcome readScript(const Script& script, const OldVersion* oldVersion) const;
  PoEntry entryOf(const Script& script, const Codec& codec, const OutlineText& text, std::string context,
                  const CarriedText& carried, const OldVersion::Carried& version) const;
  std::string addServerEntry(const LoadedScript& script, const OutlineText& text, const CarriedText& carried,
                             ServerEntries& entries) const;
  void write(const std::string& path, const Outcome& outcome);
  void placeStaged();
  void tellLeft(const std::vector<std::string>& left);

  Session& session_;
  const PoExportOptions& options_;
  std::set<std::string> folders_;
  Replacements replacements_{*session_.files};
  std::size_t left_ = 0;
};

PoEntry PoExport::entryOf(const Script& script, const Codec& codec, const OutlineText& text, std::string context,
                          const CarriedText& carried, const OldVersion::Carried& version) const {
  PoEntry entry;
  entry.context = std::move(context);
  entry.id = poTextOf(codec, text.text);
  entry.file = poNameOf(script.relative);
  entry.line = text.lineNumber + 1;
  const bool unsure = carried.state == CarryState::Changed || carried.state == CarryState::Unsure;
  if (carried.state != CarryState::Carried && !unsure) return entry;
  if (carried.ofPage) {
    entry.comments.push_back(fmt::format("{}: {}", carried.why, poTextOf(codec, carried.translation)));
    return entry;
  }
  entry.text = poTextOf(codec, carried.translation);
  entry.fuzzy = unsure && !entry.text.empty();
  if (!entry.fuzzy) return entry;
  entry.comments.emplace_back(carried.why);
  if (version.old && carried.oldRecord < version.old->records.size()) {
    entry.previousId = poTextOf(codec, version.old->records[carried.oldRecord]->text);
  }
  return entry;
}

// One entry as the server's reader takes it: it knows no escapes but \" and no lines that go on, and of several entries
// of one NPC with one msgid it finds the first. Gives why something is left out, or nothing.
std::string PoExport::addServerEntry(const LoadedScript& script, const OutlineText& text, const CarriedText& carried,
                                     ServerEntries& entries) const {
  std::string buffer;
  const auto fileBytes = [&](std::string_view work) { return std::string(script.in.codec.toFile(work, buffer)); };
  const std::string_view npc = script.outline.npcs[text.npc];
  if (npc.empty()) return "left out: it stands in no NPC";
  const std::string context = fmt::format("msgctxt \"{}\"\n", fileBytes(npc));
  const std::string id = fmt::format("msgid \"{}\"\n", fileBytes(text.text));
  const bool sure = carried.state == CarryState::Carried;
  const std::string translation = fmt::format("msgstr \"{}\"\n", sure ? fileBytes(carried.translation) : std::string());
  const auto tooLong = [](const std::string& line) { return line.size() >= kServerLine; };
  if (tooLong(context) || tooLong(id) || tooLong(translation)) return "left out: too long for the server";
  const auto [found, fresh] = entries.byKey.emplace(context + id, entries.list.size());
  if (fresh) {
    entries.list.push_back({context + id, translation, text.lineNumber});
    return {};
  }
  ServerEntry& first = entries.list[found->second];
  if (!sure || carried.translation.empty() || first.translation == translation) return {};
  if (first.translation == "msgstr \"\"\n") {
    first.translation = translation;
    first.line = text.lineNumber;
    return {};
  }
  return fmt::format("left out: line {} has another translation of the same text of the NPC", first.line + 1);
}

Outcome PoExport::readScript(const Script& script, const OldVersion* oldVersion) const {
  Outcome outcome;
  const auto loaded = oldVersion == nullptr ? loadScript(session_, script.path) : oldVersion->loadFresh(script);
  OldVersion::Carried version;
  version.result.texts.resize(loaded->records.size());
  if (oldVersion != nullptr) version = oldVersion->carry(script, *loaded);
  outcome.warning = version.warning;
  outcome.unfit = version.unfit;
  const Codec& codec = loaded->in.codec;
  PoContexts contexts(codec, script.relative);
  ServerEntries serverEntries;
  for (std::size_t i = 0; i < loaded->records.size(); ++i) {
    const OutlineText& text = *loaded->records[i];
    std::string context = contexts.next(*loaded, text);
    if (text.text.empty()) continue;
    std::string why;
    if (!fitsPo(text.text)) {
      why = "left out: control characters";
    } else if (options_.forServer) {
      why = addServerEntry(*loaded, text, version.result.texts[i], serverEntries);
    } else {
      outcome.entries.push_back(entryOf(script, codec, text, std::move(context), version.result.texts[i], version));
    }
    if (!why.empty()) {
      outcome.left.push_back(fmt::format("{}:{}: {}", shownName(script.path), text.lineNumber + 1, why));
    }
  }
  for (const ServerEntry& entry : serverEntries.list) outcome.serverEntries += entry.key + entry.translation + "\n";
  return outcome;
}

void PoExport::write(const std::string& path, const Outcome& outcome) {
  const std::string bytes =
      options_.forServer ? outcome.serverEntries : poFileBytes(options_.language, outcome.entries);
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

void PoExport::placeStaged() {
  for (const std::u16string& failure : replacements_.commit()) {
    if (!failure.empty()) session_.console.error(shown(failure));
  }
}

void PoExport::tellLeft(const std::vector<std::string>& left) {
  for (const std::string& text : left) {
    if (++left_ <= kMostWarnings) session_.console.warning(text);
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
  const std::vector<Script> scripts = collectScripts(session_, options_.paths);
  if (!options_.split && options_.out != "-") {
    session_.outputs->mayWrite(options_.out, {}, Outputs::Kind::PoFile, options_.force);  // told before the long work
  }
  bool whole = !session_.console.failed();
  std::unique_ptr<OldVersion> oldVersion;
  if (!options_.from.empty()) {
    oldVersion =
        std::make_unique<OldVersion>(session_, options_.old.empty() ? options_.paths[0] : options_.old, options_.from);
    oldVersion->findRenamed(scripts);
  }
  Outcome all;
  std::size_t messages = 0;
  whole &= forEachScript<Outcome>(
      session_, scripts, [&](const Script& script, Buffers&) { return readScript(script, oldVersion.get()); },
      [&](const Script& script, Outcome&& outcome) {
        if (!outcome.warning.empty()) session_.console.warning(outcome.warning);
        if (outcome.unfit) session_.console.fail();
        tellLeft(outcome.left);
        messages += outcome.entries.size();
        if (!options_.split) {
          std::move(outcome.entries.begin(), outcome.entries.end(), std::back_inserter(all.entries));
          all.serverEntries += outcome.serverEntries;
        } else if (!outcome.entries.empty() || !outcome.serverEntries.empty()) {
          const auto failure =
              attempt([&] { write(joinPath(options_.out, withExtension(script.relative, ".po")), outcome); });
          if (failure) session_.console.error(shown(failure->description()));
        }
        return true;
      });
  if (interrupted()) return;
  if (!options_.split && !whole) throw Failure(fromUtf8(options_.out) + u": not written, for it would lack a script");
  if (!options_.split) write(options_.out, all);
  placeStaged();
  flushFolders(session_, folders_);
  if (left_ > kMostWarnings) session_.console.warning(fmt::format("and {} more left out", left_ - kMostWarnings));
  if (!scripts.empty() && messages == 0 && !options_.forServer) {
    session_.console.warning("no script has a text for a PO file");
    session_.console.fail();
  }
  session_.console.note(fmt::format("{}, {}", counted(scripts.size(), "script"),
                                    options_.forServer ? "written for the server" : counted(messages, "message")));
}

}  // namespace

void exportPo(Session& session, const PoExportOptions& options) { PoExport(session, options).run(); }

}  // namespace dravenna
