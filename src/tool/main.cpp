
#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <string_view>

#include "platform/failure.h"
#include "platform/process.h"
#include "platform/terminal.h"
#include "tool/run/session.h"

namespace {

using namespace dravenna;

constexpr char kFooter[] =
    "Exit status: 0 all went well and nothing was found, 1 something failed or was found, 2 wrong use.\n"
    "dravenna-lxf VERB --help tells about one verb, with examples. See also dravenna-lxf(1).";

constexpr struct {
  std::string_view name;
  void (*add)(Verb program, Session& session);
} kVerbs[] = {{"export", addExport}, {"import", addImport}, {"texts", addTexts},
              {"stats", addStats},   {"check", addCheck},   {"update", addUpdate},
              {"merge", addMerge},   {"git", addGit},       {"po", addPo}};

int run(const std::vector<std::string>& words, Session& session) {
  CommandLine line(
      "Texts of NPC scripts for translators: what the Dravenna window does for one script, for whole trees.",
      "dravenna-lxf " DRAVENNA_VERSION, kFooter);
  const Verb program = line.program();
  // One verb alone is declared faster, and git runs one for each script of a merge.
  const auto named = std::find_if(std::begin(kVerbs), std::end(kVerbs),
                                  [&](const auto& verb) { return !words.empty() && words[0] == verb.name; });
  for (const auto& verb : kVerbs) {
    if (named == std::end(kVerbs) || &verb == named) verb.add(program, session);
  }
  if (const auto asked = line.run(words)) writeStandardOutput(*asked);
  session.console.endProgress();
  if (session.pages) session.pages->tell(session.console);
  return session.console.status();
}

}  // namespace

int main(int argc, char** argv) {
  catchInterrupts();
  Session session;
  int status = 1;
  try {
    status = run(commandWords(argc, argv), session);
  } catch (const UsageError& failure) {
    session.console.error(failure.what());
    writeStandardError("Try dravenna-lxf --help or dravenna-lxf VERB --help.\n");
    status = 2;
  } catch (const Failure& failure) {
    session.console.error(shown(failure.description()));
  } catch (const std::bad_alloc&) {
    session.console.error("Out of memory");
  } catch (const std::exception& failure) {
    session.console.error(failure.what());
  }
  session.console.endProgress();
  endIfInterrupted();
  return status;
}
