#include "support/FacadeInputs.h"

#include <climits>
#include <cmath>
#include <limits>

namespace Morvik::sql::tests {

namespace {

template <typename Value, typename... Values>
Value OneOf(FuzzInput& choices, Values... values)
{
    return choices.Of(std::vector<Value>{values...});
}

DbTableColumnValue ChosenCell(FuzzInput& choices)
{
    const std::size_t tag = choices.Below(12);
    DbTableColumnValue cell;
    // The time functions are left out, because the two databases would compute them at different times.
    cell.type = static_cast<DbTableColumnType>(tag < 6 || tag > 9 ? static_cast<int>(tag) : static_cast<int>(tag) - 5);
    cell.column = static_cast<std::uint32_t>(choices.Below(3));
    const auto bytes = OneOf<std::string>(choices, "", "AB", "\x01\xff", "x");
    // Sometimes the value is not the tag's alternative.
    switch (choices.OneIn(12) ? choices.Below(5) : static_cast<std::size_t>(cell.type)) {
    case 2:
        cell.value = OneOf<double>(choices, 0.0, -0.0, 0.1, 1234567.0, 1e-300, 3.14159265, 1e300,
                                   std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN());
        break;
    case 3:
        cell.value =
            OneOf<std::string>(choices, "", "Ann", "O'Brien", "say \"hi\"", "x", "caf\xc3\xa9", "\xff\xfe", "a;b");
        break;
    case 4:
        cell.value = std::vector<char>(bytes.begin(), bytes.end());
        break;
    default:
        cell.value = OneOf<int>(choices, 0, 1, 2, 3, -7, 42, INT_MAX, INT_MIN);
        break;
    }
    return cell;
}

} // namespace

std::string ChosenTable(FuzzInput& choices)
{
    return OneOf<std::string>(choices, "a", "a", "a", "b", "b", "B", "c", "log", "order", "two words", "\"two words\"",
                              "it's", "", "absent", "sqlite_master");
}

std::string ChosenCommand(FuzzInput& choices)
{
    static const std::vector<std::string> Commands{
        "BEGIN",
        "COMMIT",
        "ROLLBACK",
        "SAVEPOINT s",
        "",
        "-- nothing",
        "nonsense",
        "SELECT 1; SELECT 2",
        "CREATE TABLE a (x INTEGER PRIMARY KEY, y, z)",
        "CREATE TABLE b (x UNIQUE, y CHECK (y <> 3), z NOT NULL)",
        "CREATE TABLE c AS SELECT 1 AS x, 'text' AS y, NULL AS z",
        "CREATE TABLE \"two words\" (x, y, z)",
        "CREATE VIEW log AS SELECT x FROM a",
        "CREATE TRIGGER guard BEFORE DELETE ON b BEGIN SELECT RAISE(ABORT, 'kept'); END",
        "INSERT INTO a VALUES (NULL, 'it''s', 2.5); INSERT INTO a VALUES (1, 2)",
        "INSERT INTO b VALUES (1, 2, x'00ff')",
        "INSERT INTO a (y) VALUES (4294967296)",
        "DELETE FROM a",
        "DELETE FROM b",
        "UPDATE b SET x = 1",
        "DROP TABLE a",
        "PRAGMA user_version = 7",
    };
    return choices.Of(Commands);
}

std::string ChosenQuery(FuzzInput& choices)
{
    static const std::vector<std::string> Queries{
        "SELECT * FROM a",
        "SELECT * FROM b ORDER BY x",
        "SELECT * FROM \"two words\"",
        "SELECT 1 UNION ALL SELECT 2",
        "SELECT NULL, 1.5, 'text', x'00ff00', 9223372036854775807, 'a' || char(0) || 'b', '', x''",
        "WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM n LIMIT 5) SELECT x, "
        "CASE WHEN x = 4 THEN abs(-9223372036854775807 - 1) ELSE x END FROM n",
        "SELECT abs(-9223372036854775807 - 1)",
        "SELECT name, type FROM sqlite_master",
        "INSERT INTO a (y) VALUES ('by a query')",
        "-- nothing",
        "",
        "nonsense",
        "SELECT * FROM absent",
    };
    return choices.Of(Queries);
}

std::string ChosenCondition(FuzzInput& choices)
{
    return OneOf<std::string>(choices, "", "", "WHERE x = 1", "WHERE 0", "WHERE x > 1 AND y IS NOT NULL", "nonsense",
                              "UNION SELECT 'text' ORDER BY 1 DESC", "GROUP BY x", "LIMIT 0");
}

DbTableDataWrite ChosenData(FuzzInput& choices)
{
    static const std::vector<std::vector<std::string>> ColumnLists{
        {"x", "y", "z"},     {"x", "y", "z"}, {"x", "y", "z"}, {},       {"y"},
        {"", "x", "y", "z"}, {"x", "", "z"},  {"x", ""},       {"", ""}, {"order"}};
    DbTableDataWrite data;
    data.columns = choices.Of(ColumnLists);
    const std::size_t rows = choices.Below(4);
    for (std::size_t row = 0; row < rows; ++row) {
        DbTableRowValues& values = data.rows.emplace_back();
        const std::size_t cells =
            choices.OneIn(10) ? choices.Below(4) : (data.columns.empty() ? 3 : data.columns.size());
        for (std::size_t cell = 0; cell < cells; ++cell) {
            values.cells.push_back(ChosenCell(choices));
        }
    }
    return data;
}

DbTableDefinition ChosenDefinition(FuzzInput& choices)
{
    static const std::vector<std::string> ColumnNames{"x", "y", "z", "x", "y", "z", "order", ""};
    static const std::vector<std::vector<char>> Keys{{}, {}, {}, {'x'}, {'x', 'y'}};
    DbTableDefinition definition;
    definition.name = ChosenTable(choices);
    const std::size_t columns = choices.Below(4);
    for (std::size_t column = 0; column < columns; ++column) {
        DbTableColumnDefinition& added = definition.columns.emplace_back();
        added.name = choices.OneIn(6) ? choices.Of(ColumnNames) : ColumnNames[column];
        added.type = static_cast<DbTableColumnType>(static_cast<int>(choices.Below(12)) - 1);
        added.constraintFlags = choices.OneIn(2) ? 0 : static_cast<std::uint32_t>(choices.Below(40));
        added.constraintArguments[Check] = choices.OneIn(3) ? "" : "(" + added.name + " <> 3)";
        added.constraintArguments[Default] = choices.OneIn(3) ? "" : "7";
    }
    definition.constraints.primaryKey = choices.Of(Keys);
    definition.constraints.unique = choices.Of(Keys);
    if (choices.OneIn(6)) {
        definition.constraints.foreignKey = {"x"};
        definition.constraints.referenceTable = choices.OneIn(2) ? "" : "b";
    }
    return definition;
}

} // namespace Morvik::sql::tests
