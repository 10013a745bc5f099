#pragma once

#include <string>

#include "support/VfsShim.h"

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

/// A call that fails: the call at `position`, counted from 1 among the calls of its kind. With `lasting`, every later
/// call of the same kind fails too.
struct FileFault {
    FileCall call = FileCall::Open;

    /// The code that SQLite receives; SQLite's extended code if there is one.
    int code = 0;

    int position = 1;
    bool lasting = false;

    /// Whether the failing call has an effect: a write writes half of its bytes, every other call does all of its work.
    bool carriedOut = false;
};

/// Describes the fault, for a message.
std::string Described(const FileFault& fault);

/// A file system in which a call fails while the object lives. Fired() tells how many calls failed.
///
///     for (int position = 1;; ++position) {
///         FaultInjectionVfs disk;
///         Prepare();
///         disk.Arm({FileCall::Write, SQLITE_FULL, position});
///         Act();
///         if (disk.Fired() == 0) { break; }   // Act() makes no more calls of this kind
///     }
///
/// Syncs have no effect, because the files must survive the process and not the machine. SQLite's pauses before it
/// requests a lock again take no time.
class FaultInjectionVfs : public VfsShim {
public:
    /// From now on, counts the calls and makes them fail as `fault` says.
    void Arm(const FileFault& fault);

    /// From now on, no call fails.
    void Disarm() { m_armed = false; }

    int Fired() const { return m_fired; }

protected:
    int Open(const char* path, sqlite3_file* real, int flags, int* outFlags) override;
    int Delete(const char* path, int syncDirectory) override;
    int Access(const char* path, int flags, int& answer) override;
    int Sleep(int microseconds) override;
    std::unique_ptr<InterposedFile> Interpose(const char* path, int flags, std::unique_ptr<std::byte[]> real) override;

private:
    class File;

    bool Fails(FileCall call);

    // Forwards a call or makes it fail.
    template <typename Call>
    int Run(FileCall kind, Call call);

    FileFault m_fault{};
    bool m_armed = false;
    int m_calls = 0;
    int m_fired = 0;
};

} // namespace Morvik::sql::tests
