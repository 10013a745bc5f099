#pragma once

#include <map>
#include <string>
#include <vector>

#include "support/Choices.h"
#include "support/InterposedFileSystem.h"
#include "support/UnsyncedFile.h"

namespace Morvik::sql::tests {

/// A file system under which the power goes while the object lives. It keeps apart what a sync has brought to the disk
/// and what has only been written, of every file and of the directory. The first sync of a new journal syncs the
/// directory too, as SQLite's own file system does it.
///
///     PowerlessFileSystem machine(choices, 100, Removals::Lasting);
///     Act();                                       // from the 100th change on, every call fails
///     const int lostSectors = machine.ComeBack();  // with everything closed
///
/// What SQLite assumes of a disk holds: a write changes no byte outside of it. Nothing more does (see UnsyncedFile).
class PowerlessFileSystem : public InterposedFileSystem {
public:
    /// Whether a removed file stays removed at once, or only once its directory has been synced.
    enum class Removals { Lasting, AwaitingASync };

    /// The power goes in the change with this number, counted from 1: a write, truncation, sync, creation or removal.
    PowerlessFileSystem(Choices& choices, int changesUntilTheLoss, Removals removals);
    ~PowerlessFileSystem() override;

    bool IsOut() const { return m_out; }

    /// Leaves in the real files what the disk holds, and returns how many written sectors did not get there whole.
    /// Everything must be closed.
    int ComeBack();

protected:
    int Open(const char* path, sqlite3_file* real, int flags, int* outFlags) override;
    int Delete(const char* path, int syncDirectory) override;
    int Access(const char* path, int flags, int& answer) override;
    std::unique_ptr<InterposedFile> Interpose(const char* path, int flags, std::unique_ptr<std::byte[]> real) override;

private:
    class File;
    using Entry = std::shared_ptr<UnsyncedFile>; // null where there is no file

    // Whether the power goes now.
    bool GoesOut();

    // What the path stands for at the moment.
    Entry& Current(const std::string& path);
    void SyncDirectory();

    Choices& m_choices;
    int m_changesLeft;
    const Removals m_removals;
    bool m_out = false;

    // What the directory may hold for a path since it was synced: the oldest first, the present one last.
    std::map<std::string, std::vector<Entry>> m_directory;
};

} // namespace Morvik::sql::tests
