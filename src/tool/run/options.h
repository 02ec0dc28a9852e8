#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
}

// The command line as its verbs declare it. Only options.cpp knows the library behind it.
namespace dravenna {

// Wrong use of the command line: exit status 2.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

enum class Need { Optional, Required };

// A verb, or the program itself. What options are bound to must outlive the parsing. A name is as in "-o,--out", one
// without dashes stands for a word by its place; `type` is what the help text calls the value.
class Verb {
 public:
  explicit Verb(CLI::App& app) : app_(&app) {}

  Verb verb(const char* name, const char* about);
  void needVerb();  // a verb must follow
  void footer(const std::string& text);
  void onRun(std::function<void()> run);
  // What is declared from now on stands under this heading of the help text.
  void group(const char* heading) { group_ = heading; }

  void text(const char* name, std::string& value, const char* type, const char* about, Need need = Need::Optional);
  void text(const char* name, std::optional<std::string>& value, const char* type, const char* about);
  // `whyNot` gives why a value may not be, or nothing.
  void text(const char* name, std::string& value, const char* type, const char* about,
            std::function<std::string(const std::string&)> whyNot);
  // One word or more by their place.
  void words(const char* name, std::vector<std::string>& values, const char* type, const char* about);
  // May be given again, a value each time; of `choices`, where there are any.
  void each(const char* name, std::vector<std::string>& values, const char* type, const char* about,
            const std::vector<std::string>& choices = {});
  void choice(const char* name, const std::function<void(const std::string&)>& take, const char* type,
              const char* about, const std::vector<std::string>& choices);
  // A value for each of the words.
  template <class Value>
  void choice(const char* name, Value& value, const char* type, const char* about,
              const std::map<std::string, Value>& choices) {
    std::vector<std::string> words;
    words.reserve(choices.size());
    for (const auto& [word, meaning] : choices) words.push_back(word);
    choice(
        name, [&value, choices](const std::string& word) { value = choices.at(word); }, type, about, words);
  }
  void number(const char* name, unsigned& value, const char* type, const char* about, unsigned least, unsigned most);
  void flag(const char* name, bool& value, const char* about);

 private:
  CLI::App* app_;
  const char* group_ = "Options";
};

// The whole program.
class CommandLine {
 public:
  CommandLine(const char* about, const char* version, const char* footer);
  ~CommandLine();

  Verb program();
  // Runs the verb that the words name; gives a text where one is asked for: help or version. Throws UsageError, and
  // what the verb throws.
  std::optional<std::string> run(const std::vector<std::string>& words);

 private:
  std::unique_ptr<CLI::App> app_;
  std::string version_;
};

}  // namespace dravenna
