#pragma once

#include <sql/IDatabaseApi.h>

#include <string>
#include <string_view>

#include "support/ReferenceAccess.h"

namespace Morvik::sql::tests {

/// A second implementation of the facade with the interface of DatabaseApi, made of direct SQLite calls. Tests run the
/// same operations on both and compare everything that a caller sees, so that no test needs a table of SQLite's codes
/// and messages.
class ReferenceFacade : public IDatabaseApi {
public:
    bool OpenDatabase(const std::string& path, bool readOnly) override;
    bool CloseDatabase() override;
    bool IsOpen() const override { return m_database.IsOpen(); }

    bool CreateTable(const DbTableDefinition& definition) override;
    bool ExistsTable(const std::string& table, int& result) const override;
    bool DropTable(const std::string& table) override;
    bool AlterTable(const std::string& table, const std::string& newName) override;

    bool Execute(const std::string& sql) override;
    bool WriteTableValues(const std::string& table, const DbTableDataWrite& data) override;
    bool UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                           const std::string& condition) override;

    bool ReadTableValues(const std::string& table, DbTableData& data) const override;
    bool ReadValues(const std::string& sql, DbTableData& data) const override;
    int ExistData(const std::string& table, const std::string& condition, int& result) override;

    /// An iterator on the facade's current row; null at the end.
    class Iterator {
    public:
        const DbTableRowValues& operator*() const { return *m_row; }
        Iterator& operator++() { return *this = m_facade->begin(); }
        friend bool operator==(const Iterator&, const Iterator&) = default;

    private:
        friend class ReferenceFacade;
        Iterator(ReferenceFacade* facade, const DbTableRowValues* row) : m_facade(facade), m_row(row) {}

        ReferenceFacade* m_facade;
        const DbTableRowValues* m_row;
    };

    bool SqlQueryBegin(const std::string& sql);
    Iterator begin() { return {this, ReadNextRow(m_row) ? &m_row : nullptr}; }
    Iterator end() { return {this, nullptr}; }
    bool ReadNextRow(DbTableRowValues& row) const;
    bool CloseReadTable() const;

    ReferenceCommand PrepareStatement(std::string_view sql) const { return {m_database, sql}; }

    int GetLastError() const { return m_code; }
    const std::string& GetLastErrorMsg() const { return m_message; }
    bool Succeeded() const { return m_code == 0; }
    bool Failed() const { return !Succeeded(); }

private:
    bool Fail(int code, const std::string& message) const;
    bool CopyError(const ReferenceError& lower) const;
    bool CheckOpen() const;
    bool CheckName(const std::string& table) const;
    bool Run(const std::string& sql);
    bool TestForTable(const std::string& table) const;
    std::string CellList(const DbTableRowValues& row);
    bool OpenQuery(const std::string& sql) const;
    void ReadRow(DbTableRowValues& row) const;

    // The reads are constant and change the error and the cursor, as in DatabaseApi.
    mutable int m_code = 0;
    mutable std::string m_message;
    ReferenceDatabase m_database;
    mutable ReferenceTable m_table{m_database};
    DbTableRowValues m_row;
};

} // namespace Morvik::sql::tests
