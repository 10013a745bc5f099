#include "support/VfsShim.h"

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

sqlite3_file* RealOf(sqlite3_file* file)
{
    return Of(file).Real();
}

int Close(sqlite3_file* file)
{
    delete &Of(file);
    return SQLITE_OK;
}

// Leaves out the calls of version 3, which map files into memory: SQLite would then read and write without calling this
// file system.
constexpr sqlite3_io_methods Methods = {
    .iVersion = 2,
    .xClose = Close,
    .xRead = [](sqlite3_file* file, void* bytes, int count,
                sqlite3_int64 offset) { return Of(file).Read(bytes, count, offset); },
    .xWrite = [](sqlite3_file* file, const void* bytes, int count,
                 sqlite3_int64 offset) { return Of(file).Write(bytes, count, offset); },
    .xTruncate = [](sqlite3_file* file, sqlite3_int64 size) { return Of(file).Truncate(size); },
    .xSync = [](sqlite3_file* file, int flags) { return Of(file).Sync(flags); },
    .xFileSize = [](sqlite3_file* file, sqlite3_int64* size) { return Of(file).FileSize(*size); },
    .xLock = [](sqlite3_file* file, int level) { return Of(file).Lock(level); },
    .xUnlock = [](sqlite3_file* file, int level) { return Of(file).Unlock(level); },
    .xCheckReservedLock = [](sqlite3_file* file, int* reserved) { return Of(file).CheckReservedLock(*reserved); },
    .xFileControl =
        [](sqlite3_file* file, int operation, void* argument) {
            return RealOf(file)->pMethods->xFileControl(RealOf(file), operation, argument);
        },
    .xSectorSize = [](sqlite3_file* file) { return RealOf(file)->pMethods->xSectorSize(RealOf(file)); },
    .xDeviceCharacteristics =
        [](sqlite3_file* file) { return RealOf(file)->pMethods->xDeviceCharacteristics(RealOf(file)); },
    .xShmMap = [](sqlite3_file* file, int region, int size, int extend,
                  volatile void** memory) { return Of(file).MapShared(region, size, extend, memory); },
    .xShmLock = [](sqlite3_file* file, int offset, int count,
                   int flags) { return Of(file).LockShared(offset, count, flags); },
    .xShmBarrier = [](sqlite3_file* file) { RealOf(file)->pMethods->xShmBarrier(RealOf(file)); },
    .xShmUnmap = [](sqlite3_file* file,
                    int deleteIt) { return RealOf(file)->pMethods->xShmUnmap(RealOf(file), deleteIt); },
    .xFetch = nullptr,
    .xUnfetch = nullptr,
};

} // namespace

InterposedFile::~InterposedFile()
{
    Real()->pMethods->xClose(Real());
}

int InterposedFile::Read(void* bytes, int count, sqlite3_int64 offset)
{
    return Real()->pMethods->xRead(Real(), bytes, count, offset);
}

int InterposedFile::Write(const void* bytes, int count, sqlite3_int64 offset)
{
    return Real()->pMethods->xWrite(Real(), bytes, count, offset);
}

int InterposedFile::Truncate(sqlite3_int64 size)
{
    return Real()->pMethods->xTruncate(Real(), size);
}

int InterposedFile::Sync(int flags)
{
    return Real()->pMethods->xSync(Real(), flags);
}

int InterposedFile::FileSize(sqlite3_int64& size)
{
    return Real()->pMethods->xFileSize(Real(), &size);
}

int InterposedFile::Lock(int level)
{
    return Real()->pMethods->xLock(Real(), level);
}

int InterposedFile::Unlock(int level)
{
    return Real()->pMethods->xUnlock(Real(), level);
}

int InterposedFile::CheckReservedLock(int& reserved)
{
    return Real()->pMethods->xCheckReservedLock(Real(), &reserved);
}

int InterposedFile::MapShared(int region, int size, int extend, volatile void** memory)
{
    return Real()->pMethods->xShmMap(Real(), region, size, extend, memory);
}

int InterposedFile::LockShared(int offset, int count, int flags)
{
    return Real()->pMethods->xShmLock(Real(), offset, count, flags);
}

// SQLite's calls on the file system, forwarded to the object.
struct VfsShim::Calls {
    static VfsShim& Of(sqlite3_vfs* own) { return *static_cast<VfsShim*>(own->pAppData); }

    static int Open(sqlite3_vfs* own, const char* path, sqlite3_file* file, int flags, int* outFlags)
    {
        VfsShim& system = Of(own);
        const auto size = static_cast<std::size_t>(system.m_real->szOsFile);
        auto real = std::make_unique<std::byte[]>(size);
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

    static int Delete(sqlite3_vfs* own, const char* path, int syncDirectory)
    {
        return Of(own).Delete(path, syncDirectory);
    }

    static int Access(sqlite3_vfs* own, const char* path, int flags, int* answer)
    {
        return Of(own).Access(path, flags, *answer);
    }

    static sqlite3_vfs* Real(sqlite3_vfs* own) { return Of(own).m_real; }
};

VfsShim::VfsShim() : m_real(sqlite3_vfs_find(nullptr))
{
    m_own.iVersion = 2;
    m_own.szOsFile = sizeof(OpenedFile);
    m_own.mxPathname = m_real->mxPathname;
    m_own.zName = "interposed";
    m_own.pAppData = this;
    m_own.xOpen = Calls::Open;
    m_own.xDelete = Calls::Delete;
    m_own.xAccess = Calls::Access;
    m_own.xFullPathname = [](sqlite3_vfs* own, const char* path, int count, char* full) {
        return Calls::Real(own)->xFullPathname(Calls::Real(own), path, count, full);
    };
    m_own.xRandomness = [](sqlite3_vfs* own, int count, char* bytes) {
        return Calls::Real(own)->xRandomness(Calls::Real(own), count, bytes);
    };
    m_own.xSleep = [](sqlite3_vfs* own, int microseconds) { return Calls::Of(own).Sleep(microseconds); };
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
    return m_real->xOpen(m_real, path, real, flags, outFlags);
}

int VfsShim::Delete(const char* path, int syncDirectory)
{
    return m_real->xDelete(m_real, path, syncDirectory);
}

int VfsShim::Access(const char* path, int flags, int& answer)
{
    return m_real->xAccess(m_real, path, flags, &answer);
}

int VfsShim::Sleep(int microseconds)
{
    return m_real->xSleep(m_real, microseconds);
}

std::unique_ptr<InterposedFile> VfsShim::Interpose(const char* /*path*/, int /*flags*/,
                                                   std::unique_ptr<std::byte[]> real)
{
    return std::make_unique<InterposedFile>(std::move(real));
}

} // namespace Morvik::sql::tests
