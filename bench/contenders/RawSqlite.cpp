#include "contenders/RawSqlite.h"

#include <cstddef>
#include <ranges>
#include <string_view>

#include <sqlite3.h>

#include "support/Require.h"

namespace Morvik::sql::bench {

class CellByValue {
public:
    CellByValue(sqlite3_stmt* statement, int column) : m_value(sqlite3_column_value(statement, column)) {}

    int Type() const { return sqlite3_value_type(m_value); }
    int Integer() const { return sqlite3_value_int(m_value); }
    double Real() const { return sqlite3_value_double(m_value); }
    const char* Text() const { return reinterpret_cast<const char*>(sqlite3_value_text(m_value)); }
    const char* Blob() const { return static_cast<const char*>(sqlite3_value_blob(m_value)); }
    std::size_t Size() const { return static_cast<std::size_t>(sqlite3_value_bytes(m_value)); }

private:
    sqlite3_value* m_value;
};

class CellByColumn {
public:
    CellByColumn(sqlite3_stmt* statement, int column) : m_statement(statement), m_column(column) {}

    int Type() const { return sqlite3_column_type(m_statement, m_column); }
    int Integer() const { return sqlite3_column_int(m_statement, m_column); }
    double Real() const { return sqlite3_column_double(m_statement, m_column); }
    const char* Text() const { return reinterpret_cast<const char*>(sqlite3_column_text(m_statement, m_column)); }
    const char* Blob() const { return static_cast<const char*>(sqlite3_column_blob(m_statement, m_column)); }
    std::size_t Size() const { return static_cast<std::size_t>(sqlite3_column_bytes(m_statement, m_column)); }

private:
    sqlite3_stmt* m_statement;
    int m_column;
};

namespace {

void Check(int code, int expected, sqlite3* handle, const char* what)
{
    if (code != expected) {
        Require(false, what, sqlite3_errmsg(handle));
    }
}

sqlite3_stmt* Prepared(sqlite3* handle, std::string_view sql)
{
    sqlite3_stmt* statement = nullptr;
    Check(sqlite3_prepare_v2(handle, sql.data(), static_cast<int>(sql.size()), &statement, nullptr), SQLITE_OK, handle,
          sql.data());
    return statement;
}

// Calls `action(statement)` for every row of the query.
[[gnu::always_inline]] inline void ForEachRow(sqlite3* handle, const std::string& sql, auto action)
{
    sqlite3_stmt* const statement = Prepared(handle, sql);
    int code = SQLITE_OK;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
        action(statement);
    }
    Check(code, SQLITE_DONE, handle, "step");
    sqlite3_finalize(statement);
}

void ReadCell(const auto source, DbTableColumnValue& cell)
{
    switch (source.Type()) {
    case SQLITE_INTEGER:
        cell.type = DbTableColumnType::Integer;
        cell.value = source.Integer();
        break;
    case SQLITE_FLOAT:
        cell.type = DbTableColumnType::Real;
        cell.value = source.Real();
        break;
    case SQLITE_TEXT: {
        const char* const text = source.Text();
        cell.type = DbTableColumnType::Text;
        cell.value.emplace<std::string>(text, source.Size());
        break;
    }
    case SQLITE_BLOB: {
        const char* const blob = source.Blob();
        cell.type = DbTableColumnType::Blob;
        cell.value.emplace<std::vector<char>>(blob, blob + source.Size());
        break;
    }
    default:
        cell.value.emplace<std::string>();
        break;
    }
}

// Binds and inserts each row. `destructor` says whether SQLite copies texts and blobs.
void InsertRows(sqlite3* handle, const auto& rows, sqlite3_destructor_type destructor)
{
    sqlite3_stmt* const insert = Prepared(handle, InsertRow);
    for (const SampleRow& row : rows) {
        const auto labelSize = static_cast<int>(row.label.size());
        const auto blobSize = static_cast<int>(row.bytes.size());
        const bool done = sqlite3_bind_int(insert, 1, row.number) == SQLITE_OK &&
                          sqlite3_bind_double(insert, 2, row.measure) == SQLITE_OK &&
                          sqlite3_bind_text(insert, 3, row.label.data(), labelSize, destructor) == SQLITE_OK &&
                          sqlite3_bind_blob(insert, 4, row.bytes.data(), blobSize, destructor) == SQLITE_OK &&
                          sqlite3_step(insert) == SQLITE_DONE && sqlite3_reset(insert) == SQLITE_OK;
        Check(done ? SQLITE_OK : SQLITE_ERROR, SQLITE_OK, handle, "bound insert");
    }
    sqlite3_finalize(insert);
}

} // namespace

RawConnection::RawConnection(const std::string& path, int flags)
{
    flags |= SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    Check(sqlite3_open_v2(path.c_str(), &m_handle, flags, nullptr), SQLITE_OK, m_handle, "open");
}

RawConnection::~RawConnection()
{
    Check(sqlite3_close(m_handle), SQLITE_OK, m_handle, "close");
}

void RawConnection::Execute(const std::string& sql)
{
    Check(sqlite3_exec(m_handle, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK, m_handle, "execute");
}

void RawConnection::InsertEach(const std::vector<Write>& writes)
{
    for (const Write& write : writes) {
        Execute(write);
    }
}

void RawConnection::InsertBound(const std::vector<SampleRow>& rows)
{
    InsertRows(m_handle, rows, SQLITE_TRANSIENT);
}

template <typename Cell>
void RawReader<Cell>::Read(const std::string& sql, Rows& rows)
{
    int columns = 0;
    ForEachRow(Handle(), sql, [&](sqlite3_stmt* statement) {
        if (columns == 0) {
            columns = sqlite3_column_count(statement);
        }
        std::vector<DbTableColumnValue>& cells = rows.rows.emplace_back().cells;
        cells.reserve(static_cast<std::size_t>(columns));
        for (int column = 0; column < columns; ++column) {
            DbTableColumnValue& cell = cells.emplace_back();
            cell.column = static_cast<unsigned int>(column);
            ReadCell(Cell(statement, column), cell);
        }
    });
}

template <typename Cell>
Totals RawReader<Cell>::Walk(const std::string& sql)
{
    Totals totals;
    ForEachRow(Handle(), sql, [&](sqlite3_stmt* statement) {
        const int number = Cell(statement, 0).Integer();
        const double measure = Cell(statement, 1).Real();
        const Cell label(statement, 2);
        const char* const text = label.Text();
        const std::size_t textSize = label.Size();
        const Cell bytes(statement, 3);
        const char* const blob = bytes.Blob();
        totals.Add(number, measure, text, textSize, blob, bytes.Size());
    });
    return totals;
}

template <typename Cell>
Totals RawReader<Cell>::ReadColumns(int times)
{
    Totals totals;
    sqlite3_stmt* const statement = Prepared(Handle(), SelectAll);
    Check(sqlite3_step(statement), SQLITE_ROW, Handle(), "step");
    for (int i = 0; i < times; ++i) {
        const Cell text(statement, 2);
        const std::size_t textSize = text.Size();
        const std::string label(text.Text(), textSize);
        const Cell bytes(statement, 3);
        const std::size_t blobSize = bytes.Size();
        totals.Add(Cell(statement, 0).Integer(), Cell(statement, 1).Real(), label.data(), label.size(), bytes.Blob(),
                   blobSize);
    }
    sqlite3_finalize(statement);
    return totals;
}

template class RawReader<CellByValue>;
template class RawReader<CellByColumn>;

void RawSqlitePrepared::Insert(const Write& write)
{
    Execute("BEGIN");
    InsertBound(write);
    Execute("COMMIT");
}

void RawSqlitePrepared::InsertBound(const std::vector<SampleRow>& rows)
{
    InsertRows(Handle(), rows, SQLITE_STATIC);
}

void RawSqlitePrepared::InsertEach(const std::vector<Write>& writes)
{
    InsertRows(Handle(), writes | std::views::join, SQLITE_STATIC);
}

RawSqliteNoMutex::RawSqliteNoMutex(const std::string& path) : RawSqlite(path, SQLITE_OPEN_NOMUTEX) {}

} // namespace Morvik::sql::bench
