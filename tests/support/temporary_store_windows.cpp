#include <string>

#include "platform/windows/system_calls.h"
#include "support/temporary_store.h"

namespace dravenna {

namespace {

std::wstring ownKey() { return L"Software\\Halvex\\Scenario-" + std::to_wstring(::GetCurrentProcessId()); }

}  // namespace

TemporaryStore::TemporaryStore(const std::filesystem::path&) {
  ::SetEnvironmentVariableW(L"DRAVENNA_REGISTRY", ownKey().c_str());
}

TemporaryStore::~TemporaryStore() { ::RegDeleteTreeW(HKEY_CURRENT_USER, ownKey().c_str()); }

}  // namespace dravenna
