#pragma once

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "model/SqlBuffer.h"
#include "model/ValueLiteral.h"

namespace Morvik::sql::tests {

/// The text that the cell's literal adds to a statement, or nothing when the cell has none. Fails the test if the
/// statement's earlier text changes, or if a cell without a literal appends something.
inline std::optional<std::string> LiteralOf(const DbTableColumnValue& cell)
{
    const std::string earlier = "VALUES ('\"";
    SqlBuffer statement(0);
    statement.Append(earlier);
    const bool written = ColumnValueAsString(cell, statement);
    const std::string sql = statement.Text();
    if (!written) {
        EXPECT_EQ(sql, earlier) << "a cell without a literal leaves the statement as it is";
        return std::nullopt;
    }
    EXPECT_EQ(sql.substr(0, earlier.size()), earlier);
    EXPECT_GT(sql.size(), earlier.size()) << "an empty text is no literal";
    return sql.substr(earlier.size());
}

} // namespace Morvik::sql::tests
