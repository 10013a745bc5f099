#pragma once

#include <sql/DatabaseApi.h>

#include <string>

#include <gtest/gtest.h>

#include "support/HasError.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// Tests with a facade that is open on a new, separate database file.
class OpenFacade : public testing::Test {
protected:
    OpenFacade() { EXPECT_TRUE(database.OpenDatabase(path, false)) << database.GetLastErrorMsg(); }

    /// The rows of a query, read with raw SQLite.
    std::vector<std::vector<std::string>> RawRows(const std::string& sql) const { return RawSqlite(path).Rows(sql); }

    /// The error of raw SQLite for a text that it must reject.
    RawFailure RawRejection(const std::string& sql) const
    {
        const RawFailure failure = FailureOfExec(RawSqlite(path).Handle(), sql);
        EXPECT_NE(failure.code, 0) << sql;
        return failure;
    }

    /// Makes an operation fail with code 112 and "Missing command.".
    void FailWithMissingCommand()
    {
        EXPECT_FALSE(database.Execute(""));
        EXPECT_THAT(database, HasError(112, "Missing command."));
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    DatabaseApi database;
};

} // namespace Morvik::sql::tests
