#include "tool/run/output_file.h"

#include "platform/failure.h"
#include "text/text.h"

namespace dravenna {

void writeExchangeFile(TreeFiles& files, const std::string& path, std::string_view bytes, bool force) {
  if (!force && files.pathKind(path) == PathKind::File) {
    thread_local std::string old;
    files.readWhole(path, old);
    if (old == bytes) return;
    if (!old.empty()) throw Failure(fromUtf8(path) + u": exists with other contents; --force overwrites it");
  }
  files.writeWhole(path, bytes);
}

}  // namespace dravenna
