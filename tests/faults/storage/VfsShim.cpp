#include "faults/storage/VfsShim.h"

#include <stdexcept>

namespace Morvik::sql::tests {

namespace {

// The data in the memory that SQLite reserves for an open file.
struct OpenedFile {
    sqlite3_file base;
    InterposedFile* file;
};

InterposedFile& Of(sqlite3_file* file)
{
    return *reinterpret_cast<OpenedFile*>(file)->file;
}

// A call that the real file carries out, or that fails if the call is of a kind that can fail.
template <auto Method, FileCall... Kind>
struct Forwarded;

template <typename... Parameters, int (*sqlite3_io_methods::*Method)(sqlite3_file*, Parameters...), FileCall... Kind>
struct Forwarded<Method, Kind...> {
    static int Call(sqlite3_file* file, Parameters... parameters)
    {
        sqlite3_file* const real = Of(file).Real();
        const auto call = [&] { return (real->pMethods->*Method)(real, parameters...); };
        if constexpr (sizeof...(Kind) == 0) {
            return call();
        } else {
            return Of(file).System().Run(Kind..., call);
        }
    }
};

// Releasing a shared lock never fails.
int CallShmLock(sqlite3_file* file, int offset, int count, int flags)
{
    constexpr auto ShmLock = &sqlite3_io_methods::xShmLock;
    return (flags & SQLITE_SHM_LOCK) != 0 ? Forwarded<ShmLock, FileCall::LockShared>::Call(file, offset, count, flags)
                                          : Forwarded<ShmLock>::Call(file, offset, count, flags);
}

// Leaves out the calls of version 3, which map files into memory: SQLite would then read and write without calling this
// file system.
constexpr sqlite3_io_methods Methods = {
    .iVersion = 2,
    .xClose =
        [](sqlite3_file* file) {
            delete &Of(file);
            return SQLITE_OK;
        },
    .xRead = Forwarded<&sqlite3_io_methods::xRead, FileCall::Read>::Call,
    .xWrite = [](sqlite3_file* file, const void* bytes, int count,
                 sqlite3_int64 at) { return Of(file).Write(bytes, count, at); },
    .xTruncate = [](sqlite3_file* file, sqlite3_int64 size) { return Of(file).Truncate(size); },
    .xSync = [](sqlite3_file* file, int) { return Of(file).Sync(); },
    .xFileSize = Forwarded<&sqlite3_io_methods::xFileSize, FileCall::FileSize>::Call,
    .xLock = Forwarded<&sqlite3_io_methods::xLock, FileCall::Lock>::Call,
    .xUnlock = Forwarded<&sqlite3_io_methods::xUnlock, FileCall::Unlock>::Call,
    .xCheckReservedLock = Forwarded<&sqlite3_io_methods::xCheckReservedLock, FileCall::CheckReservedLock>::Call,
    .xFileControl = Forwarded<&sqlite3_io_methods::xFileControl>::Call,
    .xSectorSize = Forwarded<&sqlite3_io_methods::xSectorSize>::Call,
    .xDeviceCharacteristics = Forwarded<&sqlite3_io_methods::xDeviceCharacteristics>::Call,
    .xShmMap = Forwarded<&sqlite3_io_methods::xShmMap, FileCall::MapShared>::Call,
    .xShmLock = CallShmLock,
    .xShmBarrier = [](sqlite3_file* file) { Of(file).Real()->pMethods->xShmBarrier(Of(file).Real()); },
    .xShmUnmap = Forwarded<&sqlite3_io_methods::xShmUnmap>::Call,
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

} // namespace

int InterposedFile::Write(const void* bytes, int count, sqlite3_int64 offset)
{
    const FileFailure failure = m_system.Fails(FileCall::Write);
    const auto write = [&](int size) { return Real()->pMethods->xWrite(Real(), bytes, size, offset); };
    if (failure.carriedOut) {
        write(count / 2);
    }
    return failure.code != SQLITE_OK ? failure.code : write(count);
}

int InterposedFile::Truncate(sqlite3_int64 size)
{
    return m_system.Run(FileCall::Truncate, [&] { return Real()->pMethods->xTruncate(Real(), size); });
}

int InterposedFile::Sync()
{
    return m_system.Run(FileCall::Sync, [] { return SQLITE_OK; });
}

// The calls that are not replaced here are those of the real file system.
VfsShim::VfsShim() : m_real(sqlite3_vfs_find(nullptr)), m_own{*m_real, this}
{
    m_own.szOsFile = sizeof(OpenedFile);
    m_own.zName = "interposed";
    m_own.xOpen = [](sqlite3_vfs* own, const char* path, sqlite3_file* file, int flags, int* outFlags) {
        VfsShim& system = Of(own);
        auto real = std::make_unique<std::byte[]>(static_cast<std::size_t>(system.m_real->szOsFile));
        auto* const opened = reinterpret_cast<sqlite3_file*>(real.get());
        file->pMethods = nullptr;
        const int code = system.Open(path, opened, flags, outFlags);
        if (code == SQLITE_OK) {
            reinterpret_cast<OpenedFile*>(file)->file = system.Interpose(path, flags, std::move(real)).release();
            file->pMethods = &Methods;
        } else if (opened->pMethods != nullptr) {
            opened->pMethods->xClose(opened);
        }
        return code;
    };
    m_own.xDelete = [](sqlite3_vfs* own, const char* path, int syncDirectory) {
        return Of(own).Delete(path, syncDirectory);
    };
    m_own.xAccess = [](sqlite3_vfs* own, const char* path, int flags, int* answer) {
        sqlite3_vfs* const real = Of(own).m_real;
        return Of(own).Run(FileCall::Access, [&] { return real->xAccess(real, path, flags, answer); });
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
