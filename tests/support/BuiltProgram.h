#pragma once

#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// The command line for a program of this build, run by the emulator of a cross build where there is one.
std::vector<std::string> CommandLine(const std::string& program, const std::vector<std::string>& arguments);

/// Whether the programs of this build run under an emulator, and so do the tests.
bool RunsEmulated();

} // namespace Morvik::sql::tests
