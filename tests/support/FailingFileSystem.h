#pragma once

#include <string>

#include "support/InterposedFileSystem.h"

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

/// A call that fails: the one at `position`, counted from 1 among the calls of its kind, and with `lasting` every later
/// one of its kind too.
struct FileFault {
    FileCall call = FileCall::Open;

    /// What SQLite is told, with SQLite's extended code where there is one.
    int code = 0;

    int position = 1;
    bool lasting = false;

    /// How much happens all the same: a write puts down half of its bytes, every other call does all that it should.
    bool carriedOut = false;
};

/// The fault in words, for a message.
std::string Described(const FileFault& fault);

/// A file system with a fault while the object lives. Proves itself: Fired() tells how many calls failed.
///
///     for (int position = 1;; ++position) {
///         FailingFileSystem disk;
///         Prepare();
///         disk.Arm({FileCall::Write, SQLITE_FULL, position});
///         Act();
///         if (disk.Fired() == 0) { break; }   // Act() makes no more calls of this kind
///     }
///
/// Nothing reaches the disk by a sync (what a test looks at outlives its process, but not the machine), and SQLite's
/// pauses before it asks for a lock again take no time.
class FailingFileSystem : public InterposedFileSystem {
public:
    /// Counts and fails from now on.
    void Arm(const FileFault& fault);

    /// Fails no more.
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

    // Makes a call or lets it fail.
    template <typename Call>
    int Run(FileCall kind, Call call);

    FileFault m_fault{};
    bool m_armed = false;
    int m_calls = 0;
    int m_fired = 0;
};

} // namespace Morvik::sql::tests
