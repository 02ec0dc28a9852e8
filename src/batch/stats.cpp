#include "batch/session.h"
namespace dravenna {
void addStats(CLI::App&, Session&) {}
}  // namespace dravenna
