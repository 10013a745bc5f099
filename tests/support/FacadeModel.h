#pragma once

#include <sql/DbTableData.h>
#include <sql/DbTableDataWrite.h>
#include <sql/DbTableDefinition.h>

#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace Morvik::sql::tests {

/// Describes each cell of a row as one text of its type, column and value.
using DescribedRow = std::vector<std::string>;

DescribedRow Described(const DbTableRowValues& row);

/// Predicts the results of a DatabaseApi. It runs the same operations with raw SQLite calls on a separate database, so
/// that no table of SQLite's codes and messages is needed. Every operation returns the predicted result; GetLastError()
/// and GetLastErrorMsg() return the predicted record.
class FacadeModel {
public:
    FacadeModel() = default;
    ~FacadeModel();

    FacadeModel(const FacadeModel&) = delete;
    FacadeModel& operator=(const FacadeModel&) = delete;

    /// `path` is the path given to the facade, `ownPath` the model's file in the same situation. `directoryFails` says
    /// that the parent directory does not exist and cannot be created.
    bool OpenDatabase(const std::string& path, const std::string& ownPath, bool readOnly, bool directoryFails);
    bool CloseDatabase();
    bool IsOpen() const { return m_handle != nullptr; }
    sqlite3* Handle() const { return m_handle; }

    bool CreateTable(const DbTableDefinition& definition);
    bool ExistsTable(const std::string& table, int& result);
    bool DropTable(const std::string& table);
    bool AlterTable(const std::string& table, const std::string& newName);
    bool Execute(const std::string& sql);
    bool WriteTableValues(const std::string& table, const DbTableDataWrite& data);
    bool UpdateTableValues(const std::string& table, const DbTableDataWrite& data, const std::string& condition);
    bool ReadTableValues(const std::string& table, std::vector<DescribedRow>& rows);
    bool ReadValues(const std::string& sql, std::vector<DescribedRow>& rows);
    int ExistData(const std::string& table, const std::string& condition, int& result);

    bool SqlQueryBegin(const std::string& sql);
    bool ReadNextRow(DescribedRow& row);
    bool CloseReadTable();

    /// The code of the statement that PrepareStatement() returns.
    int PrepareStatement(const std::string& sql) const;

    int code = 0;
    std::string message;

    /// The facade's current row.
    DescribedRow currentRow;

private:
    struct Record {
        int code = 0;
        std::string message;
    };

    bool Fail(int failureCode, const std::string& failureMessage);
    bool Copy(const Record& record);
    bool TestForTable(const std::string& table);
    bool RunStatement(const std::string& sql);
    std::string PlainColumnList(const DbTableDataWrite& data) const;
    std::string PlainCells(const DbTableRowValues& row);
    bool OpenQuery(const std::string& sql);
    bool StepCursor();
    void CloseCursor();
    void ConvertRow(DescribedRow& row);

    sqlite3* m_handle = nullptr;
    sqlite3_stmt* m_cursor = nullptr;
    Record m_connectionRecord;
    Record m_cursorRecord;
};

} // namespace Morvik::sql::tests
