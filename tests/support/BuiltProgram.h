#pragma once

#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The command line for a program of this build; a cross build runs it with the emulator, if there is one.
std::vector<std::string> CommandLine(const std::string& program, const std::vector<std::string>& arguments);

/// Whether the tests and the programs of this build run under an emulator.
bool RunsEmulated();

} // namespace Morvik::sql::tests
