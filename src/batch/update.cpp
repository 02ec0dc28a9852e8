#include "batch/session.h"
namespace dravenna {
void addUpdate(CLI::App&, Session&) {}
}  // namespace dravenna
