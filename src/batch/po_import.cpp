#include <fmt/format.h>

#include <set>
#include <unordered_map>

#include "batch/loaded_script.h"
#include "batch/po.h"
#include "batch/po_file.h"
#include "batch/po_text.h"
#include "batch/script_lines.h"
#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"

namespace dravenna {

namespace {

constexpr std::size_t kMostWarnings = 20;

class PoImport {
 public:
  PoImport(Session& session, const PoImportOptions& options) : session_(session), options_(options) {}

  void run();

 private:
  using Entries = std::unordered_map<std::string, PoEntry>;  // by context

  static Entries readEntries(const std::string& path);
  void importScript(const Script& script, const Entries& entries);
  void apply(const Script& script, const Entries& entries, const LoadedScript& loaded, std::string& work);
  void warn(const std::string& text);
  void replace(const std::string& path, std::string_view bytes);

  Session& session_;
  const PoImportOptions& options_;
  std::set<std::string> folders_;
  std::size_t changed_ = 0;
  std::size_t written_ = 0;
  std::size_t fuzzy_ = 0;
  std::size_t warnings_ = 0;
  std::size_t inScript_ = 0;
};

PoImport::Entries PoImport::readEntries(const std::string& path) {
  Entries entries;
  for (PoEntry& entry : readPoFile(path)) {
    std::string context = entry.context;
    entries.emplace(std::move(context), std::move(entry));
  }
  return entries;
}

void PoImport::warn(const std::string& text) {
  session_.console.fail();
  if (++warnings_ <= kMostWarnings) session_.console.warning(text);
}

// The script with its translations, in work bytes.
void PoImport::apply(const Script& script, const Entries& entries, const LoadedScript& loaded, std::string& work) {
  PoContexts contexts(*session_.codec, script.relative);
  std::size_t copied = 0;
  inScript_ = 0;
  for (const OutlineText* text : loaded.records) {
    const auto found = entries.find(contexts.next(loaded, *text));
    if (found == entries.end() || found->second.text.empty()) continue;
    const PoEntry& entry = found->second;
    const std::string place = fmt::format("{}:{}", shownName(script.path), text->lineNumber + 1);
    if (entry.fuzzy && !options_.fuzzy) {
      ++fuzzy_;
      continue;
    }
    const std::string now = poTextOf(*session_.codec, text->text);
    if (entry.text == now) continue;
    if (entry.id != now) {
      warn(fmt::format("{}: left as it is: the text is not the entry's msgid", place));
      continue;
    }
    std::string translation;
    const std::string why = fromPoText(*session_.codec, entry.text, translation);
    if (!why.empty()) {
      warn(fmt::format("{}: left as it is: {}", place, why));
      continue;
    }
    const auto begin = static_cast<std::size_t>(text->text.data() - loaded.work.data());
    work.append(loaded.work.substr(copied, begin - copied)).append(translation);
    copied = begin + text->text.size();
    ++inScript_;
  }
  work.append(loaded.work.substr(copied));
}

void PoImport::replace(const std::string& path, std::string_view bytes) {
  Replacements replacements(options_.backup);
  replacements.stage(path, bytes);
  const std::u16string failed = replacements.commit()[0];
  if (!failed.empty()) throw Failure(failed);
  folders_.insert(folderOf(path));
}

void PoImport::importScript(const Script& script, const Entries& entries) {
  const auto loaded = loadScript(session_, script.path);
  std::string work;
  apply(script, entries, *loaded, work);
  if (inScript_ == 0) return;
  if (options_.crlf) {
    std::string lines;
    forEachLine(work, [&](const ScriptLine& line) { lines.append(line.text).append("\r\n"); });
    work.swap(lines);
  }
  std::string buffer;
  if (!options_.dryRun) replace(script.path, session_.codec->toFile(work, buffer));
  if (options_.dryRun) {
    session_.console.note(fmt::format("{}: {} would change", shownName(script.path), counted(inScript_, "text")));
  }
  ++written_;
  changed_ += inScript_;
}

void PoImport::run() {
  session_.prepare();
  if (!poFilesBuiltIn()) throw Failure(u"PO files are not built into this program");
  if (options_.backup.find('/') != std::string::npos) throw UsageError("--backup: the suffix holds a /");
  const bool split = pathKind(options_.from) == PathKind::Folder;
  const std::vector<Script> scripts = collectScripts(session_, options_.paths);
  Entries entries;
  if (!split) entries = readEntries(options_.from);
  for (std::size_t i = 0; i < scripts.size() && !interrupted(); ++i) {
    try {
      const std::string path = joinPath(options_.from, withExtension(scripts[i].relative, ".po"));
      if (!split) {
        importScript(scripts[i], entries);
      } else if (pathKind(path) == PathKind::File) {
        importScript(scripts[i], readEntries(path));
      }
    } catch (const Failure& failure) {
      session_.console.error(shown(failure.description()));
    }
    session_.console.progress(i + 1, scripts.size());
  }
  for (const std::string& folder : folders_) flushFolder(folder);
  session_.console.endProgress();
  if (warnings_ > kMostWarnings)
    session_.console.warning(fmt::format("and {} more entries left out", warnings_ - kMostWarnings));
  if (interrupted()) return session_.console.error("Interrupted; every script is the old or the new one");
  session_.console.note(fmt::format("{}{} {}, {} changed, {} fuzzy ones left out", options_.dryRun ? "dry run: " : "",
                                    counted(written_, "script"), options_.dryRun ? "would be written" : "written",
                                    counted(changed_, "text"), fuzzy_));
}

}  // namespace

void importPo(Session& session, const PoImportOptions& options) { PoImport(session, options).run(); }

}  // namespace dravenna
