#include "tool/po/po.h"

#include "tool/po_files/po_file.h"

namespace dravenna {

namespace {

constexpr char kExportFooter[] =
    "msgid is the text with its colour codes, msgctxt its file, NPC and number. With --from the translations of the\n"
    "tree are put in; with --old they are those of an older version, and a PO file may be of any: changed and unsure "
    "ones\n"
    "become fuzzy.\n"
    "--for hercules: LF, one line each under 1,024 bytes, the script's bytes, msgctxt the NPC's name, unsure ones "
    "empty.\n"
    "Examples:\n"
    "  dravenna-lxf po export npc --out npc.po\n"
    "  dravenna-lxf po export npc --split --out po              one file a script\n"
    "  dravenna-lxf po export npc-2026 --old npc-2019 --from npc-2019-es --out es.po --language es\n"
    "  dravenna-lxf po export npc --from es.po --out es-new.po\n"
    "  dravenna-lxf po export npc --from npc-es --for hercules --out server.po";

constexpr char kImportFooter[] =
    "The scripts must be those that the PO files were made from: an entry goes where its msgctxt says. Entries whose\n"
    "place is not in the scripts are counted and named; the exit status is 1 when no entry has its place there.\n"
    "Entries that are empty, fuzzy, or whose msgid is not the script's text are left out; the others are put in, all "
    "or\n"
    "nothing for each script. A script keeps its line ends.\n"
    "Examples:\n"
    "  dravenna-lxf po import npc --from npc.po\n"
    "  dravenna-lxf po import npc --from po --dry-run";

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
  verb.onRun([&session, options] { exportPo(session, *options); });
}

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
  verb.onRun([&session, options] { importPo(session, *options); });
}

}  // namespace

void addPo(Verb program, Session& session) {
  Verb po = program.verb("po", poFilesBuiltIn() ? "Texts as PO files and back" : "PO files (not built in)");
  po.needVerb();
  addPoExport(po, session);
  addPoImport(po, session);
}

}  // namespace dravenna
