#pragma once

#include <string>
#include <vector>

#include "platform/tree_files.h"

namespace dravenna {

// A message of a PO file; all strings are UTF-8.
struct PoEntry {
  std::string context;
  std::string id;
  std::string previousId;  // of a fuzzy one; may be empty
  std::string text;        // the translation, empty when there is none
  bool fuzzy = false;
  std::string flags;  // the others, with commas between them
  std::string file;   // of the reference; empty for none
  std::size_t line = 0;
  std::size_t ownLine = 0;  // in the PO file it was read from, of its msgid
  std::vector<std::string> comments;
  std::string translatorComments;  // lines
};

struct PoFile {
  std::string header;          // its fields, a line each; empty for usual ones
  std::string headerComments;  // of translators, in front of the header
  std::vector<PoEntry> entries;
  std::vector<PoEntry> obsolete;  // of texts that are no more
};

// False in a build without the library for PO files; reading and writing throw Failure then.
bool poFilesBuiltIn();

// The bytes of a PO file. An empty `language` leaves that of the header. Throws Failure.
std::string poFileBytes(const std::string& language, const PoFile& file);

// Throws Failure that names the line. Several threads may read.
PoFile readPoFile(TreeFiles& files, const std::string& path);

}  // namespace dravenna
