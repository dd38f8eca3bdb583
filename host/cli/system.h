// What the program asks the operating system about itself.
#pragma once
#include <filesystem>

namespace cli {

// The folder of the running program; empty when the system does not tell.
std::filesystem::path programFolder();
bool standardErrorIsTerminal();

} // namespace cli
