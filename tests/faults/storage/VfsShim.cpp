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

// Forwards a call to the real file.
template <typename... Parameters, typename... Arguments>
int Forward(sqlite3_file* file, int (*sqlite3_io_methods::*method)(sqlite3_file*, Parameters...),
            Arguments... arguments)
{
    sqlite3_file* const real = Of(file).Real();
    return (real->pMethods->*method)(real, arguments...);
}

// Forwards a call to the real file, or makes it fail.
template <typename... Parameters, typename... Arguments>
int Run(FileCall kind, sqlite3_file* file, int (*sqlite3_io_methods::*method)(sqlite3_file*, Parameters...),
        Arguments... arguments)
{
    return Of(file).System().Run(kind, [&] { return Forward(file, method, arguments...); });
}

// Leaves out the calls of version 3, which map files into memory: SQLite would then read and write without calling this
// file system. Releasing a shared lock never fails.
constexpr sqlite3_io_methods Methods = {
    .iVersion = 2,
    .xClose =
        [](sqlite3_file* file) {
            delete &Of(file);
            return SQLITE_OK;
        },
    .xRead = [](sqlite3_file* file, void* bytes, int count,
                sqlite3_int64 at) { return Run(FileCall::Read, file, &sqlite3_io_methods::xRead, bytes, count, at); },
    .xWrite = [](sqlite3_file* file, const void* bytes, int count,
                 sqlite3_int64 at) { return Of(file).Write(bytes, count, at); },
    .xTruncate = [](sqlite3_file* file, sqlite3_int64 size) { return Of(file).Truncate(size); },
    .xSync = [](sqlite3_file* file, int) { return Of(file).Sync(); },
    .xFileSize =
        [](sqlite3_file* file, sqlite3_int64* size) {
            return Run(FileCall::FileSize, file, &sqlite3_io_methods::xFileSize, size);
        },
    .xLock = [](sqlite3_file* file, int level) { return Run(FileCall::Lock, file, &sqlite3_io_methods::xLock, level); },
    .xUnlock = [](sqlite3_file* file,
                  int level) { return Run(FileCall::Unlock, file, &sqlite3_io_methods::xUnlock, level); },
    .xCheckReservedLock =
        [](sqlite3_file* file, int* reserved) {
            return Run(FileCall::CheckReservedLock, file, &sqlite3_io_methods::xCheckReservedLock, reserved);
        },
    .xFileControl =
        [](sqlite3_file* file, int operation, void* argument) {
            return Forward(file, &sqlite3_io_methods::xFileControl, operation, argument);
        },
    .xSectorSize = [](sqlite3_file* file) { return Forward(file, &sqlite3_io_methods::xSectorSize); },
    .xDeviceCharacteristics =
        [](sqlite3_file* file) { return Forward(file, &sqlite3_io_methods::xDeviceCharacteristics); },
    .xShmMap =
        [](sqlite3_file* file, int region, int size, int extend, volatile void** memory) {
            return Run(FileCall::MapShared, file, &sqlite3_io_methods::xShmMap, region, size, extend, memory);
        },
    .xShmLock =
        [](sqlite3_file* file, int offset, int count, int flags) {
            constexpr auto ShmLock = &sqlite3_io_methods::xShmLock;
            return (flags & SQLITE_SHM_LOCK) != 0 ? Run(FileCall::LockShared, file, ShmLock, offset, count, flags)
                                                  : Forward(file, ShmLock, offset, count, flags);
        },
    .xShmBarrier = [](sqlite3_file* file) { Of(file).Real()->pMethods->xShmBarrier(Of(file).Real()); },
    .xShmUnmap = [](sqlite3_file* file,
                    int deleteIt) { return Forward(file, &sqlite3_io_methods::xShmUnmap, deleteIt); },
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

// SQLite's calls on the file system.
struct VfsShim::Calls {
    static VfsShim& Of(sqlite3_vfs* own) { return *static_cast<VfsShim*>(own->pAppData); }
    static sqlite3_vfs* Real(sqlite3_vfs* own) { return Of(own).m_real; }

    static int Open(sqlite3_vfs* own, const char* path, sqlite3_file* file, int flags, int* outFlags)
    {
        VfsShim& system = Of(own);
        auto real = std::make_unique<std::byte[]>(static_cast<std::size_t>(system.m_real->szOsFile));
        auto* const opened = reinterpret_cast<sqlite3_file*>(real.get());
        file->pMethods = nullptr;
        const int code = system.Open(path, opened, flags, outFlags);
        if (code != SQLITE_OK) {
            if (opened->pMethods != nullptr) {
                opened->pMethods->xClose(opened);
            }
            return code;
        }
        reinterpret_cast<OpenedFile*>(file)->file = system.Interpose(path, flags, std::move(real)).release();
        file->pMethods = &Methods;
        return SQLITE_OK;
    }
};

VfsShim::VfsShim() : m_real(sqlite3_vfs_find(nullptr))
{
    m_own.iVersion = 2;
    m_own.szOsFile = sizeof(OpenedFile);
    m_own.mxPathname = m_real->mxPathname;
    m_own.zName = "interposed";
    m_own.pAppData = this;
    m_own.xOpen = Calls::Open;
    m_own.xDelete = [](sqlite3_vfs* own, const char* path, int syncDirectory) {
        return Calls::Of(own).Delete(path, syncDirectory);
    };
    m_own.xAccess = [](sqlite3_vfs* own, const char* path, int flags, int* answer) {
        return Calls::Of(own).Run(FileCall::Access,
                                  [&] { return Calls::Real(own)->xAccess(Calls::Real(own), path, flags, answer); });
    };
    m_own.xFullPathname = [](sqlite3_vfs* own, const char* path, int count, char* full) {
        return Calls::Real(own)->xFullPathname(Calls::Real(own), path, count, full);
    };
    m_own.xRandomness = [](sqlite3_vfs* own, int count, char* bytes) {
        return Calls::Real(own)->xRandomness(Calls::Real(own), count, bytes);
    };
    m_own.xSleep = [](sqlite3_vfs*, int microseconds) { return microseconds; };
    m_own.xCurrentTime = [](sqlite3_vfs* own, double* now) {
        return Calls::Real(own)->xCurrentTime(Calls::Real(own), now);
    };
    m_own.xCurrentTimeInt64 = [](sqlite3_vfs* own, sqlite3_int64* now) {
        return Calls::Real(own)->xCurrentTimeInt64(Calls::Real(own), now);
    };
    m_own.xGetLastError = [](sqlite3_vfs* own, int count, char* text) {
        return Calls::Real(own)->xGetLastError(Calls::Real(own), count, text);
    };
    if (sqlite3_vfs_register(&m_own, 1) != SQLITE_OK) {
        throw std::runtime_error("SQLite does not take the file system");
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

std::unique_ptr<InterposedFile> VfsShim::Interpose(const char* /*path*/, int /*flags*/,
                                                   std::unique_ptr<std::byte[]> real)
{
    return std::make_unique<InterposedFile>(*this, std::move(real));
}

} // namespace Morvik::sql::tests
