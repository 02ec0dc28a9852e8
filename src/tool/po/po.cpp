#include "tool/po/po.h"

#include <CLI/CLI.hpp>

#include "tool/po/po_file.h"

namespace dravenna {

namespace {

constexpr char kExportFooter[] =
    "msgid is the text with its colour codes, msgctxt its file, NPC and number. With --from the translations of the\n"
    "tree are put in; with --old they are those of an older version: changed and unsure ones become fuzzy.\n"
    "--for hercules: LF, one line each under 1,024 bytes, the script's bytes, msgctxt the NPC's name, unsure ones "
    "empty.\n"
    "Examples:\n"
    "  dravenna-lxf po export npc --out npc.po\n"
    "  dravenna-lxf po export npc --split --out po              one file a script\n"
    "  dravenna-lxf po export npc-2026 --old npc-2019 --from npc-2019-es --out es.po --language es\n"
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

void addPoExport(CLI::App& po, Session& session) {
  CLI::App* const verb = po.add_subcommand("export", "Write the texts of scripts as PO files");
  const auto options = std::make_shared<PoExportOptions>();
  verb->add_option("path", options->paths, "Files and folders")->required()->type_name("PATH...");
  verb->add_option("-o,--out", options->out, "The PO file, `-` for standard output; with --split a folder")
      ->required()
      ->type_name("FILE");
  verb->add_flag("--split", options->split, "One PO file a script, folders mirrored");
  verb->add_option("--from", options->from, "Translations to put in: scripts or exchange files")->type_name("DIR");
  verb->add_option("--old", options->old, "The older version that --from translates")->type_name("OLD");
  verb->add_option("--language", options->language, "The Language field, such as es or pt_BR")->type_name("CODE");
  verb->add_option_function<std::string>(
          "--for", [options](const std::string&) { options->forServer = true; },
          "The form of a server's own reader: hercules")
      ->type_name("SERVER")
      ->check(CLI::IsMember({"hercules"}).description(""));
  verb->add_flag("-f,--force", options->force, "Overwrite a PO file that holds translations");
  session.addOptions(*verb);
  verb->footer(kExportFooter);
  verb->callback([&session, options] { exportPo(session, *options); });
}

void addPoImport(CLI::App& po, Session& session) {
  CLI::App* const verb = po.add_subcommand("import", "Put the translations of PO files into scripts");
  const auto options = std::make_shared<PoImportOptions>();
  verb->add_option("path", options->paths, "Files and folders, as they were exported")
      ->required()
      ->type_name("PATH...");
  verb->add_option("--from", options->from, "The PO file, or the folder of a --split export")
      ->required()
      ->type_name("FILE");
  verb->add_flag("--fuzzy", options->fuzzy, "Take fuzzy entries too");
  verb->add_flag("--dry-run", options->dryRun, "Change nothing, tell what would change");
  addBackupOption(*verb, options->backup);
  verb->add_option_function<std::string>(
          "--eol", [options](const std::string& eol) { options->crlf = eol == "crlf"; },
          "Line ends of a script that is written: keep or crlf (default keep)")
      ->type_name("KIND")
      ->check(CLI::IsMember({"crlf", "keep"}).description(""));
  session.addOptions(*verb);
  verb->footer(kImportFooter);
  verb->callback([&session, options] { importPo(session, *options); });
}

}  // namespace

void addPo(CLI::App& app, Session& session) {
  CLI::App* const po =
      app.add_subcommand("po", poFilesBuiltIn() ? "Texts as PO files and back" : "PO files (not built in)");
  po->require_subcommand(1);
  addPoExport(*po, session);
  addPoImport(*po, session);
}

}  // namespace dravenna
