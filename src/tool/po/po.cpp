#include "tool/po/po.h"

#include "tool/po_files/po_file.h"

namespace dravenna {

void addPo(Verb program, Session& session) {
  Verb po = program.verb("po", poFilesBuiltIn() ? "Texts as PO files and back" : "PO files (not built in)");
  po.needVerb();
  addPoExport(po, session);
  addPoImport(po, session);
}

}  // namespace dravenna
