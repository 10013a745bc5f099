#include "contenders/PlainC.h"

#include "contenders/Library.h"
#include "support/Require.h"

#include <sqlite3.h>
#include <sys/stat.h>

#include <cstddef>

namespace Morvik::sql::bench {

namespace {

void Check(int code, int expected, sqlite3* handle, const char* what)
{
    if (code != expected) {
        Require(false, what, sqlite3_errmsg(handle));
    }
}

sqlite3* Opened(const std::string& path)
{
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
    Check(code, SQLITE_OK, handle, "open");
    return handle;
}

sqlite3_stmt* Prepared(sqlite3* handle, const char* sql, std::size_t size)
{
    sqlite3_stmt* statement = nullptr;
    Check(sqlite3_prepare_v2(handle, sql, static_cast<int>(size), &statement, nullptr), SQLITE_OK, handle, sql);
    return statement;
}

const char* Text(sqlite3_stmt* statement, int column)
{
    return reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
}

const char* Blob(sqlite3_stmt* statement, int column)
{
    return static_cast<const char*>(sqlite3_column_blob(statement, column));
}

std::size_t Size(sqlite3_stmt* statement, int column)
{
    return static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
}

void ReadCell(sqlite3_stmt* statement, int column, DbTableColumnValue& cell)
{
    cell.column = static_cast<unsigned int>(column);
    switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
        cell.type = DbTableColumnType::Integer;
        cell.value = sqlite3_column_int(statement, column);
        break;
    case SQLITE_FLOAT:
        cell.type = DbTableColumnType::Real;
        cell.value = sqlite3_column_double(statement, column);
        break;
    case SQLITE_TEXT: {
        const char* const text = Text(statement, column);
        cell.type = DbTableColumnType::Text;
        cell.value.emplace<std::string>(text, Size(statement, column));
        break;
    }
    case SQLITE_BLOB: {
        const char* const blob = Blob(statement, column);
        cell.type = DbTableColumnType::Blob;
        cell.value.emplace<std::vector<char>>(blob, blob + Size(statement, column));
        break;
    }
    default:
        cell.value.emplace<std::string>();
        break;
    }
}

} // namespace

Totals PlainC::SumOf(const Rows& rows)
{
    return Library::SumOf(rows);
}

void PlainC::OpenAndClose(const std::string& path)
{
    sqlite3* const handle = Opened(path);
    Check(sqlite3_close(handle), SQLITE_OK, handle, "close");
}

void PlainC::RequireFile(const std::string& path)
{
    struct stat status {};
    Require(stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode), "file", path.c_str());
}

void PlainC::OpenAndCloseFile(const std::string& path)
{
    RequireFile(path);
    OpenAndClose(path);
}

PlainC::PlainC(const std::string& path) : m_handle(Opened(path)) {}

PlainC::~PlainC()
{
    Check(sqlite3_close(m_handle), SQLITE_OK, m_handle, "close");
}

void PlainC::Execute(const std::string& sql)
{
    Check(sqlite3_exec(m_handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK, m_handle, "execute");
}

void PlainC::InsertEach(const std::vector<Write>& writes)
{
    for (const Write& write : writes) {
        Execute(write);
    }
}

void PlainC::UpdateEach(const std::vector<Change>& changes)
{
    for (const Change& change : changes) {
        Execute(change);
    }
}

void PlainC::Read(const std::string& sql, Rows& rows)
{
    sqlite3_stmt* const statement = Prepared(m_handle, sql.data(), sql.size());
    const int columns = sqlite3_column_count(statement);
    int code = SQLITE_OK;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        std::vector<DbTableColumnValue>& cells = rows.rows.emplace_back().cells;
        cells.reserve(static_cast<std::size_t>(columns));
        for (int column = 0; column < columns; ++column) {
            ReadCell(statement, column, cells.emplace_back());
        }
    }
    Check(code, SQLITE_DONE, m_handle, "step");
    sqlite3_finalize(statement);
}

Totals PlainC::LookUp(const std::vector<Query>& queries)
{
    Totals totals;
    for (const Query& query : queries) {
        Rows rows;
        Read(query, rows);
        totals += SumOf(rows);
    }
    return totals;
}

Totals PlainC::Walk(const std::string& sql)
{
    Totals totals;
    sqlite3_stmt* const statement = Prepared(m_handle, sql.data(), sql.size());
    int code = SQLITE_OK;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        const int number = sqlite3_column_int(statement, 0);
        const double measure = sqlite3_column_double(statement, 1);
        const char* const label = Text(statement, 2);
        const std::size_t labelSize = Size(statement, 2);
        const char* const bytes = Blob(statement, 3);
        totals.Add(number, measure, label, labelSize, bytes, Size(statement, 3));
    }
    Check(code, SQLITE_DONE, m_handle, "step");
    sqlite3_finalize(statement);
    return totals;
}

void PlainC::InsertBound(const std::vector<SampleRow>& rows)
{
    static constexpr std::string_view Insert = "INSERT INTO sample VALUES (?,?,?,?)";
    sqlite3_stmt* const statement = Prepared(m_handle, Insert.data(), Insert.size());
    for (const SampleRow& row : rows) {
        const bool done = sqlite3_bind_int(statement, 1, row.number) == SQLITE_OK &&
                          sqlite3_bind_double(statement, 2, row.measure) == SQLITE_OK &&
                          sqlite3_bind_text(statement, 3, row.label.data(), static_cast<int>(row.label.size()),
                                            SQLITE_TRANSIENT) == SQLITE_OK &&
                          sqlite3_bind_blob(statement, 4, row.bytes.data(), static_cast<int>(row.bytes.size()),
                                            SQLITE_TRANSIENT) == SQLITE_OK &&
                          sqlite3_step(statement) == SQLITE_DONE && sqlite3_reset(statement) == SQLITE_OK;
        Check(done ? SQLITE_OK : SQLITE_ERROR, SQLITE_OK, m_handle, "bound insert");
    }
    sqlite3_finalize(statement);
}

Totals PlainC::ReadColumns(int times)
{
    Totals totals;
    sqlite3_stmt* const statement = Prepared(m_handle, SelectAll, std::string_view(SelectAll).size());
    Check(sqlite3_step(statement), SQLITE_ROW, m_handle, "step");
    for (int i = 0; i < times; ++i) {
        const std::size_t labelSize = Size(statement, 2);
        const std::string label(Text(statement, 2), labelSize);
        const std::size_t blobSize = Size(statement, 3);
        const char* const bytes = Blob(statement, 3);
        totals.Add(sqlite3_column_int(statement, 0), sqlite3_column_double(statement, 1), label.data(), label.size(),
                   bytes, blobSize);
    }
    sqlite3_finalize(statement);
    return totals;
}

} // namespace Morvik::sql::bench
