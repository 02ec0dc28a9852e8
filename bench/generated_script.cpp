#include "generated_script.h"

#include <cstdint>

namespace dravenna {

namespace {

// A small generator of its own: the same script on every machine.
class Chance {
 public:
  std::uint32_t below(std::uint32_t limit) {
    state_ = state_ * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>(state_ >> 33) % limit;
  }

 private:
  std::uint64_t state_ = 42;
};

constexpr const char* kWords[] = {"gate", "the",  "stranger", "you",  "will",  "find",   "behind", "old",  "well",
                                  "zeny", "come", "back",     "when", "night", "a\xF1o", "falls",  "lamp", "my friend"};

std::string sentence(Chance& chance) {
  std::string text;
  for (std::uint32_t words = 4 + chance.below(9); words > 0; --words) {
    text += kWords[chance.below(std::size(kWords))];
    text += words == 1 ? "." : " ";
  }
  if (chance.below(13) == 0) text = "^0000FF" + text + "^000000";
  return text;
}

}  // namespace

std::string generatedScript(std::size_t bytes) {
  constexpr std::size_t kTitles = 500;
  Chance chance;
  std::string script;
  std::size_t titles = 0;
  for (int npc = 1; script.size() < bytes; ++npc) {
    const std::string name = std::to_string(npc);
    script += "prontera.gat," + name + ",120,4\tscript\tTownsman #" + name + "\t105,{\n";
    for (int page = 0; page < 4; ++page) {
      script += titles++ < kTitles ? "\tmes \"[Guard]\";\n" : "\tmes \"[Townsman " + name + "]\";\n";
      for (std::uint32_t lines = 1 + chance.below(5); lines > 0; --lines)
        script += "\tmes \"" + sentence(chance) + "\";\n";
      script += "\tnext; // page " + std::to_string(page) + "\n";
    }
    script += "\tmenu \"" + sentence(chance) + "\",L_Yes" + name + ",\"Cancel\",-;\n";
    script += "\tset $@name" + name + "$, \"npc_" + name + "\";\n";
    script += "\tif (@talked == 1 && getitemcount(501) > 3) mes \"" + sentence(chance) + "\";\n\tclose;\n";
    script += "L_Yes" + name + ":\n\tset @talked, @talked + 1;\n\tdelitem 501,3;\n\tgetexp 150,75;\n\tclose;\n}\n\n";
  }
  return script;
}

}  // namespace dravenna
