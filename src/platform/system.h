#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process.h"
#include "platform/registry_calls.h"
#include "platform/script_page.h"
#include "platform/text_files.h"
#include "text/code_page.h"

// The implementations of this system; one source folder for each system.
namespace dravenna {

// An environment variable: bytes where such are bytes, else UTF-8. Empty if it is not set.
std::string environmentVariable(const char* name);

// The code page that DRAVENNA_CODEPAGE names ("1252", "cp874", "utf-8"), else the system's.
CodePagePtr systemCodePage();

// Whether the system itself has a page for 8-bit text. Where it has none, the one above follows from the locale.
bool systemHasCodePage();

// A code page by its name or number; null for one that is not supported.
CodePagePtr codePageByName(std::string_view name);

// The numbers of all that are supported, in a fixed order.
std::vector<int> codePages();

// Text files in the given code page, or that of their script.
std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage, Utf8Scripts utf8 = Utf8Scripts::AsAllOthers);

// Whole files as bytes, for what is not in the code page. Throw Failure.
std::string readBytes(std::u16string_view path);
void replaceBytes(std::u16string_view path, std::string_view bytes);

std::unique_ptr<RegistryCalls> makeRegistry();

// `arguments` are those behind the program's name.
std::unique_ptr<Process> makeProcess(std::vector<std::u16string> arguments);

}  // namespace dravenna
