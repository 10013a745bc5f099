#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <string>
#include <vector>

#include "support/BuiltProgram.h"
#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

/// The command line of an example: "first_steps", "package_inventory" or "device_log".
inline std::vector<std::string> ExampleCommand(const std::string& program, const std::vector<std::string>& arguments)
{
    return CommandLine(std::string(TKOSQLLITE_EXAMPLES) + "/" + program, arguments);
}

/// `command` in a process that cannot write files larger than `blocks` of 512 bytes. A write beyond that fails as on a
/// full disk.
inline std::vector<std::string> WithFileSizeLimit(int blocks, const std::vector<std::string>& command)
{
    std::vector<std::string> limited = {
        "sh", "-c", "trap '' XFSZ && ulimit -f " + std::to_string(blocks) + " && exec \"$0\" \"$@\""};
    limited.insert(limited.end(), command.begin(), command.end());
    return limited;
}

/// The output of the sqlite3 program for `sql`, errors included, without the line break at the end.
inline std::string AnswerOfSqlite3(const std::string& database, const std::string& sql)
{
    const ChildResult result = RunChild({"sqlite3", "-batch", "-noheader", database, sql});
    std::string answer = result.out + result.err;
    if (answer.ends_with('\n')) {
        answer.pop_back();
    }
    return answer;
}

inline void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

/// Matches a child that exited with `status`, wrote one line with `text` on standard error and nothing on standard
/// output.
MATCHER_P2(FailedWithOneLine, status, text,
           "exited with " + std::to_string(status) + " and one line with \"" + text + "\"")
{
    *result_listener << "which exited with " << arg.status << ", wrote \"" << arg.err << "\" and on standard output \""
                     << arg.out << "\"";
    return arg.status == status && arg.out.empty() && arg.err.ends_with('\n') &&
           std::ranges::count(arg.err, '\n') == 1 && arg.err.find(text) != std::string::npos;
}

/// Matches a child that exited with 0 and wrote nothing on standard error.
MATCHER(SucceededQuietly, "exited with 0 and wrote no error")
{
    *result_listener << "which exited with " << arg.status << " (signal " << arg.signal << ") and wrote \"" << arg.err
                     << "\"";
    return arg.status == 0 && arg.err.empty();
}

} // namespace Morvik::sql::tests
