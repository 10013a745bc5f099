#include "support/FaultInjectionVfs.h"

namespace Morvik::sql::tests {

std::string Described(const FileFault& fault)
{
    static constexpr const char* Names[] = {"open",   "read", "write",  "truncate", "sync", "size",       "delete",
                                            "access", "lock", "unlock", "locked",   "map",  "shared lock"};
    return std::string(Names[static_cast<int>(fault.call)]) + ' ' + std::to_string(fault.position) +
           (fault.lasting ? " and later" : "") + (fault.carriedOut ? ", carried out," : "") + " with code " +
           std::to_string(fault.code);
}

template <typename Call>
int FaultInjectionVfs::Run(FileCall kind, Call call)
{
    if (!Fails(kind)) {
        return call();
    }
    if (m_fault.carriedOut) {
        call();
    }
    return m_fault.code;
}

class FaultInjectionVfs::File : public InterposedFile {
public:
    File(FaultInjectionVfs& system, std::unique_ptr<std::byte[]> real)
        : InterposedFile(std::move(real)), m_system(system)
    {}

    int Read(void* bytes, int count, sqlite3_int64 offset) override
    {
        return m_system.Run(FileCall::Read, [&] { return InterposedFile::Read(bytes, count, offset); });
    }

    int Write(const void* bytes, int count, sqlite3_int64 offset) override
    {
        if (!m_system.Fails(FileCall::Write)) {
            return InterposedFile::Write(bytes, count, offset);
        }
        if (m_system.m_fault.carriedOut) {
            InterposedFile::Write(bytes, count / 2, offset);
        }
        return m_system.m_fault.code;
    }

    int Truncate(sqlite3_int64 size) override
    {
        return m_system.Run(FileCall::Truncate, [&] { return InterposedFile::Truncate(size); });
    }

    int Sync(int /*flags*/) override
    {
        return m_system.Run(FileCall::Sync, [] { return SQLITE_OK; });
    }

    int FileSize(sqlite3_int64& size) override
    {
        return m_system.Run(FileCall::FileSize, [&] { return InterposedFile::FileSize(size); });
    }

    int Lock(int level) override
    {
        return m_system.Run(FileCall::Lock, [&] { return InterposedFile::Lock(level); });
    }

    int Unlock(int level) override
    {
        return m_system.Run(FileCall::Unlock, [&] { return InterposedFile::Unlock(level); });
    }

    int CheckReservedLock(int& reserved) override
    {
        return m_system.Run(FileCall::CheckReservedLock, [&] { return InterposedFile::CheckReservedLock(reserved); });
    }

    int MapShared(int region, int size, int extend, volatile void** memory) override
    {
        return m_system.Run(FileCall::MapShared,
                            [&] { return InterposedFile::MapShared(region, size, extend, memory); });
    }

    int LockShared(int offset, int count, int flags) override
    {
        // Releasing a lock never fails.
        if ((flags & SQLITE_SHM_LOCK) == 0) {
            return InterposedFile::LockShared(offset, count, flags);
        }
        return m_system.Run(FileCall::LockShared, [&] { return InterposedFile::LockShared(offset, count, flags); });
    }

private:
    FaultInjectionVfs& m_system;
};

void FaultInjectionVfs::Arm(const FileFault& fault)
{
    m_fault = fault;
    m_armed = true;
    m_calls = 0;
    m_fired = 0;
}

bool FaultInjectionVfs::Fails(FileCall call)
{
    if (!m_armed || call != m_fault.call) {
        return false;
    }
    ++m_calls;
    const bool fails = m_calls == m_fault.position || (m_fault.lasting && m_calls > m_fault.position);
    m_fired += fails ? 1 : 0;
    return fails;
}

int FaultInjectionVfs::Open(const char* path, sqlite3_file* real, int flags, int* outFlags)
{
    return Run(FileCall::Open, [&] { return VfsShim::Open(path, real, flags, outFlags); });
}

int FaultInjectionVfs::Delete(const char* path, int /*syncDirectory*/)
{
    return Run(FileCall::Delete, [&] { return VfsShim::Delete(path, 0); });
}

int FaultInjectionVfs::Access(const char* path, int flags, int& answer)
{
    return Run(FileCall::Access, [&] { return VfsShim::Access(path, flags, answer); });
}

int FaultInjectionVfs::Sleep(int microseconds)
{
    return microseconds;
}

std::unique_ptr<InterposedFile> FaultInjectionVfs::Interpose(const char* /*path*/, int /*flags*/,
                                                             std::unique_ptr<std::byte[]> real)
{
    return std::make_unique<File>(*this, std::move(real));
}

} // namespace Morvik::sql::tests
