#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"
#include "model/WriteStatements.h"

namespace Morvik::sql {

[[gnu::cold, gnu::noinline]] void DatabaseApi::Impl::FailInvalidCell(const InvalidCell& cell)
{
    SqlBuffer text(0);
    AppendInvalidCellMessage(text, cell);
    Fail(MissingValue, text.Text());
}

bool DatabaseApi::Impl::RunWrite(WriteStatement& statement)
{
    if (statement.invalidCell) {
        FailInvalidCell(*statement.invalidCell);
    }
    RunCommand(statement.sql.Text());
    return Succeeded();
}

bool DatabaseApi::Impl::Write(const std::string& name, const DbTableDataWrite& data)
{
    ResetCode();
    if (name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    InsertStatement statement(name, data);
    return RunWrite(statement);
}

bool DatabaseApi::Impl::Update(const std::string& name, const DbTableDataWrite& data, const std::string& condition)
{
    ResetCode();
    if (name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    if (data.columns.empty()) {
        return Fail(MissingValue, "Missing column names.");
    }
    UpdateStatement statement(name, data, condition);
    return RunWrite(statement);
}

bool DatabaseApi::WriteTableValues(const std::string& table, const DbTableDataWrite& data)
{
    return m_impl->Write(table, data);
}

bool DatabaseApi::UpdateTableValues(const std::string& table, const DbTableDataWrite& data,
                                    const std::string& condition)
{
    return m_impl->Update(table, data, condition);
}

} // namespace Morvik::sql
