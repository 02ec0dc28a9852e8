#pragma once

#include "tool/run/session.h"

namespace dravenna {

// The verbs below `po`.
void addPoExport(Verb po, Session& session);
void addPoImport(Verb po, Session& session);

}  // namespace dravenna
