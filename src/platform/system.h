#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/process.h"
#include "platform/registry_calls.h"
#include "platform/text_files.h"
#include "text/code_page.h"

// The implementations of this system; one source folder for each system.
namespace dravenna {

// What DRAVENNA_CODEPAGE holds; empty when it is not set.
std::string codePageWish();

// The code page that DRAVENNA_CODEPAGE names ("1252", "cp874", "utf-8"), else the system's.
CodePagePtr systemCodePage();

// A code page by its name or number; null for one that is not supported.
CodePagePtr codePageByName(std::string_view name);

// Text files in the given code page.
std::unique_ptr<TextFiles> makeTextFiles(CodePagePtr codePage);

// Whole files as bytes, for what is not in the code page. Throw Failure.
std::string readBytes(std::u16string_view path);
void replaceBytes(std::u16string_view path, std::string_view bytes);

std::unique_ptr<RegistryCalls> makeRegistry();

// `arguments` are those behind the program's name.
std::unique_ptr<Process> makeProcess(std::vector<std::u16string> arguments);

}  // namespace dravenna
