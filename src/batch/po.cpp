#include "batch/session.h"
namespace dravenna {
void addPo(CLI::App&, Session&) {}
}  // namespace dravenna
