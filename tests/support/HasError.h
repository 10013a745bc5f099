#pragma once

#include <string>

#include <gmock/gmock.h>

namespace Morvik::sql::tests {

/// Matches the error of a connection, statement, cursor, value or facade: code and message together.
///
///     EXPECT_THAT(database, HasError(112, "Missing command."));
MATCHER_P2(HasError, code, message, "has code " + std::to_string(code) + " and message \"" + message + "\"")
{
    *result_listener << "which has code " << arg.GetLastError() << " and message \"" << arg.GetLastErrorMsg() << "\"";
    return arg.GetLastError() == code && arg.GetLastErrorMsg() == message;
}

} // namespace Morvik::sql::tests
