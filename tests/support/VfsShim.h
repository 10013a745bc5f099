#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <memory>
#include <utility>

namespace Morvik::sql::tests {

/// One file that SQLite opened: forwards every call to the real file. A derived class overrides the calls that it
/// changes.
class InterposedFile {
public:
    /// Takes over an opened file of the real file system. The file is in memory of the size that the real file system
    /// needs.
    explicit InterposedFile(std::unique_ptr<std::byte[]> real) : m_real(std::move(real)) {}
    virtual ~InterposedFile();

    InterposedFile(const InterposedFile&) = delete;
    InterposedFile& operator=(const InterposedFile&) = delete;

    virtual int Read(void* bytes, int count, sqlite3_int64 offset);
    virtual int Write(const void* bytes, int count, sqlite3_int64 offset);
    virtual int Truncate(sqlite3_int64 size);
    virtual int Sync(int flags);
    virtual int FileSize(sqlite3_int64& size);
    virtual int Lock(int level);
    virtual int Unlock(int level);
    virtual int CheckReservedLock(int& reserved);
    virtual int MapShared(int region, int size, int extend, volatile void** memory);
    virtual int LockShared(int offset, int count, int flags);

    sqlite3_file* Real() const { return reinterpret_cast<sqlite3_file*>(m_real.get()); }

private:
    std::unique_ptr<std::byte[]> m_real;
};

/// Replaces SQLite's default file system while the object lives and forwards to it. Every database that is opened
/// without naming a file system uses this object, so close it before the object is destroyed. A derived class overrides
/// the calls that it changes.
class VfsShim {
public:
    VfsShim();
    virtual ~VfsShim();

    VfsShim(const VfsShim&) = delete;
    VfsShim& operator=(const VfsShim&) = delete;

protected:
    /// Opens the file in `real`, zeroed memory of the size that the real file system needs.
    virtual int Open(const char* path, sqlite3_file* real, int flags, int* outFlags);
    virtual int Delete(const char* path, int syncDirectory);
    virtual int Access(const char* path, int flags, int& answer);
    virtual int Sleep(int microseconds);

    /// Returns the object that SQLite uses for an opened file. `path` is null for a temporary file without a name.
    virtual std::unique_ptr<InterposedFile> Interpose(const char* path, int flags, std::unique_ptr<std::byte[]> real);

private:
    struct Calls;

    sqlite3_vfs* m_real;
    sqlite3_vfs m_own{};
};

} // namespace Morvik::sql::tests
