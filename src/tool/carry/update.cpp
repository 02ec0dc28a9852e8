#include <fmt/core.h>

#include <array>
#include <numeric>

#include "platform/failure.h"
#include "platform/terminal.h"
#include "tool/carry/old_version.h"
#include "tool/run/for_each_script.h"
#include "tool/run/text_index.h"
#include "tool/script/records.h"

namespace dravenna {

namespace {

constexpr char kUpdateFooter[] =
    R"(--from holds the translations of OLD: translated scripts, exchange files or PO files. For each script of NEW an
exchange file goes to --out that `import NEW --from DIR` takes; what could not be carried stands in it as in NEW.
The report tells of each text that is new, changed or unsure, with the old text and its translation.
Examples:
  dravenna-lxf update npc-2019 npc-2026 --from npc-2019-es --out lxf > report.txt
  dravenna-lxf update npc-2019 npc-2026 --from lxf-2019 --out lxf --json --report report.json
  dravenna-lxf import npc-2026 --from lxf)";

struct Options {
  std::string oldTree;
  std::string newTree;
  std::string from;
  std::string out;
  std::string report;
  bool json = false;
  bool keepCodes = false;
  bool putUnsure = false;
  bool all = false;
  bool force = false;
};

constexpr std::array<const char*, 5> kStateNames = {"carried", "untranslated", "new", "changed", "unsure"};

struct Outcome {
  std::string report;
  std::string warning;
  bool unfit = false;           // there is a translation, but it could not be used
  std::string error;            // why its exchange file was not written
  std::optional<bool> written;  // anew, or it stood there; nothing for none
  TextDigest digest;            // of the texts that it was made from
  std::array<std::size_t, 5> counts{};
  std::size_t translations = 0;  // put in or told
  std::size_t gone = 0;
};

class Update {
 public:
  Update(Session& session, const Options& options) : session_(session), options_(options) {}

  void run();

 private:
  Outcome updateScript(const Script& script, const OldVersion& oldVersion) const;
  void reportText(const std::string& path, const LoadedScript& fresh, const OldVersion::Carried& carried,
                  std::size_t record, std::string& out) const;
  void reportGone(const Codec& codec, const OldVersion::Carried& carried, std::string& out) const;
  void reportLeft(const std::vector<std::string>& paths, Output& output, std::size_t& gone);
  void summary(const std::array<std::size_t, 5>& counts, std::size_t gone);

  Session& session_;
  const Options& options_;
};

void Update::reportText(const std::string& path, const LoadedScript& fresh, const OldVersion::Carried& carried,
                        std::size_t record, std::string& out) const {
  const CarriedText& text = carried.result.texts[record];
  if (!options_.all && (text.state == CarryState::Carried || text.state == CarryState::Untranslated)) return;
  const OutlineText& now = *fresh.records[record];
  const Codec& codec = fresh.in.codec;
  const OldText* const before = text.oldRecord < carried.old.size() ? &carried.old[text.oldRecord] : nullptr;
  const char* const state = kStateNames[static_cast<std::size_t>(text.state)];
  if (options_.json) {
    out += fmt::format("{{\"file\":{},\"line\":{},\"record\":{},\"state\":\"{}\",\"text\":{}", jsonString(path),
                       now.lineNumber + 1, record + 1, state, jsonString(codec, now.text));
    if (before != nullptr) {
      out += fmt::format(",\"oldLine\":{},\"oldText\":{},\"translation\":{},\"why\":{}", before->line,
                         jsonString(codec, before->text), jsonString(codec, text.translation), jsonString(text.why));
    }
    out += "}\n";
    return;
  }
  appendEscapedName(path, out);
  out += fmt::format(":{}: {}: ", now.lineNumber + 1, state);
  if (text.state == CarryState::Changed && before != nullptr) out += quoted(codec, before->text) + " -> ";
  out += quoted(codec, now.text);
  if (text.state == CarryState::Unsure) out += fmt::format(": {}", text.why);
  if (!text.translation.empty()) {
    out += (text.ofPage ? "; translation of the page " : "; translation ") + quoted(codec, text.translation);
  }
  out += "\n";
}

void Update::reportGone(const Codec& codec, const OldVersion::Carried& carried, std::string& out) const {
  for (const std::size_t record : carried.result.gone) {
    const OldText& text = carried.old[record];
    if (options_.json) {
      out += fmt::format("{{\"file\":{},\"line\":{},\"state\":\"gone\",\"text\":{}}}\n", jsonString(carried.oldPath),
                         text.line, jsonString(codec, text.text));
    } else {
      appendEscapedName(carried.oldPath, out);
      out += fmt::format(":{}: gone: {}\n", text.line, quoted(codec, text.text));
    }
  }
}

Outcome Update::updateScript(const Script& script, const OldVersion& oldVersion) const {
  Outcome outcome;
  const auto fresh = oldVersion.loadFresh(script);
  const OldVersion::Carried carried = oldVersion.carry(script, *fresh);
  outcome.warning = carried.warning;
  outcome.unfit = carried.unfit;
  std::string lxf;
  for (const OutlineText* text : fresh->records) outcome.digest.add(text->text);
  for (std::size_t i = 0; i < fresh->records.size(); ++i) {
    const CarriedText& text = carried.result.texts[i];
    ++outcome.counts[static_cast<std::size_t>(text.state)];
    if (text.state != CarryState::Untranslated && !text.translation.empty()) ++outcome.translations;
    const bool put = text.state == CarryState::Carried || (options_.putUnsure && text.state == CarryState::Unsure &&
                                                           !text.translation.empty() && !text.ofPage);
    const std::string_view chosen = put ? std::string_view(text.translation) : fresh->records[i]->text;
    appendRecord(i + 1, options_.keepCodes ? std::string(chosen) : withoutColor(chosen), lxf);
    lxf.append("\r\n", 2);
    reportText(script.path, *fresh, carried, i, outcome.report);
  }
  reportGone(fresh->in.codec, carried, outcome.report);
  outcome.gone = carried.result.gone.size();
  const auto failure = attempt([&] {
    std::string buffer;
    const std::string target = joinPath(options_.out, withExtension(script.relative, ".lxf"));
    if (fresh->records.empty() && session_.files->pathKind(target) == PathKind::Missing) return;
    outcome.written = session_.outputs->write(target, fresh->in.codec.toFile(lxf, buffer), Outputs::Kind::ExchangeFile,
                                              options_.force);
  });
  if (failure) outcome.error = shown(failure->description());
  return outcome;
}

// Old scripts that are no more.
void Update::reportLeft(const std::vector<std::string>& paths, Output& output, std::size_t& gone) {
  for (const std::string& path : paths) {
    session_.console.warning(fmt::format("{}: not in the new version", shownName(path)));
    try {
      OldVersion::Carried carried;
      carried.oldPath = path;
      const auto script = loadScript(session_, path);
      carried.old = oldTextsOf(*script);
      carried.result.gone.resize(carried.old.size());
      std::iota(carried.result.gone.begin(), carried.result.gone.end(), std::size_t{0});
      reportGone(script->in.codec, carried, output.buffer());
      gone += carried.result.gone.size();
    } catch (const Failure& failure) {
      session_.console.error(shown(failure.description()));
    }
  }
}

void Update::summary(const std::array<std::size_t, 5>& counts, std::size_t gone) {
  session_.console.note(fmt::format("{} carried, {} not translated before, {} new, {} changed, {} unsure, {} gone",
                                    counted(counts[0], "text"), counts[1], counts[2], counts[3], counts[4], gone));
}

void Update::run() {
  session_.prepare();
  const auto from = session_.files->identity(options_.from);
  if (from && from == session_.files->identity(options_.out)) {
    throw UsageError("--out would overwrite the translations of --from");
  }
  const std::vector<Script> scripts = collectScripts(session_, {options_.newTree});
  OldVersion oldVersion(session_, options_.oldTree, options_.from);
  oldVersion.findRenamed(scripts);
  std::vector<std::string> targets;
  targets.reserve(scripts.size());
  for (const Script& script : scripts) targets.push_back(script.relative);
  makeFolders(session_, options_.out, targets);

  Output output(*session_.outputs, options_.report, options_.force);
  TextIndex index(session_, options_.out);
  std::array<std::size_t, 5> counts{};
  std::size_t gone = 0;
  std::size_t translations = 0;
  forEachScript<Outcome>(
      session_, scripts, [&](const Script& script, Buffers&) { return updateScript(script, oldVersion); },
      [&](const Script& script, Outcome&& outcome) {
        if (outcome.written)
          index.madeFrom(withExtension(script.relative, ".lxf"), outcome.digest.value(), *outcome.written);
        if (!outcome.warning.empty()) session_.console.warning(outcome.warning);
        if (outcome.unfit) session_.console.fail();
        if (!outcome.error.empty()) session_.console.error(outcome.error);
        for (std::size_t k = 0; k < counts.size(); ++k) counts[k] += outcome.counts[k];
        gone += outcome.gone;
        translations += outcome.translations;
        output.buffer().append(outcome.report);
        return output.flushSome();
      });
  index.save();
  reportLeft(oldVersion.unclaimed(scripts), output, gone);
  if (!output.close()) session_.console.fail();
  if (!scripts.empty() && translations == 0 && !interrupted()) {
    const bool none = std::accumulate(counts.begin(), counts.end(), std::size_t{0}) == 0;
    session_.console.warning(none ? "no script has a text for an exchange file"
                                  : "no text has a translation to carry over");
    session_.console.fail();
  }
  summary(counts, gone);
}

}  // namespace

void addUpdate(Verb program, Session& session) {
  Verb verb = program.verb("update", "Carry translations over to a new version of the scripts");
  const auto options = std::make_shared<Options>();
  verb.text("old", options->oldTree, "OLD", "The version that was translated, before its translation", Need::Required);
  verb.text("new", options->newTree, "NEW", "The new version, not translated", Need::Required);
  verb.text("--from", options->from, "PATH", "The translations of OLD: scripts, exchange files, PO files",
            Need::Required);
  verb.text("-o,--out", options->out, "DIR", "Folder for the exchange files of NEW", Need::Required);
  verb.text("--report", options->report, "FILE", "File for the report instead of standard output");
  verb.flag("--all", options->all, "Report carried and untranslated texts too");
  verb.flag("--json", options->json, "The report as JSON lines");
  verb.flag("--keep-codes", options->keepCodes, "Leave the colour codes in the texts");
  verb.flag("--put-unsure", options->putUnsure, "Put unsure translations of single texts in as well");
  verb.flag("-f,--force", options->force, "Overwrite exchange files of --out with other contents");
  session.addOptions(verb);
  verb.footer(kUpdateFooter);
  verb.onRun([&session, options] { Update(session, *options).run(); });
}

}  // namespace dravenna
