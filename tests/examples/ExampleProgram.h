#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

/// The command line of the built example `program` ("first_steps", "package_inventory", "device_log"), run by the
/// emulator of a cross build where there is one.
std::vector<std::string> ExampleCommand(const std::string& program, const std::vector<std::string>& arguments);

/// What the sqlite3 program answers on the database file, without the line break at the end. A failure of it is part of
/// the answer.
std::string AnswerOfSqlite3(const std::string& database, const std::string& sql);

/// Matches a child that exited with `status` after exactly one line on standard error, "program: " and then something
/// that contains `text`, and nothing on standard output.
MATCHER_P3(FailedWithOneLine, status, program, text,
           "exited with " + std::to_string(status) + " and one line \"" + program + ": ..." + text + "...\"")
{
    *result_listener << "which exited with " << arg.status << ", wrote \"" << arg.err << "\" and on standard output \""
                     << arg.out << "\"";
    return arg.status == status && arg.out.empty() && arg.err.starts_with(std::string(program) + ": ") &&
           arg.err.ends_with('\n') && std::ranges::count(arg.err, '\n') == 1 && arg.err.find(text) != std::string::npos;
}

/// Matches a child that exited with 0 and wrote nothing on standard error.
MATCHER(SucceededQuietly, "exited with 0 and wrote no error")
{
    *result_listener << "which exited with " << arg.status << " (signal " << arg.signal << ") and wrote \"" << arg.err
                     << "\"";
    return arg.status == 0 && arg.err.empty();
}

} // namespace Morvik::sql::tests
