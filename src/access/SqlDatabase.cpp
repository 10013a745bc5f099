#include <sql/SqlDatabase.h>

#include <sql/SqlError.h>

#include <utility>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <sqlite3.h>

#include "access/ResultCode.h"
#include "access/SqliteErrors.h"

namespace Morvik::sql {

namespace {

namespace fs = boost::filesystem;

// Creates the missing parent directory of the path, as create_directories() does. Boost 1.74 ends the process when
// memory runs out while it creates a missing ancestor, so every ancestor is created by a separate call.
void CreateParent(const fs::path& path)
{
    const fs::path parent = path.parent_path();
    if (!parent.empty() && !fs::exists(parent)) {
        CreateParent(parent);
        fs::create_directories(parent);
    }
}

} // namespace

class __attribute__((visibility("hidden"))) SqlDatabase::Impl {
public:
    bool CreateParentDirectory(const std::string& path);

    SqlError record;
    sqlite3* handle = nullptr;
};

bool SqlDatabase::Impl::CreateParentDirectory(const std::string& path)
{
    try {
        CreateParent(path);
        return true;
    } catch (...) {
        record.SetError(NotOpen);
        record.SetErrorMsg("Create directory failed: " + path);
        return false;
    }
}

SqlDatabase::SqlDatabase() : m_impl(std::make_unique<Impl>()) {}

SqlDatabase::SqlDatabase(SqlDatabase&& other) noexcept = default;

// A connection that this object still holds is not closed. Callers rely on that: its raw handle may still be in use.
SqlDatabase& SqlDatabase::operator=(SqlDatabase&& other) noexcept = default;

SqlDatabase::~SqlDatabase()
{
    Close();
}

bool SqlDatabase::Open(const std::string& path, bool readOnly)
{
    if (IsOpen()) {
        return false;
    }
    // The directory is created for a read-only open too; callers rely on finding it afterwards.
    if (path[0] != ':' && !m_impl->CreateParentDirectory(path)) {
        return false;
    }

    const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    m_impl->record.SetError(sqlite3_open_v2(path.c_str(), &m_impl->handle, flags, nullptr));
    if (m_impl->record.Succeeded()) {
        return true;
    }

    // SQLite returns a handle even for a failed open, because the handle has the message. It is null only when memory
    // ran out.
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> failed(std::exchange(m_impl->handle, nullptr),
                                                                    sqlite3_close);
    if (failed != nullptr) {
        SetErrorMsgFrom(failed.get(), m_impl->record);
    }
    return false;
}

bool SqlDatabase::Close()
{
    if (!IsOpen()) {
        return true;
    }
    m_impl->record.SetError(sqlite3_close(m_impl->handle));
    if (m_impl->record.Succeeded()) {
        m_impl->handle = nullptr;
        return true;
    }
    SetErrorMsgFrom(m_impl->handle, m_impl->record);
    return false;
}

bool SqlDatabase::IsOpen() const
{
    return m_impl->handle != nullptr;
}

template <>
sqlite3* SqlDatabase::GetNativeDatabaseInstance<sqlite3>()
{
    return m_impl->handle;
}

int SqlDatabase::GetLastError() const
{
    return m_impl->record.GetLastError();
}

const std::string& SqlDatabase::GetLastErrorMsg() const
{
    return m_impl->record.GetLastErrorMsg();
}

} // namespace Morvik::sql
