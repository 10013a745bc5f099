#pragma once

#include <algorithm>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "support/BuiltProgram.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

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

inline void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

/// Tests of an example program with a database in a directory that does not exist before the first run.
class ExampleTest : public testing::Test {
protected:
    explicit ExampleTest(const std::string& name) : program(std::string(TKOSQLLITE_EXAMPLES) + "/" + name) {}

    /// The command line of the program for the database.
    std::vector<std::string> Command(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin(), database);
        return CommandLine(program, arguments);
    }

    ChildResult Run(const std::vector<std::string>& arguments) const { return RunChild(Command(arguments)); }

    /// Checks that the program rejects these arguments, and a call without arguments, and prints its usage.
    void ExpectUsage(const std::string& usage, const std::vector<std::string>& arguments) const
    {
        EXPECT_THAT(RunChild(CommandLine(program, {})), FailedWithOneLine(2, usage));
        EXPECT_THAT(RunChild(CommandLine(program, {"--help"})), FailedWithOneLine(2, usage));
        EXPECT_THAT(Run(arguments), FailedWithOneLine(2, usage));
    }

    /// Runs the program in a process that cannot write files larger than `blocks` of 512 bytes. A write beyond that
    /// fails as on a full disk.
    ChildResult RunOnAFullDisk(int blocks, const std::vector<std::string>& arguments) const
    {
        std::vector<std::string> limited{
            "sh", "-c", "trap '' XFSZ && ulimit -f " + std::to_string(blocks) + " && exec \"$0\" \"$@\""};
        std::ranges::copy(Command(arguments), std::back_inserter(limited));
        return RunChild(limited);
    }

    /// The output of the sqlite3 program for `sql`, errors included, without the line break at the end.
    std::string Answer(const std::string& sql) const
    {
        const ChildResult result = RunChild({"sqlite3", "-batch", "-noheader", database, sql});
        std::string answer = result.out + result.err;
        if (answer.ends_with('\n')) {
            answer.pop_back();
        }
        return answer;
    }

    const std::string program;
    const TemporaryDirectory directory;
    std::string database = directory.File("missing directories/example.db");
};

} // namespace Morvik::sql::tests
