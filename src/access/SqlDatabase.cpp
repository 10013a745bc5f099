#include <sql/SqlDatabase.h>

#include <sql/SqlError.h>

#include <cstddef>
#include <string_view>
#include <utility>

#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <sqlite3.h>
#include <sys/stat.h>

#include "access/ConnectionMessage.h"
#include "access/ResultCode.h"

namespace Morvik::sql {

namespace {

// The one name that SQLite takes for no file's.
constexpr std::string_view InMemory = ":memory:";

// Nothing can be opened behind a device.
constexpr const char* NoFile = "/dev/null/none";

} // namespace

class __attribute__((visibility("hidden"))) SqlDatabase::Impl {
public:
    bool CreateMissingDirectories(const std::string& path);

    SqlError record;
    sqlite3* handle = nullptr;
};

bool SqlDatabase::Impl::CreateMissingDirectories(const std::string& path)
{
    try {
        const boost::filesystem::path directory = boost::filesystem::path(path).parent_path();
        if (!boost::filesystem::exists(directory)) {
            // Level by level, because Boost ends the process when memory runs out while it makes a missing ancestor.
            for (std::size_t end = 0; (end = path.find('/', end + 1)) != std::string::npos;) {
                boost::filesystem::create_directory(std::string(path.data(), end));
            }
        }
        return true;
    } catch (...) {
        record.SetError(NotOpen);
        record.SetErrorMsg("Create directory failed: " + path);
        return false;
    }
}

SqlDatabase::SqlDatabase() : m_impl(std::make_unique<Impl>()) {}

SqlDatabase::SqlDatabase(SqlDatabase&& other) noexcept = default;

// Closing here would be a surprise to callers that keep the raw handle: they close before assigning over a connection.
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
    const char* file = path.c_str();
    if (path != InMemory) {
        struct stat64 status;
        const bool exists = stat64(file, &status) == 0;
        // The directory is made for a read-only open too; applications rely on finding it afterwards. Where the file
        // exists, so does its directory; a name with a colon in front is looked for where the process stands.
        if (!exists && *file != ':' && !m_impl->CreateMissingDirectories(path)) {
            return false;
        }
        // Opening a named pipe may wait for its other end, perhaps for ever. SQLite, which would find only afterwards
        // that it is no file, gets to refuse another path in its place.
        if (exists && S_ISFIFO(status.st_mode)) {
            file = NoFile;
        }
    }

    const int flags = readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    m_impl->record.SetError(sqlite3_open_v2(file, &m_impl->handle, flags, nullptr));
    if (m_impl->record.Succeeded()) {
        return true;
    }

    // SQLite hands back a handle even for a failed open, to carry the message; it is null only when memory ran out.
    const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> failed(std::exchange(m_impl->handle, nullptr),
                                                                    sqlite3_close);
    if (failed != nullptr) {
        RecordConnectionMessage(m_impl->record, failed.get());
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
    RecordConnectionMessage(m_impl->record, m_impl->handle);
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
