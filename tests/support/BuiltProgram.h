#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

namespace Morvik::sql::tests {

/// The command line for a program of this build; a cross build runs it with the emulator, if there is one.
inline std::vector<std::string> CommandLine(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command;
    std::istringstream emulator(TKOSQLLITE_EMULATOR);
    for (std::string word; std::getline(emulator, word, '|');) {
        command.push_back(word);
    }
    command.push_back(program);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

/// Whether the tests and the programs of this build run under an emulator.
inline bool RunsEmulated()
{
    return !std::string_view(TKOSQLLITE_EMULATOR).empty();
}

} // namespace Morvik::sql::tests
