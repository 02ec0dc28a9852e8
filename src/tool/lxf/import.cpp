#include <fmt/core.h>

#include <algorithm>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "platform/tree_files.h"
#include "tool/lxf/import_tree.h"
#include "tool/run/session.h"
#include "tool/script/contents.h"
#include "tool/script/exchange_file.h"
#include "tool/script/lxf_merge.h"

namespace dravenna {

namespace {

constexpr char kImportFooter[] =
    "Examples:\n"
    "  dravenna-lxf import guard.txt guard.lxf               puts the translated texts into the script\n"
    "  dravenna-lxf import guard.txt - < guard.lxf           the exchange file from standard input\n"
    "  dravenna-lxf import npc --from lxf                    a tree; what is not translated stays as it is\n"
    "  dravenna-lxf import npc --from lxf --dry-run          only tells what would happen\n"
    "  dravenna-lxf import npc --from lxf --backup .orig     keeps each old script beside the new one\n"
    "A tree's script whose exchange file does not fit is left alone unless --force says otherwise.";

// What is odd about the file although it is merged all the same.
void warnOfOddities(Session& session, const std::string& path, const ExchangeFile& lxf, std::size_t texts,
                    const std::optional<Failure>& wrongEncoding) {
  if (wrongEncoding) session.console.warning(shown(wrongEncoding->description()));
  if (const auto misfit = misfitOf(lxf, path, texts)) session.console.warning(shown(misfit->description()));
  for (std::size_t i = 0; i < lxf.records.size() && i < texts; ++i) {
    const char* const what = whatLeavesExport(lxf.records[i].text);
    if (what != nullptr) session.console.warning(fmt::format("{}:{}: {}", shownName(path), i + 1, what));
  }
}

void importOne(Session& session, const ImportOptions& options) {
  const std::string& path = options.paths[0];
  const std::string& lxfPath = options.paths[1];
  if (path == "-" && lxfPath == "-") throw UsageError("script and exchange file cannot both be standard input");
  if (path != "-" && session.files->pathKind(path) == PathKind::Folder) throw UsageError("a folder needs --from DIR");
  std::string file;
  std::string work;
  std::string lxfFile;
  std::string lxfWork;
  readFile(session, lxfPath, lxfFile);
  if (lxfFile.empty()) throw Failure(fromUtf8(lxfPath) + u": The exchange file is empty");
  readFile(session, path, file);
  const Encoding& in = takeEncoding(session, path, file, lxfFile);
  const std::string_view lxf = in.codec.toWork(lxfFile, lxfWork);
  const std::string_view script = in.codec.toWork(file, work);
  const ExchangeFile cut = cutExchangeFile(lxf);
  const bool named = lxfPath == "-" || withExtension(lxfPath, ".lxf") == lxfPath;
  const bool numbered = std::any_of(cut.records.begin(), cut.records.end(), [](const ByteRecord& record) {
    return !record.number.empty() && record.number.find_first_not_of("0123456789") == std::string_view::npos;
  });
  if (!named && !numbered && !options.force && contentsOf(lxf, in.lists) != Contents::ExchangeFile) {
    throw Failure(fromUtf8(lxfPath) + u": no exchange file: none of its lines has a number and a colon");
  }

  // As in the window a text goes in whatever it breaks, but not unheard.
  const Merge merge = mergeWork(in, script, lxf, lxfPath, {.keepEol = options.keepEol.value_or(false)});
  for (const BrokenRecord& record : merge.breaks) {
    const std::string told = fmt::format("{}:{}: {}:{}: {}", shownName(path), record.scriptLine, shownName(lxfPath),
                                         record.record, record.why);
    if (options.strict) throw Failure(fromUtf8(told));
    session.console.error(told);
  }
  if (merge.failure) throw Failure(*merge.failure);
  std::string buffer;
  const std::string_view bytes = in.codec.toFile(merge.work, buffer);
  warnOfOddities(session, lxfPath, cut, merge.counts.texts, wrongEncodingOf(lxfFile, lxfPath, file, in.codec.page()));
  if (path == "-" && !options.dryRun) {
    if (!writeStandardOutput(bytes)) session.console.fail();
    return;
  }
  if (!options.dryRun && bytes != file) {
    replaceScript(session, path, bytes, options.backup);
    flushFolders(session, {folderOf(path)});
  }
  session.console.note(fmt::format("{}: {} of {} {}{}", shownName(path), merge.counts.changed,
                                   counted(merge.counts.texts, "text"), options.dryRun ? "would change" : "changed",
                                   merge.counts.changed == 0 && bytes != file ? "; line ends only" : ""));
}

void run(Session& session, const ImportOptions& options) {
  session.prepare();
  if (!options.from.empty()) return importTree(session, options);
  if (options.paths.size() != 2) throw UsageError("give SCRIPT and LXF, or --from DIR for a tree");
  if (options.report.json || !options.report.file.empty()) throw UsageError("--report and --json go with --from");
  importOne(session, options);
}

}  // namespace

void addImport(Verb program, Session& session) {
  Verb verb = program.verb("import", "Merge translated exchange files back into their scripts");
  const auto options = std::make_shared<ImportOptions>();
  verb.words("path", options->paths, "PATH...",
             "SCRIPT LXF, `-` for a standard stream; or with --from files and folders");
  verb.text("--from", options->from, "DIR", "Folder with one exchange file a script, or the one of a single script");
  verb.flag("--dry-run", options->dryRun, "Change nothing, tell what would change");
  addBackupOption(verb, options->backup);
  verb.choice("--eol", options->keepEol, "KIND",
              "Line ends of a script that is written: crlf (throughout) or keep (default keep with --from, else crlf)",
              {{"crlf", false}, {"keep", true}});
  verb.flag("--like-window", options->likeWindow,
            "With --from: CR LF throughout, and untranslated texts lose their colour codes");
  verb.flag("--strict", options->strict, "Leave one script alone, too, when a text would break one of its lines");
  verb.flag("-f,--force", options->force, "Merge exchange files that do not fit too, as the window does");
  options->report.addTo(verb);
  session.addOptions(verb);
  verb.footer(kImportFooter);
  verb.onRun([&session, options] { run(session, *options); });
}

}  // namespace dravenna
