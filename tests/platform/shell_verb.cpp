// shell_verb FILE: what the shell does when the user picks the verb of the program for a file.

#include "platform/windows/system_calls.h"

#include <shellapi.h>

int wmain(int argc, wchar_t** argv) {
  if (argc != 2) return 2;
  SHELLEXECUTEINFOW pick{};
  pick.cbSize = sizeof pick;
  pick.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  pick.lpVerb = L"Dravenna";
  pick.lpFile = argv[1];
  pick.nShow = SW_SHOWNORMAL;
  return ::ShellExecuteExW(&pick) != 0 ? 0 : 1;
}
