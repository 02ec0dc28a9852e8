#include "tool/run/options.h"

#include <CLI/CLI.hpp>

#include "tool/run/session.h"

namespace dravenna {

namespace {

// The help text names no checks.
CLI::Validator oneOf(const std::vector<std::string>& choices) { return CLI::IsMember(choices).description(""); }

}  // namespace

Verb Verb::verb(const char* name, const char* about) { return Verb(*app_->add_subcommand(name, about)); }

void Verb::needVerb() { app_->require_subcommand(1); }

void Verb::footer(const std::string& text) { app_->footer(text); }

void Verb::onRun(std::function<void()> run) { app_->callback(std::move(run)); }

void Verb::text(const char* name, std::string& value, const char* type, const char* about, Need need) {
  app_->add_option(name, value, about)->required(need == Need::Required)->type_name(type)->group(group_);
}

void Verb::text(const char* name, std::optional<std::string>& value, const char* type, const char* about) {
  app_->add_option(name, value, about)->type_name(type)->group(group_);
}

void Verb::text(const char* name, std::string& value, const char* type, const char* about,
                std::function<std::string(const std::string&)> whyNot) {
  const auto check = [whyNot = std::move(whyNot)](const std::string& given) { return whyNot(given); };
  app_->add_option(name, value, about)->type_name(type)->group(group_)->check(CLI::Validator(check, ""));
}

void Verb::words(const char* name, std::vector<std::string>& values, const char* type, const char* about) {
  app_->add_option(name, values, about)->required()->type_name(type)->group(group_);
}

void Verb::each(const char* name, std::vector<std::string>& values, const char* type, const char* about,
                const std::vector<std::string>& choices) {
  CLI::Option* const option = app_->add_option(name, values, about);
  option->type_name(type)->group(group_)->allow_extra_args(false);
  if (!choices.empty()) option->check(oneOf(choices));
}

void Verb::choice(const char* name, const std::function<void(const std::string&)>& take, const char* type,
                  const char* about, const std::vector<std::string>& choices) {
  app_->add_option_function<std::string>(name, take, about)->type_name(type)->group(group_)->check(oneOf(choices));
}

void Verb::number(const char* name, unsigned& value, const char* type, const char* about, unsigned least,
                  unsigned most) {
  app_->add_option(name, value, about)->type_name(type)->group(group_)->check(CLI::Range(least, most).description(""));
}

void Verb::flag(const char* name, bool& value, const char* about) { app_->add_flag(name, value, about)->group(group_); }

CommandLine::CommandLine(const char* about, const char* version, const char* footer)
    : app_(std::make_unique<CLI::App>(about, "dravenna-lxf")), version_(version) {
  app_->set_version_flag("--version", version_);
  app_->allow_windows_style_options(false);  // a path may begin with a slash there, too
  app_->footer(footer);
  app_->require_subcommand(1);
}

CommandLine::~CommandLine() = default;

Verb CommandLine::program() { return Verb(*app_); }

std::optional<std::string> CommandLine::run(const std::vector<std::string>& words) {
  try {
    app_->parse(std::vector<std::string>(words.rbegin(), words.rend()));
  } catch (const CLI::CallForVersion&) {
    return version_ + "\n";
  } catch (const CLI::CallForHelp&) {
    return app_->help();
  } catch (const CLI::CallForAllHelp&) {
    return app_->help("", CLI::AppFormatMode::All);
  } catch (const CLI::ParseError& failure) {
    if (app_->get_subcommands().empty() && !words.empty() && !words[0].starts_with('-')) {
      throw UsageError(shownName(words[0]) + " is no verb");
    }
    throw UsageError(failure.what());
  }
  return std::nullopt;
}

}  // namespace dravenna
