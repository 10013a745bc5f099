#pragma once

#include <gtest/gtest.h>

#include <string>

#include "support/HasError.h"
#include "support/OpenFacade.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

/// Tests that count the rows of a table t with the values 1, 2 and 3 in its column a.
class CountedTable : public OpenFacade {
protected:
    static constexpr int NotWritten = -77;

    CountedTable() { RawSqlite(path).Execute("CREATE TABLE t (a); INSERT INTO t VALUES (1), (2), (3)"); }

    int Count(const std::string& table, const std::string& condition)
    {
        result = NotWritten;
        return database.ExistData(table, condition, result);
    }

    /// Begins a query of three rows and fetches the first row.
    void BeginWalk()
    {
        ASSERT_TRUE(database.SqlQueryBegin("SELECT a FROM t ORDER BY a"));
        ASSERT_TRUE(database.ReadNextRow(row));
    }

    void ExpectNoWalk()
    {
        EXPECT_FALSE(database.ReadNextRow(row));
        EXPECT_THAT(database, HasError(111, "Table isn't open."));
    }

    /// A condition with which the count itself returns no row, so that a row appended with UNION becomes the first.
    const std::string noCount = "WHERE 0 GROUP BY a";

    int result = NotWritten;
    DbTableRowValues row;
};

} // namespace Morvik::sql::tests
