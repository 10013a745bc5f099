#pragma once

#include <sql/IDatabaseApi.h>

#include <exception>
#include <sstream>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <sqlite3.h>

#include "support/ReferenceAccess.h"
#include "support/ReferenceRendering.h"

namespace Morvik::sql::tests {

/// A second implementation of the facade with the interface of DatabaseApi, made of direct SQLite calls. Tests run the
/// same operations on both and compare everything that a caller sees, so that no test needs a table of SQLite's codes
/// and messages.
class ReferenceFacade : public IDatabaseApi, public ReferenceError {
public:
    bool OpenDatabase(const std::string& path, bool readOnly) override
    {
        m_error.code = 0;
        return m_database.Open(path, readOnly) || CopyError(m_database);
    }

    bool CloseDatabase() override
    {
        m_error.code = 0;
        return m_database.Close() || CopyError(m_database);
    }

    bool IsOpen() const override { return m_database.IsOpen(); }

    bool CreateTable(const DbTableDefinition& definition) override
    {
        return CheckOpen() && CheckName(definition.name) && Run(ReferenceCreateStatement(definition));
    }

    bool ExistsTable(const std::string& table, int& result) const override
    {
        const bool exists = TestForTable(table);
        result = m_error.code;
        return exists;
    }

    bool DropTable(const std::string& table) override
    {
        return CheckOpen() && (TestForTable(table) ? Run("DELETE FROM " + table) && Run("DROP TABLE IF EXISTS " + table)
                                                   : Succeeded());
    }

    bool AlterTable(const std::string& table, const std::string& newName) override
    {
        return CheckOpen() && (TestForTable(table) ? Run("ALTER TABLE " + table + " RENAME TO " + newName)
                                                   : Fail(113, "No table exists: " + table));
    }

    bool Execute(const std::string& sql) override
    {
        m_error.code = 0;
        return sql.empty() ? Fail(112, "Missing command.") : Run(sql);
    }

    bool WriteTableValues(const std::string& table, const DbTableDataWrite& data) override
    {
        if (!CheckName(table)) {
            return false;
        }
        std::string sql = "INSERT INTO " + table + ColumnList(data) + " VALUES";
        for (std::size_t row = 0; row < data.rows.size(); ++row) {
            sql += (row == 0 ? " (" : " ,(") + CellList(data.rows[row]) + ")";
        }
        Run(sql);
        return Succeeded();
    }

    bool UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                           const std::string& condition) override
    {
        if (!CheckName(table)) {
            return false;
        }
        if (data.columns.empty()) {
            return Fail(112, "Missing column names.");
        }
        const std::string values = data.rows.empty() ? "" : CellList(data.rows.front());
        Run("UPDATE " + table + " SET" + ColumnList(data) + "=" + (values.empty() ? "" : "(" + values + ") ") +
            condition);
        return Succeeded();
    }

    bool ReadTableValues(const std::string& table, DbTableData& data) const override
    {
        return ReadValues("SELECT * FROM " + table, data);
    }

    // If the query has no statement, the loop ends at once. The error is always copied from the cursor.
    bool ReadValues(const std::string& sql, DbTableData& data) const override
    {
        if (!OpenQuery(sql)) {
            return false;
        }
        while (m_table.ReadNext()) {
            ReadRow(data.rows.emplace_back());
        }
        return CopyError(m_table);
    }

    int ExistData(const std::string& table, const std::string& condition, int& result) override
    {
        int count = 0;
        result = 0;
        try {
            const std::string sql = "SELECT count(*) FROM " + table + (condition.empty() ? "" : " " + condition);
            if (!TestForTable(table) || !SqlQueryBegin(sql)) {
                result = m_error.code;
                return 0;
            }
            DbTableRowValues row;
            if (ReadNextRow(row) && !row.cells.empty()) {
                count = std::get<int>(row.cells.front().value);
            }
        } catch (const std::exception&) {
            result = 110;
        }
        if (!CloseReadTable()) {
            result = m_error.code;
        }
        return count;
    }

    /// An iterator on the facade's current row; null at the end.
    struct Iterator {
        const DbTableRowValues& operator*() const { return *row; }
        Iterator& operator++() { return *this = facade->begin(); }
        bool operator==(const Iterator&) const = default;

        ReferenceFacade* facade;
        const DbTableRowValues* row;
    };

    bool SqlQueryBegin(const std::string& sql)
    {
        m_row.cells.clear();
        return OpenQuery(sql);
    }

    Iterator begin() { return {this, ReadNextRow(m_row) ? &m_row : nullptr}; }
    Iterator end() { return {this, nullptr}; }

    bool ReadNextRow(DbTableRowValues& row) const
    {
        if (!m_table.IsOpen()) {
            return Fail(111, "Table isn't open.");
        }
        if (!m_table.ReadNext()) {
            CopyError(m_table);
            return false;
        }
        ReadRow(row);
        return Succeeded();
    }

    bool CloseReadTable() const
    {
        m_error.code = 0;
        return m_table.Close() || CopyError(m_table);
    }

    ReferenceCommand PrepareStatement(std::string_view sql) const { return {m_database, sql}; }

    bool Succeeded() const { return m_error.code == 0; }
    bool Failed() const { return !Succeeded(); }

private:
    bool Fail(int code, const std::string& message) const
    {
        m_error = {code, message};
        return false;
    }

    bool CopyError(const ReferenceError& lower) const
    {
        m_error = {lower.GetLastError(), lower.GetLastErrorMsg()};
        return Succeeded();
    }

    bool CheckOpen() const
    {
        m_error.code = 0;
        return IsOpen() || Fail(111, "Database isn't open.");
    }

    bool CheckName(const std::string& table) const
    {
        m_error.code = 0;
        return !table.empty() || Fail(112, "Missing table name.");
    }

    bool Run(const std::string& sql)
    {
        ReferenceCommand command(m_database);
        return command.Execute(sql) || CopyError(command);
    }

    // An error of the step is not copied.
    bool TestForTable(const std::string& table) const
    {
        ReferenceTable test(m_database);
        return CheckName(table) && (test.Open(TableExistsQuery(table)) || CopyError(test)) && test.ReadNext();
    }

    // Leaves out empty names only until the first other name.
    static std::string ColumnList(const DbTableDataWrite& data)
    {
        std::string list;
        for (const std::string& name : data.columns) {
            list += (list.empty() ? "" : ",") + name;
        }
        return list.empty() ? "" : " (" + list + ")";
    }

    // The literals of the row up to the first invalid cell, which leaves its error.
    std::string CellList(const DbTableRowValues& row)
    {
        std::string list;
        for (std::size_t position = 0; position < row.cells.size(); ++position) {
            const std::string literal = ReferenceLiteral(row.cells[position]);
            if (literal.empty()) {
                std::ostringstream message;
                message << "Invalid column value: (row | column)" << static_cast<int>(position) << '|'
                        << row.cells[position].column;
                Fail(112, message.str());
                break;
            }
            list += literal;
            list += position + 1 < row.cells.size() ? "," : "";
        }
        return list;
    }

    bool OpenQuery(const std::string& sql) const
    {
        m_table.Close();
        return CheckOpen() && (!sql.empty() || Fail(112, "Missing query SQL statement.")) &&
               (m_table.Open(sql) || CopyError(m_table));
    }

    static DbTableColumnValue CellOf(const ReferenceValue& value, int position)
    {
        const auto column = static_cast<std::uint32_t>(position);
        switch (value.GetValueType()) {
        case SQLITE_INTEGER:
            return {DbTableColumnType::Integer, column, value.GetValue<int>()};
        case SQLITE_FLOAT:
            return {DbTableColumnType::Real, column, value.GetValue<double>()};
        case SQLITE_TEXT:
            return {DbTableColumnType::Text, column, value.GetValue<std::string>()};
        case SQLITE_BLOB:
            return {DbTableColumnType::Blob, column, value.GetValue<std::vector<char>>()};
        default:
            return {DbTableColumnType::None, column, std::string()};
        }
    }

    // While the facade has the code of an earlier failure, the row stays empty.
    void ReadRow(DbTableRowValues& row) const
    {
        row.cells.clear();
        for (int column = 0; Succeeded() && column < m_table.Columns(); ++column) {
            row.cells.push_back(CellOf(m_table[column], column));
        }
    }

    ReferenceDatabase m_database;
    mutable ReferenceTable m_table{m_database}; // changed by constant reads, as in DatabaseApi
    DbTableRowValues m_row;
};

} // namespace Morvik::sql::tests
