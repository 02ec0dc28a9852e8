#include "platform/failure.h"
#include "tool/po_files/po_file.h"

namespace dravenna {

bool poFilesBuiltIn() { return false; }

std::string poFileBytes(const std::string&, const PoFile&) { throw Failure(u"PO files are not built in"); }

PoFile readPoFile(TreeFiles&, const std::string&) { throw Failure(u"PO files are not built in"); }

}  // namespace dravenna
