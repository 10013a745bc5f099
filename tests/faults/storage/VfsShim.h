#pragma once

#include <sqlite3.h>

#include <string_view>

namespace Morvik::sql::tests {

/// The kinds of calls that SQLite makes on files.
enum class FileCall {
    Open,
    Read,
    Write,
    Truncate,
    Sync,
    FileSize,
    Delete,
    Access,
    Lock,
    Unlock,
    CheckReservedLock,
    MapShared,
    LockShared,

    /// Every other call; none of them can fail.
    Other,
};

/// How a call fails: the code that SQLite receives, and whether the call has an effect. With an effect, a write
/// writes half of its bytes, and every other call does all of its work. A failed opening never has an effect.
struct FileFailure {
    int code = SQLITE_OK;
    bool carriedOut = false;
};

/// Replaces SQLite's default file system while the object lives, and forwards to it every call that does not fail.
/// Every database that is opened without naming a file system uses this object, so close it before the object is
/// destroyed. Syncs do not wait for the disk, because the files must survive the process and not the machine. SQLite's
/// pauses before it requests a lock again take no time.
class VfsShim {
public:
    VfsShim();
    virtual ~VfsShim();

    VfsShim(const VfsShim&) = delete;
    VfsShim& operator=(const VfsShim&) = delete;

    /// Makes the call, or makes it fail.
    template <typename Call>
    int Run(FileCall kind, const Call& call)
    {
        const FileFailure failure = Fails(kind);
        if (failure.code == SQLITE_OK) {
            return call();
        }
        if (failure.carriedOut) {
            call();
        }
        return failure.code;
    }

    /// Is called before every call on a file. Code 0 lets the call succeed.
    virtual FileFailure Fails(FileCall call) = 0;

protected:
    /// Opens the file in `real`, memory of the size that the real file system needs.
    virtual int Open(const char* path, sqlite3_file* real, int flags, int* outFlags);
    virtual int Delete(const char* path, int syncDirectory);

    /// Is called before SQLite writes `bytes` into a file, or truncates the file to the size `position`, which is a
    /// change without bytes. The path of a file without a name is null.
    virtual void Changing(const char* /*path*/, sqlite3_int64 /*position*/, std::string_view /*bytes*/) {}

    /// Is called after a successful sync of a file, whose path is null if it has no name.
    virtual void Synced(const char* /*path*/) {}

private:
    struct File;

    static VfsShim& Of(sqlite3_vfs* own) { return *static_cast<VfsShim*>(own->pAppData); }

    sqlite3_vfs* m_real;
    sqlite3_vfs m_own; // registered with SQLite, which passes it to every call
};

} // namespace Morvik::sql::tests
