#include "support/FacadeOperations.h"

#include <climits>
#include <fstream>
#include <limits>

#include "support/DatabaseContent.h"
#include "support/NumberLocales.h"

namespace Morvik::sql::tests {

namespace {

// The arguments of the operations, including unusual ones.

DbTableColumnValue ChosenCell(FuzzInput& choices)
{
    const std::size_t tag = choices.Below(12);
    DbTableColumnValue cell;
    // The time functions are left out, because the two databases would compute them at different times.
    cell.type = static_cast<DbTableColumnType>(tag < 6 || tag > 9 ? static_cast<int>(tag) : static_cast<int>(tag) - 5);
    cell.column = static_cast<std::uint32_t>(choices.Below(3));
    const auto bytes = choices.Of<std::string>({"", "AB", "\x01\xff", "x"});
    // Sometimes the value is not the tag's alternative.
    switch (choices.OneIn(12) ? choices.Below(5) : static_cast<std::size_t>(cell.type)) {
    case 2:
        cell.value =
            choices.Of<double>({0.0, -0.0, 0.1, 1234567.0, 1e-300, 3.14159265, 1e300,
                                std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()});
        break;
    case 3:
        cell.value =
            choices.Of<std::string>({"", "Ann", "O'Brien", "say \"hi\"", "x", "caf\xc3\xa9", "\xff\xfe", "a;b"});
        break;
    case 4:
        cell.value = std::vector<char>(bytes.begin(), bytes.end());
        break;
    default:
        cell.value = choices.Of<int>({0, 1, 2, 3, -7, 42, INT_MAX, INT_MIN});
        break;
    }
    return cell;
}

std::string ChosenTable(FuzzInput& choices)
{
    return choices.Of<std::string>({"a", "a", "a", "b", "b", "B", "c", "log", "order", "two words", "\"two words\"",
                                    "it's", "", "absent", "sqlite_master"});
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
    return choices.Of<std::string>({"", "", "WHERE x = 1", "WHERE 0", "WHERE x > 1 AND y IS NOT NULL", "nonsense",
                                    "UNION SELECT 'text' ORDER BY 1 DESC", "GROUP BY x", "LIMIT 0"});
}

DbTableDataWrite ChosenData(FuzzInput& choices)
{
    static const std::vector<std::vector<std::string>> ColumnLists{
        {"x", "y", "z"},     {"x", "y", "z"}, {"x", "y", "z"}, {},       {"y"},
        {"", "x", "y", "z"}, {"x", "", "z"},  {"x", ""},       {"", ""}, {"order"}};
    DbTableDataWrite data;
    data.columns = choices.Of(ColumnLists);
    const std::size_t width = data.columns.empty() ? 3 : data.columns.size();
    for (std::size_t rows = choices.Below(4); rows > 0; --rows) {
        DbTableRowValues& values = data.rows.emplace_back();
        for (std::size_t cells = choices.OneIn(10) ? choices.Below(4) : width; cells > 0; --cells) {
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

} // namespace

FacadeOperations::FacadeOperations(const std::filesystem::path& directory, GlobalLocale locale)
    : m_locale(locale), m_libraryDirectory((directory / "library/").string()),
      m_referenceDirectory((directory / "reference/").string()), m_library(m_libraryDirectory),
      m_reference(m_referenceDirectory)
{
    for (const std::string& side : {m_libraryDirectory, m_referenceDirectory}) {
        std::filesystem::create_directories(side + "a-directory");
        std::ofstream(side + "no-database") << std::string(4096, 'x');
    }
}

template <typename Step>
std::string FacadeOperations::Compare(const Step& step)
{
    const StepOutcome actual = step(*m_library);
    return Difference(actual, step(*m_reference));
}

std::string FacadeOperations::RunOne(FuzzInput& choices)
{
    using Operation = std::string (FacadeOperations::*)(FuzzInput&);
    using Self = FacadeOperations;
    static const std::vector<Operation> operations{&Self::Open,  &Self::Manage, &Self::Manage, &Self::Manage,
                                                   &Self::Write, &Self::Write,  &Self::Write,  &Self::Read,
                                                   &Self::Read,  &Self::Walk,   &Self::Walk,   &Self::Walk};
    return (this->*choices.Of(operations))(choices);
}

std::string FacadeOperations::Open(FuzzInput& choices)
{
    if (choices.OneIn(4)) {
        return Compare([](auto& side) { return side.Close(); });
    }
    const auto path =
        choices.Of<std::string>({"main.db", "main.db", "new/directory/main.db", "no-database", "a-directory",
                                 "no-database/main.db", "no-database/in/x.db", ":memory:"});
    const bool readOnly = choices.OneIn(5);
    const std::string difference = Compare([&](auto& side) { return side.Open(path, readOnly); });
    // These files need not survive a power failure, and waiting for the disk would take most of the time.
    return !difference.empty() || !m_library->IsOpen()
               ? difference
               : Compare([](auto& side) { return side.Execute("PRAGMA synchronous = OFF"); });
}

std::string FacadeOperations::Manage(FuzzInput& choices)
{
    const std::string table = ChosenTable(choices);
    switch (choices.Below(6)) {
    case 0:
        return Compare([definition = ChosenDefinition(choices)](auto& side) { return side.Create(definition); });
    case 1:
        return Compare([&](auto& side) { return side.Exists(table); });
    case 2:
        return Compare([&](auto& side) { return side.Drop(table); });
    case 3:
        return Compare([&, newName = ChosenTable(choices)](auto& side) { return side.Alter(table, newName); });
    case 4:
        return Compare([&, condition = ChosenCondition(choices)](auto& side) { return side.Count(table, condition); });
    default:
        return Compare([sql = ChosenQuery(choices)](auto& side) { return side.Prepare(sql); });
    }
}

std::string FacadeOperations::Write(FuzzInput& choices)
{
    static const std::vector<NumberLocale> Locales = NumberLocales();
    const std::string table = ChosenTable(choices);
    const DbTableDataWrite data = ChosenData(choices);
    const std::size_t operation = choices.Below(3);
    const std::string sql = operation == 0 ? ChosenCommand(choices) : ChosenCondition(choices);
    std::optional<ScopedGlobalLocale> locale;
    if (m_locale == GlobalLocale::Chosen && choices.OneIn(6)) {
        locale.emplace(choices.Of(Locales).locale);
    }
    const ScopedRounding rounding(choices.OneIn(12) ? choices.Of(UnusualRoundings) : FE_TONEAREST);
    return Compare([&](auto& side) {
        switch (operation) {
        case 0:
            return side.Execute(sql);
        case 1:
            return side.Write(table, data);
        default:
            return side.Update(table, data, sql);
        }
    });
}

std::string FacadeOperations::Read(FuzzInput& choices)
{
    if (choices.OneIn(2)) {
        return Compare([table = ChosenTable(choices)](auto& side) { return side.ReadTable(table); });
    }
    return Compare([sql = ChosenQuery(choices)](auto& side) { return side.Read(sql); });
}

std::string FacadeOperations::Walk(FuzzInput& choices)
{
    switch (choices.Below(5)) {
    case 0:
        return Compare([sql = ChosenQuery(choices)](auto& side) { return side.Begin(sql); });
    case 1:
        return Compare([](auto& side) { return side.ReadNext(); });
    case 2:
        return Compare([](auto& side) { return side.FirstRow(); });
    case 3:
        return Compare([](auto& side) { return side.AdvanceIterator(); });
    default:
        return Compare([](auto& side) { return side.CloseTable(); });
    }
}

std::string FacadeOperations::CompareFiles()
{
    m_library.reset();
    m_reference.reset();
    for (const char* const name : {"main.db", "new/directory/main.db"}) {
        const DatabaseContent actual = ContentAndSchemaOf(m_libraryDirectory + name);
        const DatabaseContent expected = ContentAndSchemaOf(m_referenceDirectory + name);
        if (actual != expected) {
            return std::string(name) + " has\n" + Described(actual) + "in place of\n" + Described(expected);
        }
    }
    return {};
}

} // namespace Morvik::sql::tests
