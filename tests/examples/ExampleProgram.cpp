#include "examples/ExampleProgram.h"

#include "support/BuiltProgram.h"

namespace Morvik::sql::tests {

std::vector<std::string> ExampleCommand(const std::string& program, const std::vector<std::string>& arguments)
{
    return CommandLine(std::string(TKOSQLLITE_EXAMPLES) + "/" + program, arguments);
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
