#pragma once

#include <sql/DbTableData.h>
#include <sql/DbTableDataWrite.h>
#include <sql/DbTableDefinition.h>

#include <string>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace Morvik::sql::tests {

/// The cells of a row, each as its type, column and value in one text.
using DescribedRow = std::vector<std::string>;

DescribedRow Described(const DbTableRowValues& row);

/// Predicts what a DatabaseApi answers: the same operations on a database of its own, done with plain SQLite calls, so
/// that SQLite's codes and messages need no table. Every operation returns the predicted result; code and message are
/// the predicted record.
class FacadeModel {
public:
    FacadeModel() = default;
    ~FacadeModel();

    FacadeModel(const FacadeModel&) = delete;
    FacadeModel& operator=(const FacadeModel&) = delete;

    /// `path` is what the facade is given, `ownPath` the model's own file in the same situation. `directoryFails` tells
    /// that the parent directory can neither exist nor be made.
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

    /// The code of the statement that PrepareStatement() hands out.
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
