
#include <exception>
#include <new>

#include "platform/failure.h"
#include "platform/process.h"
#include "platform/terminal.h"
#include "tool/run/session.h"

namespace {

using namespace dravenna;

constexpr char kFooter[] =
    "Exit status: 0 all went well and nothing was found, 1 something failed or was found, 2 wrong use.\n"
    "dravenna-lxf VERB --help tells about one verb, with examples. See also dravenna-lxf(1).";

int run(const std::vector<std::string>& words, Session& session) {
  CommandLine line(
      "Texts of NPC scripts for translators: what the Dravenna window does for one script, for whole trees.",
      "dravenna-lxf " DRAVENNA_VERSION, kFooter);
  const Verb program = line.program();
  addExport(program, session);
  addImport(program, session);
  addTexts(program, session);
  addStats(program, session);
  addCheck(program, session);
  addUpdate(program, session);
  addPo(program, session);
  if (const auto asked = line.run(words)) writeStandardOutput(*asked);
  session.console.endProgress();
  if (session.pages) session.pages->tell(session.console);
  return session.console.failed() ? 1 : 0;
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
