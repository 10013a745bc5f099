#include "faults/files/Transcript.h"

#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <sqlite3.h>

#include <algorithm>
#include <cstddef>
#include <sstream>
#include <string_view>

#include "support/ChildProcess.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

namespace {

std::string_view Bytes(const void* data, std::size_t size)
{
    return {static_cast<const char*>(data), data != nullptr ? size : 0};
}

/// The current row of a statement, read in every way.
template <typename Command>
std::string CommandRow(const Command& command)
{
    std::ostringstream row;
    for (int column = 0; column < command.ColumnCount(); ++column) {
        const auto blob = command.ColumnBlob(column);
        row << command.ColumnIsNull(column) << ' ' << command.ColumnInt(column) << ' ' << command.ColumnInt64(column)
            << ' ' << command.ColumnDouble(column) << ' ' << Bytes(blob.data(), blob.size()) << ' '
            << command.ColumnText(column) << '|';
    }
    return row.str();
}

/// The current row of a cursor, read in every way. A text is read only if there is one.
template <typename Table>
std::string TableRow(const Table& table)
{
    std::ostringstream row;
    for (int column = 0; column < table.Columns(); ++column) {
        auto value = table[column];
        const int length = table.GetLength(column);
        row << value.GetValueType() << ' ' << length << ' '
            << Bytes(table.GetBlob(column), static_cast<std::size_t>(length)) << ' ' << table.GetInteger(column) << ' '
            << table.GetInt64(column) << ' ' << value.template GetValue<double>() << ' '
            << (value.GetValueType() != SQLITE_NULL ? table.GetText(column) : "") << '|';
    }
    return row.str();
}

/// Runs the operations of the access layer.
template <typename Database, typename Command, typename Table>
Transcript AccessTranscript(const std::string& path)
{
    Transcript transcript;
    const auto note = [&](const char* operation, const auto& object, bool succeeded) {
        transcript.push_back({operation, succeeded, object.GetLastError(), object.GetLastErrorMsg()});
        return succeeded;
    };
    Database database;
    if (!note("Open", database, database.Open(path, true))) {
        return transcript;
    }
    Command command(database);
    note("Execute", command, command.Execute("SELECT max(label) FROM reading; SELECT count(*) FROM note"));
    if (note("Prepare", command, command.Prepare("SELECT rowid, * FROM reading WHERE number > ?"))) {
        note("Bind", command, command.BindInteger(1, 20));
        while (note("Step", command, command.Step()) && command.HasRowData()) {
            transcript.back().results.push_back(CommandRow(command));
        }
        note("Finalize", command, command.Finalize());
    }
    Table table(database);
    if (note("OpenTable", table, table.Open("SELECT * FROM note"))) {
        while (note("ReadNext", table, table.ReadNext())) {
            transcript.back().results.push_back(TableRow(table));
        }
        note("CloseTable", table, table.Close());
    }
    return transcript;
}

/// Runs the operations of the facade.
template <typename Facade>
Transcript FacadeTranscript(const std::string& path, bool readOnly)
{
    const DbTableDataWrite rows{{"label", "value"},
                                {{{TextCell(std::string(700, 'n')), RealCell(0.5)}}, {{TextCell("new"), RealCell(1)}}}};
    FacadeDriver<Facade> side;
    return {
        side.Open(path, readOnly),
        // None of these files must survive a power failure, and a device has no directory for a journal.
        side.Execute("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY"),
        side.Exists("reading"),
        side.Exists("absent"),
        side.Read("SELECT * FROM sqlite_master"),
        side.ReadTable("reading"),
        side.ReadTable("note"),
        side.Read("SELECT label, number FROM reading INDEXED BY by_label WHERE label > 'label 5'"),
        side.Walk("SELECT number, bytes, value FROM note ORDER BY number DESC"),
        side.Count("reading", "WHERE value > 2"),
        side.RunPrepared("SELECT label FROM note WHERE number = ?", "2"),
        side.Read("PRAGMA integrity_check"),
        side.Write("reading", rows),
        side.Update("note", rows, "WHERE number > 3"),
        side.Execute("DELETE FROM reading WHERE number % 3 = 0; UPDATE reading SET bytes = label"),
        side.Create({"extra", {{"number", DbTableColumnType::Integer, 0, Unique}}, {}}),
        side.Alter("note", "memo"),
        side.Drop("reading"),
        side.ReadTable("memo"),
        side.Read("PRAGMA integrity_check"),
        side.CloseAll(),
    };
}

template <typename Database, typename Command, typename Table, typename Facade>
Transcript Everything(const std::string& path, bool readOnly)
{
    Transcript transcript = AccessTranscript<Database, Command, Table>(path);
    std::ranges::move(FacadeTranscript<Facade>(path, readOnly), std::back_inserter(transcript));
    return transcript;
}

} // namespace

std::string SampleDatabase(std::size_t page)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("sample.db");
    RawSqlite sqlite(path);
    const auto insert = [&](const std::string& table, int rows, std::size_t labelSize) {
        const std::string size = "(" + std::to_string(labelSize) + " + i)";
        sqlite.Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT " + std::to_string(rows) +
                       ") INSERT INTO " + table + " SELECT i, substr('label ' || (i * 7919 % 1000) || replace(hex(" +
                       "zeroblob(" + size + ")), '00', char(97 + i % 26)), 1, " + size + "), i / 8.0, NULL FROM n");
    };
    sqlite.Execute("PRAGMA synchronous = OFF; PRAGMA page_size = " + std::to_string(page));
    for (const char* const table : {"reading", "note", "scrap"}) {
        sqlite.Execute(std::string("CREATE TABLE ") + table +
                       " (number INTEGER PRIMARY KEY, label TEXT NOT NULL, value REAL, bytes BLOB)");
    }
    sqlite.Execute("CREATE INDEX by_label ON reading (label)");
    insert("scrap", 6, 2 * page);
    insert("reading", 60, page / 32);
    insert("note", 6, page);
    sqlite.Execute("UPDATE reading SET bytes = CAST(label || label || label AS BLOB) WHERE number = 3;"
                   "UPDATE note SET bytes = CAST(label || label AS BLOB) WHERE number = 2;"
                   "DELETE FROM scrap; DROP TABLE scrap");
    return FileContent(path);
}

Transcript LibraryTranscript(const std::string& path, bool readOnly)
{
    return Everything<SqlDatabase, SqlCommand, SqlTable, DatabaseApi>(path, readOnly);
}

Transcript ReferenceTranscript(const std::string& path, bool readOnly)
{
    return Everything<ReferenceDatabase, ReferenceCommand, ReferenceTable, ReferenceFacade>(path, readOnly);
}

std::string Difference(const Transcript& actual, const Transcript& expected)
{
    const auto [first, other] = std::ranges::mismatch(actual, expected);
    const StepOutcome end{"the end"};
    return Difference(first != actual.end() ? *first : end, other != expected.end() ? *other : end);
}

} // namespace Morvik::sql::tests
