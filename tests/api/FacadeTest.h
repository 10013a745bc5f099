#pragma once

#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "support/Cells.h"
#include "support/HasError.h"
#include "support/OpenFacade.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

/// Matches an object with the error of raw SQLite.
inline auto HasErrorOf(const RawFailure& failure)
{
    return HasError(failure.code, failure.message);
}

/// Tests with a facade on a file with the tables t, which has three rows, and other, which has two.
class FacadeTest : public OpenFacade {
protected:
    static constexpr int NotWritten = -77;

    FacadeTest()
    {
        RawSqlite(path).Execute("CREATE TABLE t (a, b); INSERT INTO t VALUES (1, 'one'), (2, 'two'), (3, 'three');"
                                "CREATE TABLE other (a); INSERT INTO other VALUES (1), (2)");
    }

    /// The error of raw SQLite for a query that it must reject.
    RawFailure RejectedQuery(const std::string& sql) const
    {
        const RawFailure failure = FailureOfPrepare(RawSqlite(path).Handle(), sql);
        EXPECT_NE(failure.code, 0) << sql;
        return failure;
    }

    /// Matches the result of an operation of the facade that left this error.
    auto Returned(bool success, int code, const std::string& message) const
    {
        const auto facade = [this](bool) -> const DatabaseApi& { return database; };
        return testing::AllOf(success, testing::ResultOf(facade, HasError(code, message)));
    }

    auto FailedWith(int code, const std::string& message) const { return Returned(false, code, message); }
    auto FailedWith(const RawFailure& failure) const { return FailedWith(failure.code, failure.message); }
    auto Succeeded() const { return Returned(true, 0, ""); }

    /// Begins a walk over the numbers 1, 2 and 3, and fetches the first row. Returns the facade's current row.
    const DbTableRowValues& BeginWalk()
    {
        EXPECT_TRUE(database.SqlQueryBegin("SELECT a FROM t"));
        return *database.begin();
    }

    /// The cells of the next row of the walk.
    std::vector<std::string> NextRow()
    {
        return database.ReadNextRow(row) ? CellTexts(row) : std::vector<std::string>{"no row"};
    }

    void ExpectEndOfRows() { EXPECT_THAT(database.ReadNextRow(row), FailedWith(0, "")); }
    void ExpectNoWalk() { EXPECT_THAT(database.ReadNextRow(row), FailedWith(111, "Table isn't open.")); }

    int result = NotWritten;
    DbTableData data;
    DbTableRowValues row;
};

} // namespace Morvik::sql::tests
