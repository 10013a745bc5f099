#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "faults/storage/VfsShim.h"
#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

/// A file system whose power fails while the object lives. For every file and for the directory, it keeps synced
/// content separate from content that was written and not synced. The first sync of a new journal syncs the directory
/// too, as in SQLite's own file system.
///
///     PowerLossVfs machine(choices, 100, Removals::Lasting);
///     Act();                                       // from the 100th change on, every call fails
///     const int lostSectors = machine.ComeBack();  // with everything closed
///
/// It guarantees only what SQLite assumes of a disk: a write changes no byte outside its range. Each sector written
/// since the last sync may be there, be missing, be incomplete, or hold garbage.
class PowerLossVfs : public VfsShim {
public:
    /// Whether a removed file stays removed at once, or only after its directory has been synced.
    enum class Removals { Lasting, AwaitingASync };

    /// The power fails in the change with this number, counted from 1: a write, truncation, sync, creation or removal.
    PowerLossVfs(FuzzInput& choices, int changesUntilTheLoss, Removals removals)
        : m_choices(choices), m_changesLeft(changesUntilTheLoss), m_removals(removals)
    {}

    bool IsOut() const { return m_out; }

    /// Changes the real files to the content of the disk, and returns how many written sectors did not reach it
    /// completely. All files must be closed.
    int ComeBack();

    FileFailure Fails(FileCall call) override;

protected:
    int Open(const char* path, sqlite3_file* real, int flags, int* outFlags) override;
    int Delete(const char* path, int syncDirectory) override;
    void Changing(const std::string& path, sqlite3_int64 position, std::string_view bytes) override;
    void Synced(const std::string& path) override;

private:
    // A write or, without bytes, a truncation to the size `position`.
    struct Change {
        std::size_t position;
        std::string bytes;
    };

    struct StoredFile {
        std::string synced{};
        std::vector<Change> changes{};
    };

    using Entry = std::shared_ptr<StoredFile>; // null if there is no file

    // Counts a change. Returns whether the power fails now.
    bool GoesOut();

    // The file that the path currently names.
    Entry& Current(const std::string& path);
    void SyncDirectory();
    std::string AfterALoss(const StoredFile& file, int& lostSectors);
    void PutOrLose(std::string& content, const Change& sector, std::size_t lostOneIn, int& lostSectors);

    FuzzInput& m_choices;
    int m_changesLeft;
    const Removals m_removals;
    bool m_out = false;

    // The files that the directory may have for a path after the last sync: the oldest first, the current one last.
    std::map<std::string, std::vector<Entry>> m_directory;

    std::set<std::string> m_newJournals; // not synced yet
};

} // namespace Morvik::sql::tests
