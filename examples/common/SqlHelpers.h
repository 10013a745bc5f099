#pragma once

// Helpers for a program that uses the library, to copy one by one. They need no other file. Most of them report a
// failure with Require(), ReadAll() uses Query, and GetOptional() uses Get().

#include <sql/DatabaseApi.h>

#include <cstddef>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace examples {

using Morvik::sql::DatabaseApi;
using Morvik::sql::DbTableColumnType;
using Morvik::sql::DbTableColumnValue;
using Morvik::sql::DbTableRowValues;
using Morvik::sql::SqlCommand;

/// Throws unless `succeeded`, with the code and the message of `object`, a DatabaseApi or an SqlCommand:
/// Require(database, database.CreateTable(definition), "create the table");
template <typename Object>
void Require(const Object& object, bool succeeded, std::string_view action)
{
    if (!succeeded) {
        throw std::runtime_error("cannot " + std::string(action) + ": " + object.GetLastErrorMsg() + " (code " +
                                 std::to_string(object.GetLastError()) + ")");
    }
}

/// Opens `path` for reading and writing and makes the settings of the connection.
/// Throws also for a file that is not a database, which OpenDatabase() alone accepts.
inline void Open(DatabaseApi& database, const std::string& path)
{
    const std::string action = "open " + path;
    Require(database, database.OpenDatabase(path, false), action);
    // While another program uses the file, calls wait for up to 3 seconds instead of failing at once.
    Require(database, database.Execute("PRAGMA busy_timeout = 3000"), action);
    // With SQLite's default, ext4 can lose the last acknowledged write if the power fails within about 5 seconds.
    Require(database, database.Execute("PRAGMA synchronous = EXTRA"), action);
    // SQLite reads the file at the first statement that needs it.
    Require(database, database.Execute("SELECT count(*) FROM sqlite_master"), action);
}

/// Cells for WriteTableValues() and UpdateTableValues().
/// The library stores a text cell with each apostrophe doubled, so bind a text that may have one; see Prepare().
inline DbTableColumnValue TextCell(std::string text)
{
    return {.type = DbTableColumnType::Text, .value = std::move(text)};
}

inline DbTableColumnValue IntegerCell(int number)
{
    return {.type = DbTableColumnType::Integer, .value = number};
}

inline DbTableColumnValue RealCell(double number)
{
    return {.type = DbTableColumnType::Real, .value = number};
}

/// The time at which SQLite runs the statement, in seconds since 1970.
inline DbTableColumnValue UnixTimeCell()
{
    return {.type = DbTableColumnType::UnixTimeNow};
}

/// The value in a column of a row, which must not be NULL. T is int, double, std::string or std::vector<char>.
/// Throws std::bad_variant_access if the value has another type.
template <typename T>
const T& Get(const DbTableRowValues& row, std::size_t column)
{
    if (row.cells.at(column).type == DbTableColumnType::None) {
        throw std::bad_variant_access();
    }
    return std::get<T>(row.cells[column].value);
}

/// The value in a column of a row, or nothing for NULL, which is read as a cell of type None.
/// Throws std::bad_variant_access if the value has another type.
template <typename T>
std::optional<T> GetOptional(const DbTableRowValues& row, std::size_t column)
{
    if (row.cells.at(column).type == DbTableColumnType::None) {
        return std::nullopt;
    }
    return Get<T>(row, column);
}

/// Begins a query for a range-for loop and ends it with the scope, also after an exception.
/// An open query would keep the database from closing and other programs from writing.
class Query {
public:
    Query(DatabaseApi& database, const std::string& sql) : m_database(database)
    {
        Require(database, database.SqlQueryBegin(sql), "query with " + sql);
    }

    ~Query()
    {
        try {
            m_database.CloseReadTable();
        } catch (const std::bad_alloc&) {
            // There was no memory for the message of a failed query, but the query is closed.
        }
    }

    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    auto begin() const { return m_database.begin(); }
    auto end() const { return m_database.end(); }

    /// Call it after the loop: throws if the loop ended at a failure and not at the last row. It closes the query,
    /// since a failed step has the general code 1 and closing has the specific code and message.
    void Finish() const
    {
        const bool succeeded = m_database.Succeeded();
        Require(m_database, m_database.CloseReadTable() && succeeded, "read all rows");
    }

private:
    DatabaseApi& m_database;
};

/// The rows of a query as structs. `fromRow` makes one struct of one row:
/// Room RoomFrom(const DbTableRowValues& row) { return {.name = Get<std::string>(row, 0)}; }
template <typename Struct>
std::vector<Struct> ReadAll(DatabaseApi& database, const std::string& sql, Struct (*fromRow)(const DbTableRowValues&))
{
    std::vector<Struct> structs;
    const Query query(database, sql);
    for (const DbTableRowValues& row : query) {
        structs.push_back(fromRow(row));
    }
    query.Finish();
    return structs;
}

/// A prepared statement. A failed PrepareStatement() has a code and no message, so EXPLAIN supplies SQLite's message.
/// Declare the statement in a scope that ends before the database is closed.
inline SqlCommand Prepare(DatabaseApi& database, const std::string& sql)
{
    SqlCommand statement = database.PrepareStatement(sql);
    if (statement.GetLastError() != 0) {
        Require(database, database.Execute("EXPLAIN " + sql), "prepare " + sql);
        Require(statement, false, "prepare " + sql);
    }
    return statement;
}

/// Binds NULL to a parameter, also to one that was bound before.
/// A view without data means NULL; an empty text has data and stays an empty text.
inline bool BindNull(SqlCommand& statement, int index)
{
    return statement.BindText(index, {});
}

/// Binds a number or a text, or NULL if there is none.
/// Returns false like the bind operations of SqlCommand.
template <typename T>
bool BindOptional(SqlCommand& statement, int index, const std::optional<T>& value)
{
    if (!value) {
        return BindNull(statement, index);
    }
    if constexpr (std::is_integral_v<T>) {
        return statement.BindInt64(index, *value);
    } else if constexpr (std::is_floating_point_v<T>) {
        return statement.BindDouble(index, *value);
    } else {
        return statement.BindText(index, *value);
    }
}

/// A transaction that is rolled back at the end of the scope unless Commit() succeeded.
/// If the program is killed before Commit(), SQLite rolls back when the file is next opened.
class Transaction {
public:
    // BEGIN IMMEDIATE locks the database for writing now, so that a second writer waits here
    // and not halfway.
    explicit Transaction(DatabaseApi& database) : m_database(database)
    {
        Require(database, database.Execute("BEGIN IMMEDIATE"), "begin a transaction");
    }

    ~Transaction()
    {
        if (!m_committed) {
            try {
                m_database.Execute("ROLLBACK");
            } catch (const std::bad_alloc&) {
                // There was no memory for the rollback. Closing the database ends the transaction.
            }
        }
    }

    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    void Commit()
    {
        Require(m_database, m_database.Execute("COMMIT"), "commit");
        m_committed = true;
    }

private:
    DatabaseApi& m_database;
    bool m_committed = false;
};

} // namespace examples
