#include "faults/storage/VfsShim.h"

#include <stdexcept>

namespace Morvik::sql::tests {

// An open file, in the memory that SQLite reserves for it. The real file is behind it in the same memory.
struct alignas(8) VfsShim::File {
    sqlite3_file base;
    VfsShim* shim;
    const char* path; // valid until the file is closed; null for a temporary file without a name

    static File& Of(sqlite3_file* file) { return *reinterpret_cast<File*>(file); }
    static sqlite3_file* Real(sqlite3_file* file) { return reinterpret_cast<sqlite3_file*>(&Of(file) + 1); }

    // A call that is forwarded to the real file, unless it fails as a call of this kind.
    template <auto Method, FileCall Kind = FileCall::Other>
    struct Forwarded;

    template <typename... Parameters, int (*sqlite3_io_methods::*Method)(sqlite3_file*, Parameters...), FileCall Kind>
    struct Forwarded<Method, Kind> {
        static int Call(sqlite3_file* file, Parameters... parameters)
        {
            return Of(file).shim->Run(Kind, [&] { return (Real(file)->pMethods->*Method)(Real(file), parameters...); });
        }
    };

    static int Write(sqlite3_file* file, const void* bytes, int count, sqlite3_int64 position)
    {
        VfsShim& shim = *Of(file).shim;
        shim.Changing(Of(file).path, position, {static_cast<const char*>(bytes), static_cast<std::size_t>(count)});
        const FileFailure failure = shim.Fails(FileCall::Write);
        const auto write = [&](int size) { return Real(file)->pMethods->xWrite(Real(file), bytes, size, position); };
        if (failure.carriedOut) {
            write(count / 2);
        }
        return failure.code != SQLITE_OK ? failure.code : write(count);
    }

    static int Truncate(sqlite3_file* file, sqlite3_int64 size)
    {
        Of(file).shim->Changing(Of(file).path, size, {});
        return Forwarded<&sqlite3_io_methods::xTruncate, FileCall::Truncate>::Call(file, size);
    }

    static int Sync(sqlite3_file* file, int /*flags*/)
    {
        const int code = Of(file).shim->Run(FileCall::Sync, [] { return SQLITE_OK; });
        if (code == SQLITE_OK) {
            Of(file).shim->Synced(Of(file).path);
        }
        return code;
    }

    static int ShmLock(sqlite3_file* file, int offset, int count, int flags)
    {
        const FileCall kind = (flags & SQLITE_SHM_LOCK) != 0 ? FileCall::LockShared : FileCall::Other;
        return Of(file).shim->Run(kind,
                                  [&] { return Real(file)->pMethods->xShmLock(Real(file), offset, count, flags); });
    }

    static const sqlite3_io_methods Methods;
};

// Leaves out the calls of version 3, which map files into memory: SQLite would then read and write without calling this
// file system.
constexpr sqlite3_io_methods VfsShim::File::Methods = {
    .iVersion = 2,
    .xClose = Forwarded<&sqlite3_io_methods::xClose>::Call,
    .xRead = Forwarded<&sqlite3_io_methods::xRead, FileCall::Read>::Call,
    .xWrite = Write,
    .xTruncate = Truncate,
    .xSync = Sync,
    .xFileSize = Forwarded<&sqlite3_io_methods::xFileSize, FileCall::FileSize>::Call,
    .xLock = Forwarded<&sqlite3_io_methods::xLock, FileCall::Lock>::Call,
    .xUnlock = Forwarded<&sqlite3_io_methods::xUnlock, FileCall::Unlock>::Call,
    .xCheckReservedLock = Forwarded<&sqlite3_io_methods::xCheckReservedLock, FileCall::CheckReservedLock>::Call,
    .xFileControl = Forwarded<&sqlite3_io_methods::xFileControl>::Call,
    .xSectorSize = Forwarded<&sqlite3_io_methods::xSectorSize>::Call,
    .xDeviceCharacteristics = Forwarded<&sqlite3_io_methods::xDeviceCharacteristics>::Call,
    .xShmMap = Forwarded<&sqlite3_io_methods::xShmMap, FileCall::MapShared>::Call,
    .xShmLock = ShmLock,
    .xShmBarrier = [](sqlite3_file* file) { Real(file)->pMethods->xShmBarrier(Real(file)); },
    .xShmUnmap = Forwarded<&sqlite3_io_methods::xShmUnmap>::Call,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

// The calls that are not replaced here are those of the real file system. They do not use pAppData.
VfsShim::VfsShim() : m_real(sqlite3_vfs_find(nullptr)), m_own(*m_real)
{
    m_own.szOsFile = static_cast<int>(sizeof(File)) + m_real->szOsFile;
    m_own.zName = "interposed";
    m_own.pAppData = this;
    m_own.xOpen = [](sqlite3_vfs* own, const char* path, sqlite3_file* file, int flags, int* outFlags) {
        const int code = Of(own).Open(path, File::Real(file), flags, outFlags);
        File::Of(file) = {{code == SQLITE_OK ? &File::Methods : nullptr}, &Of(own), path};
        return code;
    };
    m_own.xDelete = [](sqlite3_vfs* own, const char* path, int syncDirectory) {
        return Of(own).Delete(path, syncDirectory);
    };
    m_own.xAccess = [](sqlite3_vfs* own, const char* path, int flags, int* result) {
        sqlite3_vfs* const real = Of(own).m_real;
        return Of(own).Run(FileCall::Access, [&] { return real->xAccess(real, path, flags, result); });
    };
    m_own.xSleep = [](sqlite3_vfs*, int microseconds) { return microseconds; };
    if (sqlite3_vfs_register(&m_own, 1) != SQLITE_OK) {
        throw std::runtime_error("SQLite rejects the file system");
    }
}

VfsShim::~VfsShim()
{
    sqlite3_vfs_unregister(&m_own);
    sqlite3_vfs_register(m_real, 1);
}

int VfsShim::Open(const char* path, sqlite3_file* real, int flags, int* outFlags)
{
    return Run(FileCall::Open, [&] { return m_real->xOpen(m_real, path, real, flags, outFlags); });
}

int VfsShim::Delete(const char* path, int /*syncDirectory*/)
{
    return Run(FileCall::Delete, [&] { return m_real->xDelete(m_real, path, 0); });
}

} // namespace Morvik::sql::tests
