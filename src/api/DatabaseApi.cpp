#include <sql/DatabaseApi.h>

#include <cstring>

#include "access/ExecuteText.h"
#include "access/ResultCode.h"
#include "api/DatabaseApiImpl.h"

namespace Morvik::sql {

DatabaseApi::Impl::Impl() : table(database) {}

// Neither function is inlined: a caller that makes a view on the stack needs code that protects the stack. assign()
// receives the fields of the view, because operator= takes the view's address and needs that code too.
[[gnu::noinline]] bool DatabaseApi::Impl::Fail(int failureCode, const char* failureMessage)
{
    return Fail(failureCode, {failureMessage, std::strlen(failureMessage)});
}

[[gnu::noinline]] bool DatabaseApi::Impl::Fail(int failureCode, std::string_view failureMessage)
{
    code = failureCode;
    message.assign(failureMessage.data(), failureMessage.size());
    return false;
}

bool DatabaseApi::Impl::CheckOpen()
{
    return database.IsOpen() || Fail(NotOpen, "Database isn't open.");
}

bool DatabaseApi::Impl::RunCommand(const std::string& sql)
{
    SqlError error;
    if (ExecuteText(database, sql, error)) {
        return true;
    }
    CopyErrorFrom(error);
    return false;
}

bool DatabaseApi::Impl::Execute(const std::string& sql)
{
    ResetCode();
    if (sql.empty()) {
        return Fail(MissingValue, "Missing command.");
    }
    RunCommand(sql);
    return Succeeded();
}

DatabaseApi::DatabaseApi() : m_impl(std::make_unique<Impl>()) {}

DatabaseApi::~DatabaseApi() = default;

bool DatabaseApi::OpenDatabase(const std::string& path, bool readOnly)
{
    m_impl->ResetCode();
    if (!m_impl->database.Open(path, readOnly)) {
        // A second open leaves the connection's error unchanged, so the code copied here may be that of a success.
        m_impl->CopyErrorFrom(m_impl->database);
    }
    return m_impl->Succeeded();
}

bool DatabaseApi::CloseDatabase()
{
    m_impl->ResetCode();
    if (!m_impl->database.Close()) {
        m_impl->CopyErrorFrom(m_impl->database);
    }
    return m_impl->Succeeded();
}

bool DatabaseApi::IsOpen() const
{
    return m_impl->database.IsOpen();
}

bool DatabaseApi::Execute(const std::string& sql)
{
    return m_impl->Execute(sql);
}

SqlCommand DatabaseApi::PrepareStatement(std::string_view sql) const
{
    SqlCommand command(m_impl->database);
    command.Prepare(sql);
    return command;
}

int DatabaseApi::GetLastError() const
{
    return m_impl->code;
}

const std::string& DatabaseApi::GetLastErrorMsg() const
{
    return m_impl->message;
}

bool DatabaseApi::Succeeded() const
{
    return m_impl->Succeeded();
}

bool DatabaseApi::Failed() const
{
    return !Succeeded();
}

} // namespace Morvik::sql
