#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <memory>
#include <utility>

namespace Morvik::sql::tests {

/// The calls of SQLite on files that can fail.
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
};

/// How a call fails: the code that SQLite receives, and whether the call has an effect. A write then writes half of its
/// bytes, and every other call does all of its work.
struct FileFailure {
    int code = SQLITE_OK;
    bool carriedOut = false;
};

class InterposedFile;

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
    /// Opens the file in `real`, zeroed memory of the size that the real file system needs.
    virtual int Open(const char* path, sqlite3_file* real, int flags, int* outFlags);
    virtual int Delete(const char* path, int syncDirectory);

    /// Returns the object that SQLite uses for an opened file. `path` is null for a temporary file without a name.
    virtual std::unique_ptr<InterposedFile> Interpose(const char* path, int flags, std::unique_ptr<std::byte[]> real);

private:
    // Registered with SQLite, which gives it to every call.
    struct Registered : sqlite3_vfs {
        VfsShim* shim;
    };

    static VfsShim& Of(sqlite3_vfs* own) { return *static_cast<Registered*>(own)->shim; }

    sqlite3_vfs* m_real;
    Registered m_own;
};

/// One file that SQLite opened. A derived class overrides the calls that it changes.
class InterposedFile {
public:
    /// Takes over an opened file of the real file system, in memory of the size that the real file system needs.
    InterposedFile(VfsShim& system, std::unique_ptr<std::byte[]> real) : m_system(system), m_real(std::move(real)) {}
    virtual ~InterposedFile() { Real()->pMethods->xClose(Real()); }

    InterposedFile(const InterposedFile&) = delete;
    InterposedFile& operator=(const InterposedFile&) = delete;

    virtual int Write(const void* bytes, int count, sqlite3_int64 offset);
    virtual int Truncate(sqlite3_int64 size);
    virtual int Sync();

    VfsShim& System() const { return m_system; }
    sqlite3_file* Real() const { return reinterpret_cast<sqlite3_file*>(m_real.get()); }

private:
    VfsShim& m_system;
    std::unique_ptr<std::byte[]> m_real;
};

inline std::unique_ptr<InterposedFile> VfsShim::Interpose(const char* /*path*/, int /*flags*/,
                                                          std::unique_ptr<std::byte[]> real)
{
    return std::make_unique<InterposedFile>(*this, std::move(real));
}

} // namespace Morvik::sql::tests
