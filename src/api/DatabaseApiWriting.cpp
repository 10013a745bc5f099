#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"
#include "model/WriteStatements.h"

namespace Morvik::sql {

bool DatabaseApi::Impl::RunWrite(const WriteStatement& statement)
{
    if (statement.invalidCell) {
        Fail(MissingValue, InvalidCellMessage(*statement.invalidCell));
    }
    RunCommand(statement.sql);
    return Succeeded();
}

bool DatabaseApi::Impl::Write(const std::string& name, const DbTableDataWrite& data)
{
    ResetCode();
    if (name.empty()) {
        return Fail(MissingValue, "Missing table name.");
    }
    return RunWrite(InsertStatement(name, data));
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
    return RunWrite(UpdateStatement(name, data, condition));
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
