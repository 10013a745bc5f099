#include "fuzz/DamagedFile.h"

#include <filesystem>
#include <fstream>

#include "fuzz/Features.h"
#include "fuzz/Finding.h"

namespace Morvik::sql::tests {

namespace {

constexpr int MostSteps = 2000;

// Joins the results of an operation, so that one comparison covers all of them.
std::string Text(int number)
{
    return std::to_string(number);
}

std::string Text(const DescribedRow& row)
{
    std::string text;
    for (const std::string& cell : row) {
        text += '[' + cell + ']';
    }
    return text;
}

void WriteFile(const std::string& path, std::span<const std::uint8_t> content)
{
    for (const char* const left : {"-journal", "-wal", "-shm"}) {
        std::filesystem::remove(path + left);
    }
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << std::string(content.begin(), content.end());
    if (!file.flush()) {
        ReportFinding("The file cannot be written: " + path);
    }
}

} // namespace

// Created once for all inputs, because creating a directory takes longer than most inputs.
const DamagedFile::Files& DamagedFile::OwnFiles()
{
    static const Files files;
    return files;
}

DamagedFile::DamagedFile(std::span<const std::uint8_t> content)
{
    WriteFile(OwnFiles().facadePath, content);
    WriteFile(OwnFiles().modelPath, content);
}

template <typename OnFacade, typename OnModel>
void DamagedFile::Compare(const std::string& operation, const OnFacade& onFacade, const OnModel& onModel)
{
    RequireSame("The result of " + operation, Text(onFacade()), Text(onModel()));
    RequireSame("The code of " + operation, Text(m_facade.GetLastError()), Text(m_model.code));
    RequireSame("The message of " + operation, m_facade.GetLastErrorMsg(), m_model.message);
    RequireSame("What IsOpen() says after " + operation, Text(m_facade.IsOpen()), Text(m_model.IsOpen()));
    // The names and texts of the input are left out, because they would make every input look new.
    CountFeature(operation.substr(0, operation.find(' ')) + Text(m_model.code) +
                 m_model.message.substr(0, m_model.message.find(':')));
}

template <typename OnFacade, typename OnModel>
void DamagedFile::Both(const std::string& operation, const OnFacade& onFacade, const OnModel& onModel)
{
    const auto begun = [this](const auto& run) {
        return [this, &run] {
            m_connections.BeginOperation();
            return run();
        };
    };
    Compare(operation, begun(onFacade), begun(onModel));
}

void DamagedFile::Open(bool readOnly)
{
    const Files& files = OwnFiles();
    Both(
        "OpenDatabase", [&] { return m_facade.OpenDatabase(files.facadePath, readOnly); },
        [&] { return m_model.OpenDatabase(files.facadePath, files.modelPath, readOnly, false); });
}

void DamagedFile::Close()
{
    Both(
        "CloseReadTable", [&] { return m_facade.CloseReadTable(); }, [&] { return m_model.CloseReadTable(); });
    Both(
        "CloseDatabase", [&] { return m_facade.CloseDatabase(); }, [&] { return m_model.CloseDatabase(); });
}

void DamagedFile::Execute(const std::string& sql)
{
    Both(
        "Execute " + sql, [&] { return m_facade.Execute(sql); }, [&] { return m_model.Execute(sql); });
}

void DamagedFile::Exists(const std::string& table)
{
    int result = -1;
    int expected = -1;
    Both(
        "ExistsTable " + table, [&] { return m_facade.ExistsTable(table, result); },
        [&] { return m_model.ExistsTable(table, expected); });
    RequireSame("ExistsTable's result for " + table, Text(result), Text(expected));
}

void DamagedFile::Count(const std::string& table, const std::string& condition)
{
    int result = -1;
    int expected = -1;
    Both(
        "ExistData " + table, [&] { return m_facade.ExistData(table, condition, result); },
        [&] { return m_model.ExistData(table, condition, expected); });
    RequireSame("ExistData's result for " + table, Text(result), Text(expected));
}

void DamagedFile::Write(const std::string& table, const DbTableDataWrite& data)
{
    Both(
        "WriteTableValues " + table, [&] { return m_facade.WriteTableValues(table, data); },
        [&] { return m_model.WriteTableValues(table, data); });
}

void DamagedFile::Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition)
{
    Both(
        "UpdateTableValues " + table, [&] { return m_facade.UpdateTableValues(table, data, condition); },
        [&] { return m_model.UpdateTableValues(table, data, condition); });
}

void DamagedFile::Rename(const std::string& table, const std::string& newName)
{
    Both(
        "AlterTable " + table, [&] { return m_facade.AlterTable(table, newName); },
        [&] { return m_model.AlterTable(table, newName); });
}

void DamagedFile::Drop(const std::string& table)
{
    Both(
        "DropTable " + table, [&] { return m_facade.DropTable(table); }, [&] { return m_model.DropTable(table); });
}

void DamagedFile::RequireSameRows(const std::string& operation, const DbTableData& data,
                                  const std::vector<DescribedRow>& rows)
{
    const std::string count = std::to_string(rows.size());
    RequireSame("The number of rows of " + operation, std::to_string(data.rows.size()), count);
    CountFeature("rows" + count.substr(0, 1) + std::to_string(count.size()));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        RequireSame("Row " + std::to_string(i) + " of " + operation, Text(Described(data.rows[i])), Text(rows[i]));
    }
}

DbTableData DamagedFile::Read(const std::string& sql)
{
    DbTableData data;
    std::vector<DescribedRow> rows;
    Both(
        "ReadValues " + sql, [&] { return m_facade.ReadValues(sql, data); },
        [&] { return m_model.ReadValues(sql, rows); });
    RequireSameRows(sql, data, rows);
    return data;
}

void DamagedFile::ReadTable(const std::string& table)
{
    DbTableData data;
    std::vector<DescribedRow> rows;
    Both(
        "ReadTableValues " + table, [&] { return m_facade.ReadTableValues(table, data); },
        [&] { return m_model.ReadTableValues(table, rows); });
    RequireSameRows(table, data, rows);
}

void DamagedFile::Walk(const std::string& sql)
{
    Both(
        "SqlQueryBegin " + sql, [&] { return m_facade.SqlQueryBegin(sql); },
        [&] { return m_model.SqlQueryBegin(sql); });
    DbTableRowValues row;
    DescribedRow expectedRow;
    bool onRow = true;
    for (int step = 0; onRow && step < MostSteps; ++step) {
        Compare(
            "ReadNextRow", [&] { return onRow = m_facade.ReadNextRow(row); },
            [&] { return m_model.ReadNextRow(expectedRow); });
        RequireSame("A row of " + sql, Text(Described(row)), Text(expectedRow));
    }
    Both(
        "CloseReadTable", [&] { return m_facade.CloseReadTable(); }, [&] { return m_model.CloseReadTable(); });
}

} // namespace Morvik::sql::tests
