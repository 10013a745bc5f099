#include <sql/SqlCommand.h>

#include "faults/storage/OutcomeText.h"

namespace Morvik::sql::tests {

StepOutcome LibrarySide::Outcome(bool succeeded, const std::string& rows) const
{
    return OutcomeOf(succeeded, m_facade.GetLastError(), m_facade.GetLastErrorMsg(), rows);
}

StepOutcome LibrarySide::Open(const std::string& path, bool readOnly)
{
    return Outcome(m_facade.OpenDatabase(path, readOnly));
}

StepOutcome LibrarySide::Create(const DbTableDefinition& definition)
{
    return Outcome(m_facade.CreateTable(definition));
}

StepOutcome LibrarySide::Write(const std::string& table, const DbTableDataWrite& data)
{
    return Outcome(m_facade.WriteTableValues(table, data));
}

StepOutcome LibrarySide::Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition)
{
    return Outcome(m_facade.UpdateTableValues(table, data, condition));
}

StepOutcome LibrarySide::Alter(const std::string& table, const std::string& newName)
{
    return Outcome(m_facade.AlterTable(table, newName));
}

StepOutcome LibrarySide::Drop(const std::string& table)
{
    return Outcome(m_facade.DropTable(table));
}

StepOutcome LibrarySide::Execute(const std::string& sql)
{
    return Outcome(m_facade.Execute(sql));
}

StepOutcome LibrarySide::Exists(const std::string& table)
{
    int result = -1;
    const bool found = m_facade.ExistsTable(table, result);
    return Outcome(found, std::to_string(result));
}

StepOutcome LibrarySide::Count(const std::string& table)
{
    int result = -1;
    const int count = m_facade.ExistData(table, "", result);
    return Outcome(result == 0, std::to_string(count) + ' ' + std::to_string(result));
}

StepOutcome LibrarySide::Read(const std::string& sql)
{
    DbTableData data;
    const bool succeeded = m_facade.ReadValues(sql, data);
    std::string rows;
    for (const DbTableRowValues& row : data.rows) {
        rows += RowText(Described(row));
    }
    return Outcome(succeeded, rows);
}

StepOutcome LibrarySide::Walk(const std::string& sql)
{
    std::string rows;
    DbTableRowValues row;
    if (!m_facade.SqlQueryBegin(sql)) {
        return Outcome(false);
    }
    while (m_facade.ReadNextRow(row)) {
        rows += RowText(Described(row));
    }
    return Outcome(m_facade.Succeeded(), rows);
}

StepOutcome LibrarySide::Iterate(const std::string& sql)
{
    std::string rows;
    if (!m_facade.SqlQueryBegin(sql)) {
        return Outcome(false);
    }
    for (const DbTableRowValues& row : m_facade) {
        rows += RowText(Described(row));
    }
    return Outcome(m_facade.Succeeded(), rows);
}

StepOutcome LibrarySide::RunPrepared(const std::string& sql, const std::string& parameter)
{
    SqlCommand command = m_facade.PrepareStatement(sql);
    std::string steps;
    const auto record = [&](const char* operation, bool succeeded) {
        steps += std::string(operation) + ' ' + (succeeded ? "true " : "false ") +
                 std::to_string(command.GetLastError()) + " \"" + command.GetLastErrorMsg() + "\"\n";
        return succeeded;
    };
    record("prepare", command.GetLastError() == 0);
    record("bind", command.BindText(1, parameter));
    while (record("step", command.Step()) && command.HasRowData()) {
        steps += command.ColumnText(0) + '\n';
    }
    const bool succeeded = command.GetLastError() == 101;
    record("finalize", command.Finalize());
    return Outcome(succeeded, steps);
}

StepOutcome LibrarySide::Close()
{
    const StepOutcome released = Outcome(m_facade.CloseReadTable());
    const StepOutcome closed = Outcome(m_facade.CloseDatabase());
    return {closed.succeeded, released.text + closed.text};
}

} // namespace Morvik::sql::tests
