#pragma once

#include <filesystem>
#include <string>
#include <string_view>

// The surroundings of a command line tool: its streams as bytes, its terminal, the signals that end it.
namespace dravenna {

std::string readStandardInput();                   // throws Failure
bool writeStandardOutput(std::string_view bytes);  // false when the reader is gone; throws Failure at all else
void writeStandardError(std::string_view bytes);   // never fails
bool errorIsTerminal();
int errorColumns();  // width of the terminal behind standard error

// From now on the keys and signals that end the process only set a flag, for an orderly end.
void catchInterrupts();
bool interrupted();
// Ends the process the way the signal would have, if there was one.
void endIfInterrupted();

// The running program; empty when the system does not tell.
std::filesystem::path executableFile();

}  // namespace dravenna
