#include "batch/session.h"
namespace dravenna {
void addCheck(CLI::App&, Session&) {}
}  // namespace dravenna
