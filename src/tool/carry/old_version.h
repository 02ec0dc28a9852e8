#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/carry/carry.h"
#include "tool/run/text_index.h"

namespace dravenna {

// The old version of a tree with its translations: a folder of translated scripts or of exchange files.
class OldVersion {
 public:
  OldVersion(Session& session, std::string tree, std::string translations);

  // A renamed script is looked for by its texts among those of the old tree that the new one lacks. Call once with
  // all scripts of the new tree. Throws UsageError where a single file should stand for several of them.
  void findRenamed(const std::vector<Script>& fresh);

  struct Carried {
    std::unique_ptr<LoadedScript> old;  // null when there is no old version
    std::string oldPath;
    CarryResult result;
    std::string warning;  // why the translations could not be used
    bool unfit = false;   // there are some, but they do not fit
  };
  // The paths of the old scripts that none of `fresh` stands for. After findRenamed().
  std::vector<std::string> unclaimed(const std::vector<Script>& fresh) const;

  // A script of the new tree. One without bytes above 0x7F has the code page of its translation.
  std::unique_ptr<LoadedScript> loadFresh(const Script& script) const;

  // Throws Failure.
  Carried carry(const Script& script, const LoadedScript& fresh) const;

 private:
  std::string oldNameIn(const std::string& tree, const Script& script) const;  // relative
  std::string oldPathOf(const Script& script) const;
  // Of the old script of that name; empty for none.
  std::string translationOf(const std::string& relative) const;
  bool isOriginal(const std::string& lxf, const Carried& carried) const;
  std::vector<Translation> translationsFor(const std::string& relative, Carried& carried) const;

  Session& session_;
  std::string tree_;
  std::string translations_;
  std::optional<TextIndex> index_;              // of a folder of exchange files
  std::map<std::string, std::string> renamed_;  // new to old, relative
};

}  // namespace dravenna
