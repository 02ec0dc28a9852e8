#include <gtest/gtest.h>

#include "platform/failure.h"
#include "tool/run/command_names.h"
#include "tool/run/globs.h"

namespace dravenna {
namespace {

TEST(Globs, MatchNamesAndPaths) {
  const std::pair<const char*, const char*> matches[] = {{"*.txt", "a.txt"},
                                                         {"a*b*c", "aXbYbZc"},
                                                         {"npc/**", "npc/a/b.txt"},
                                                         {"**/x.txt", "x.txt"},
                                                         {"**/x.txt", "a/b/x.txt"},
                                                         {"a/**/x*.txt", "a/b/c/x1.txt"},
                                                         {"q_[0-9a].txt", "q_7.txt"},
                                                         {"[x", "[x"},
                                                         {"", ""}};
  const std::pair<const char*, const char*> others[] = {{"*.txt", "a.txt~"},         {"*.txt", "b/a.txt"},
                                                        {"a*b*c", "aXbYbZ"},         {"a/**/x*.txt", "a/x1/y.txt"},
                                                        {"q_[!0-9].txt", "q_7.txt"}, {"q_?.txt", "q_/.txt"}};
  for (const auto& [pattern, text] : matches) EXPECT_TRUE(matchesGlob(pattern, text)) << pattern << " " << text;
  for (const auto& [pattern, text] : others) EXPECT_FALSE(matchesGlob(pattern, text)) << pattern << " " << text;
  EXPECT_TRUE(matchesAny({"*.txt"}, "a/b/c.txt"));
  EXPECT_FALSE(matchesAny({"a/*.txt"}, "a/b/c.txt"));
}

TEST(CommandPairs, ADamagedFileIsTold) {
  EXPECT_EQ(readCommandPairs(R"({"pairs":[{"name":"a","allowed":["mes","x"],"special":[]}]})").at(0).allowed,
            u",mes,x,");
  EXPECT_THROW(readCommandPairs("{"), Failure);
  EXPECT_THROW(readCommandPairs(R"({"pairs":[{"name":1}]})"), Failure);
}

}  // namespace
}  // namespace dravenna
