#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tool/carry/carry.h"
#include "tool/po_files/po_entries.h"
#include "tool/run/text_index.h"

namespace dravenna {

struct OldText {
  std::string text;      // work bytes, in the encoding of the new script
  std::size_t line = 0;  // from 1
  const PoEntry* entry = nullptr;
};

std::vector<OldText> oldTextsOf(const LoadedScript& script);

// The old version of a tree with its translations: a folder of translated scripts, of exchange files or of PO files, or
// a single such file. PO files tell themselves of which texts they are, so the old scripts only say which was renamed.
class OldVersion {
 public:
  OldVersion(Session& session, std::string tree, std::string translations, MoreTexts more = {});

  // A renamed script is looked for by its texts among those of the old tree that the new one lacks. Call once with
  // all scripts of the new tree. Throws UsageError where a single file should stand for several of them.
  void findRenamed(const std::vector<Script>& fresh);

  struct Carried {
    std::vector<OldText> old;  // none when there is no old version
    std::string oldPath;       // where they stand
    std::shared_ptr<const PoEntries> po;
    std::vector<const PoEntry*> left;  // entries of the script that none of its texts stands for
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

  // The entries of the one PO file that are of none of `fresh`, where these are a whole tree.
  std::vector<const PoEntry*> unclaimedEntries(const std::vector<Script>& fresh) const;

 private:
  std::string oldNameIn(const std::string& tree, const Script& script) const;  // relative
  std::string oldPathOf(const Script& script) const;
  // Of the old script of that name; empty for none.
  std::string translationOf(const std::string& relative) const;
  bool isOriginal(const std::string& lxf, const LoadedScript& old, const std::string& oldPath) const;
  std::vector<Translation> translationsFor(const std::string& relative, const LoadedScript& old,
                                           Carried& carried) const;
  std::shared_ptr<const PoEntries> poEntriesFor(const Script& script) const;  // null: they are in no PO file
  std::string nameIn(const PoEntries& po, const Script& script) const;
  void carryFromPo(const Script& script, const LoadedScript& fresh, Carried& carried) const;

  Session& session_;
  std::string tree_;
  std::string translations_;
  MoreTexts more_;
  std::shared_ptr<const PoEntries> po_;         // where all translations are in one PO file
  std::optional<TextIndex> index_;              // of a folder of exchange files
  std::map<std::string, std::string> renamed_;  // new to old, relative
};

}  // namespace dravenna
