#include "support/BuiltProgram.h"

#include <sstream>
#include <string_view>

namespace Morvik::sql::tests {

std::vector<std::string> CommandLine(const std::string& program, const std::vector<std::string>& arguments)
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

bool RunsEmulated()
{
    return !std::string_view(TKOSQLLITE_EMULATOR).empty();
}

} // namespace Morvik::sql::tests
