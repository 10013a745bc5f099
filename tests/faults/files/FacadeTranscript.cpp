#include <sql/DatabaseApi.h>

#include <cstddef>
#include <utility>

#include "files/Transcript.h"
#include "support/Cells.h"
#include "support/FacadeModel.h"

namespace Morvik::sql::tests {

namespace {

/// More rows than the sample has with any damage.
constexpr std::size_t MostRows = 100'000;

std::string Joined(const DescribedRow& cells)
{
    std::string row;
    for (const std::string& cell : cells) {
        row += '[' + cell + ']';
    }
    return row;
}

/// Runs the operations with the library.
class Library {
public:
    DatabaseApi facade;

    bool Open(const std::string& path, bool readOnly) { return facade.OpenDatabase(path, readOnly); }

    bool ReadTable(const std::string& table, std::vector<std::string>& rows) const
    {
        DbTableData data;
        const bool read = facade.ReadTableValues(table, data);
        Describe(data, rows);
        return read;
    }

    bool Read(const std::string& sql, std::vector<std::string>& rows) const
    {
        DbTableData data;
        const bool read = facade.ReadValues(sql, data);
        Describe(data, rows);
        return read;
    }

    bool ReadNext(std::string& row)
    {
        const bool read = facade.ReadNextRow(m_row);
        row = Joined(Described(m_row));
        return read;
    }

    int CodeOfPrepare(const std::string& sql) const { return facade.PrepareStatement(sql).GetLastError(); }
    int Code() const { return facade.GetLastError(); }
    const std::string& Message() const { return facade.GetLastErrorMsg(); }

private:
    static void Describe(const DbTableData& data, std::vector<std::string>& rows)
    {
        for (const DbTableRowValues& row : data.rows) {
            rows.push_back(Joined(Described(row)));
        }
    }

    DbTableRowValues m_row;
};

/// Runs the same operations with raw SQLite.
class Plain {
public:
    FacadeModel facade;

    bool Open(const std::string& path, bool readOnly) { return facade.OpenDatabase(path, path, readOnly, false); }

    bool ReadTable(const std::string& table, std::vector<std::string>& rows)
    {
        return Read("SELECT * FROM " + table, rows);
    }

    bool Read(const std::string& sql, std::vector<std::string>& rows)
    {
        std::vector<DescribedRow> described;
        const bool read = facade.ReadValues(sql, described);
        for (const DescribedRow& row : described) {
            rows.push_back(Joined(row));
        }
        return read;
    }

    bool ReadNext(std::string& row)
    {
        const bool read = facade.ReadNextRow(m_row);
        row = Joined(m_row);
        return read;
    }

    int CodeOfPrepare(const std::string& sql) const { return facade.PrepareStatement(sql); }
    int Code() const { return facade.code; }
    const std::string& Message() const { return facade.message; }

private:
    DescribedRow m_row;
};

/// The sequence of operations, with the library or with raw SQLite.
template <typename Side>
class Script {
public:
    Transcript Run(const std::string& path, bool readOnly)
    {
        Note("OpenDatabase", m_side.Open(path, readOnly));
        // None of these files must survive a power failure, and a device has no directory for a journal.
        Note("Execute pragmas", m_side.facade.Execute("PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY"));
        ReadEverything();
        ChangeEverything();
        Note("Integrity", Read("PRAGMA integrity_check"));
        Note("CloseReadTable", m_side.facade.CloseReadTable());
        Note("CloseDatabase", m_side.facade.CloseDatabase());
        return std::move(m_transcript);
    }

private:
    void ReadEverything()
    {
        for (const char* table : {"reading", "absent"}) {
            int result = -1;
            const bool exists = m_side.facade.ExistsTable(table, result);
            m_rows.push_back(std::to_string(result));
            Note("ExistsTable", exists);
        }
        Note("Schema", Read("SELECT * FROM sqlite_master"));
        for (const char* table : {"reading", "note"}) {
            Note("ReadTableValues", m_side.ReadTable(table, m_rows));
        }
        Note("Index", Read("SELECT label, number FROM reading INDEXED BY by_label WHERE label > 'label 5'"));
        Walk();
        int result = -1;
        m_rows.push_back(std::to_string(m_side.facade.ExistData("reading", "WHERE value > 2", result)));
        m_rows.push_back(std::to_string(result));
        Note("ExistData", true);
        m_rows.push_back(std::to_string(m_side.CodeOfPrepare("SELECT label FROM note")));
        Note("PrepareStatement", true);
        Note("Integrity", Read("PRAGMA integrity_check"));
    }

    void Walk()
    {
        Note("SqlQueryBegin",
             m_side.facade.SqlQueryBegin("SELECT number, bytes, value FROM note ORDER BY number DESC"));
        bool read = true;
        for (std::size_t rows = 0; read && rows < MostRows; ++rows) {
            std::string row;
            read = m_side.ReadNext(row);
            m_rows.push_back(row);
            Note("ReadNextRow", read);
        }
    }

    void ChangeEverything()
    {
        auto& facade = m_side.facade;
        const DbTableDataWrite rows{
            {"label", "value"}, {{{TextCell(std::string(700, 'n')), RealCell(0.5)}}, {{TextCell("new"), RealCell(1)}}}};
        Note("WriteTableValues", facade.WriteTableValues("reading", rows));
        Note("UpdateTableValues", facade.UpdateTableValues("note", rows, "WHERE number > 3"));
        Note("Execute", facade.Execute("DELETE FROM reading WHERE number % 3 = 0; UPDATE reading SET bytes = label"));
        Note("CreateTable", facade.CreateTable({"extra", {{"number", DbTableColumnType::Integer, 0, Unique}}, {}}));
        Note("AlterTable", facade.AlterTable("note", "memo"));
        Note("DropTable", facade.DropTable("reading"));
        Note("ReadTableValues", m_side.ReadTable("memo", m_rows));
    }

    bool Read(const std::string& sql) { return m_side.Read(sql, m_rows); }

    void Note(const char* operation, bool succeeded)
    {
        m_transcript.push_back({operation, succeeded, m_side.Code(), m_side.Message(), std::exchange(m_rows, {})});
    }

    Side m_side;
    std::vector<std::string> m_rows;
    Transcript m_transcript;
};

} // namespace

Transcript FacadeTranscript(const std::string& path, bool readOnly)
{
    return Script<Library>().Run(path, readOnly);
}

Transcript PlainFacadeTranscript(const std::string& path, bool readOnly)
{
    return Script<Plain>().Run(path, readOnly);
}

} // namespace Morvik::sql::tests
