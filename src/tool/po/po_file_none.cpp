#include "platform/failure.h"
#include "tool/po/po_file.h"

namespace dravenna {

bool poFilesBuiltIn() { return false; }

std::string poFileBytes(const std::string&, const std::vector<PoEntry>&) {
  throw Failure(u"PO files are not built in");
}

std::vector<PoEntry> readPoFile(TreeFiles&, const std::string&) { throw Failure(u"PO files are not built in"); }

}  // namespace dravenna
