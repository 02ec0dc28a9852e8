#include <fmt/format.h>
#include <CLI/CLI.hpp>

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
  CLI::App app("Texts of NPC scripts for translators: what the Dravenna window does for one script, for whole trees.",
               "dravenna-lxf");
  app.set_version_flag("--version", "dravenna-lxf " DRAVENNA_VERSION);
  app.footer(kFooter);
  app.require_subcommand(1);
  addExport(app, session);
  addImport(app, session);
  addTexts(app, session);
  addStats(app, session);
  addCheck(app, session);
  addUpdate(app, session);
  addPo(app, session);
  try {
    app.parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::CallForVersion&) {
    writeStandardOutput("dravenna-lxf " DRAVENNA_VERSION "\n");
    return 0;
  } catch (const CLI::CallForHelp&) {
    writeStandardOutput(app.help());
    return 0;
  } catch (const CLI::CallForAllHelp&) {
    writeStandardOutput(app.help("", CLI::AppFormatMode::All));
    return 0;
  } catch (const CLI::ParseError& failure) {
    if (app.get_subcommands().empty() && !words.empty() && !words[0].starts_with('-')) {
      throw UsageError(fmt::format("{} is no verb", shownName(words[0])));
    }
    throw UsageError(failure.what());
  }
  session.console.endProgress();
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
