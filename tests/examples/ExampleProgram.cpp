#include "examples/ExampleProgram.h"

#include <sstream>

namespace Morvik::sql::tests {

std::vector<std::string> ExampleCommand(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<std::string> command;
    std::istringstream emulator(TKOSQLLITE_EMULATOR);
    for (std::string word; std::getline(emulator, word, '|');) {
        command.push_back(word);
    }
    command.push_back(std::string(TKOSQLLITE_EXAMPLES) + "/" + program);
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

std::string AnswerOfSqlite3(const std::string& database, const std::string& sql)
{
    const ChildResult result = RunChild({"sqlite3", "-batch", "-noheader", database, sql});
    std::string answer = result.out + result.err;
    if (answer.ends_with('\n')) {
        answer.pop_back();
    }
    return answer;
}

} // namespace Morvik::sql::tests
