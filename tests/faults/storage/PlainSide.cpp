#include <sqlite3.h>

#include "faults/storage/OutcomeText.h"

namespace Morvik::sql::tests {

StepOutcome PlainSide::Outcome(bool succeeded, const std::string& rows) const
{
    return OutcomeOf(succeeded, m_model.code, m_model.message, rows);
}

StepOutcome PlainSide::Open(const std::string& path, bool readOnly)
{
    return Outcome(m_model.OpenDatabase(path, path, readOnly, false));
}

StepOutcome PlainSide::Create(const DbTableDefinition& definition)
{
    return Outcome(m_model.CreateTable(definition));
}

StepOutcome PlainSide::Write(const std::string& table, const DbTableDataWrite& data)
{
    return Outcome(m_model.WriteTableValues(table, data));
}

StepOutcome PlainSide::Update(const std::string& table, const DbTableDataWrite& data, const std::string& condition)
{
    return Outcome(m_model.UpdateTableValues(table, data, condition));
}

StepOutcome PlainSide::Alter(const std::string& table, const std::string& newName)
{
    return Outcome(m_model.AlterTable(table, newName));
}

StepOutcome PlainSide::Drop(const std::string& table)
{
    return Outcome(m_model.DropTable(table));
}

StepOutcome PlainSide::Execute(const std::string& sql)
{
    return Outcome(m_model.Execute(sql));
}

StepOutcome PlainSide::Exists(const std::string& table)
{
    int result = -1;
    const bool found = m_model.ExistsTable(table, result);
    return Outcome(found, std::to_string(result));
}

StepOutcome PlainSide::Count(const std::string& table)
{
    int result = -1;
    const int count = m_model.ExistData(table, "", result);
    return Outcome(result == 0, std::to_string(count) + ' ' + std::to_string(result));
}

StepOutcome PlainSide::Read(const std::string& sql)
{
    std::vector<DescribedRow> described;
    const bool succeeded = m_model.ReadValues(sql, described);
    std::string rows;
    for (const DescribedRow& row : described) {
        rows += RowText(row);
    }
    return Outcome(succeeded, rows);
}

StepOutcome PlainSide::Walk(const std::string& sql)
{
    std::string rows;
    DescribedRow row;
    if (!m_model.SqlQueryBegin(sql)) {
        return Outcome(false);
    }
    while (m_model.ReadNextRow(row)) {
        rows += RowText(row);
    }
    return Outcome(m_model.code == 0, rows);
}

StepOutcome PlainSide::Iterate(const std::string& sql)
{
    return Walk(sql);
}

StepOutcome PlainSide::RunPrepared(const std::string& sql, const std::string& parameter)
{
    sqlite3* const handle = m_model.Handle();
    sqlite3_stmt* statement = nullptr;
    std::string steps;
    int code = sqlite3_prepare_v2(handle, sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr);
    std::string message;
    const auto record = [&](const char* operation, bool succeeded) {
        steps += std::string(operation) + ' ' + (succeeded ? "true " : "false ") + std::to_string(code) + " \"" +
                 message + "\"\n";
        return succeeded;
    };
    record("prepare", code == SQLITE_OK);
    if (statement == nullptr) {
        // Without a statement, every further operation fails and leaves the error of the failed operation.
        for (const char* operation : {"bind", "step", "finalize"}) {
            record(operation, false);
        }
        return Outcome(false, steps);
    }
    code = sqlite3_bind_text(statement, 1, parameter.data(), static_cast<int>(parameter.size()), SQLITE_TRANSIENT);
    record("bind", code == SQLITE_OK);
    do {
        code = sqlite3_step(statement);
        message = code == SQLITE_ROW || code == SQLITE_DONE ? "" : sqlite3_errmsg(handle);
        record("step", message.empty());
        if (code == SQLITE_ROW) {
            steps += std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0))) + '\n';
        }
    } while (code == SQLITE_ROW);
    const bool succeeded = code == SQLITE_DONE;
    code = sqlite3_finalize(statement);
    record("finalize", code == SQLITE_OK);
    return Outcome(succeeded, steps);
}

StepOutcome PlainSide::Close()
{
    const StepOutcome released = Outcome(m_model.CloseReadTable());
    const StepOutcome closed = Outcome(m_model.CloseDatabase());
    return {closed.succeeded, released.text + closed.text};
}

} // namespace Morvik::sql::tests
