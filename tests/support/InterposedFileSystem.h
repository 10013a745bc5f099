#pragma once

#include <sqlite3.h>

#include <cstddef>
#include <memory>
#include <utility>

namespace Morvik::sql::tests {

/// One file as SQLite opened it: hands every call on to the real file. Override what shall happen otherwise.
class InterposedFile {
public:
    /// Takes over an opened file of the real file system, in memory of the size that this asks for.
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

/// Stands between SQLite and the real file system while the object lives: everything that is opened without naming a
/// file system goes through it, so close what was opened before its end. Override what shall happen otherwise.
class InterposedFileSystem {
public:
    InterposedFileSystem();
    virtual ~InterposedFileSystem();

    InterposedFileSystem(const InterposedFileSystem&) = delete;
    InterposedFileSystem& operator=(const InterposedFileSystem&) = delete;

protected:
    /// Opens the file in `real`, which is zeroed memory of the size that the real file system asks for.
    virtual int Open(const char* path, sqlite3_file* real, int flags, int* outFlags);
    virtual int Delete(const char* path, int syncDirectory);
    virtual int Access(const char* path, int flags, int& answer);
    virtual int Sleep(int microseconds);

    /// The file that SQLite gets for one that was opened. `path` is null for a nameless temporary file.
    virtual std::unique_ptr<InterposedFile> Interpose(const char* path, int flags, std::unique_ptr<std::byte[]> real);

private:
    struct Calls;

    sqlite3_vfs* m_real;
    sqlite3_vfs m_own{};
};

} // namespace Morvik::sql::tests
