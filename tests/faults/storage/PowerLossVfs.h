#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "faults/storage/VfsShim.h"
#include "support/ChildProcess.h"
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
    int ComeBack()
    {
        int lostSectors = 0;
        for (auto& [path, entries] : m_directory) {
            std::filesystem::remove(path);
            if (const Entry& entry = m_choices.Of(entries); entry != nullptr) {
                std::ofstream(path, std::ios::binary) << AfterALoss(*entry, lostSectors);
            }
        }
        return lostSectors;
    }

    FileFailure Fails(FileCall call) override
    {
        switch (call) {
        case FileCall::Write:
        case FileCall::Truncate:
        case FileCall::Sync:
            return {GoesOut() ? SQLITE_IOERR : SQLITE_OK};
        case FileCall::Read:
        case FileCall::FileSize:
        case FileCall::Access:
        case FileCall::Lock:
            return {IsOut() ? SQLITE_IOERR : SQLITE_OK};
        default:
            return {};
        }
    }

protected:
    int Open(const char* path, sqlite3_file* real, int flags, int* outFlags) override
    {
        if (IsOut()) {
            return SQLITE_CANTOPEN;
        }
        // A file without a name does not survive its process.
        if (path != nullptr && Current(path) == nullptr && (flags & SQLITE_OPEN_CREATE) != 0) {
            m_directory[path].push_back(std::make_shared<StoredFile>());
            if (GoesOut()) {
                return SQLITE_CANTOPEN;
            }
        }
        if (IsNewJournal(flags)) {
            m_newJournals.insert(path);
        }
        return VfsShim::Open(path, real, flags, outFlags);
    }

    int Delete(const char* path, int syncDirectory) override
    {
        if (IsOut()) {
            return SQLITE_IOERR_DELETE;
        }
        if (Current(path) == nullptr) {
            return SQLITE_IOERR_DELETE_NOENT;
        }
        std::vector<Entry>& entries = m_directory[path];
        entries.push_back(nullptr);
        if (GoesOut()) {
            return SQLITE_IOERR_DELETE;
        }
        if (m_removals == Removals::Lasting) {
            entries = {nullptr};
        }
        if (syncDirectory != 0) {
            SyncDirectory();
        }
        return VfsShim::Delete(path, 0);
    }

    void Changing(const std::string& path, sqlite3_int64 position, std::string_view bytes) override
    {
        if (!IsOut()) {
            Current(path)->changes.push_back({static_cast<std::size_t>(position), std::string(bytes)});
        }
    }

    void Synced(const std::string& path) override
    {
        StoredFile& file = *Current(path);
        for (const Change& change : std::exchange(file.changes, {})) {
            if (change.bytes.empty()) {
                file.synced.resize(change.position);
            } else {
                Put(file.synced, change.position, change.bytes);
            }
        }
        if (m_newJournals.erase(path) > 0) {
            SyncDirectory();
        }
    }

private:
    static constexpr std::size_t SectorSize = 512;

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

    // SQLite's own file system syncs the directory with these flags.
    static bool IsNewJournal(int flags)
    {
        constexpr int Journals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL;
        return (flags & SQLITE_OPEN_CREATE) != 0 && (flags & Journals) != 0;
    }

    static void Put(std::string& content, std::size_t position, const std::string& bytes)
    {
        content.resize(std::max(content.size(), position + bytes.size()));
        content.replace(position, bytes.size(), bytes);
    }

    // Counts a change. Returns whether the power fails now.
    bool GoesOut()
    {
        m_out = m_out || --m_changesLeft == 0;
        return m_out;
    }

    // The file that the path currently names.
    Entry& Current(const std::string& path)
    {
        std::vector<Entry>& entries = m_directory[path];
        if (entries.empty()) {
            entries.push_back(std::filesystem::exists(path)
                                  ? std::make_shared<StoredFile>(StoredFile{.synced = FileContent(path)})
                                  : nullptr);
        }
        return entries.back();
    }

    void SyncDirectory()
    {
        for (auto& [path, entries] : m_directory) {
            entries.erase(entries.begin(), entries.end() - 1);
        }
    }

    // Writes one sector to the disk. A lost sector is written in part, as garbage, or not at all.
    void PutOrLose(std::string& content, const Change& sector, std::size_t lostOneIn, int& lostSectors)
    {
        if (!m_choices.OneIn(lostOneIn)) {
            Put(content, sector.position, sector.bytes);
            return;
        }
        ++lostSectors;
        std::string bytes = sector.bytes;
        switch (m_choices.Below(4)) {
        case 0: // only its beginning
            bytes.resize(m_choices.Below(bytes.size()));
            Put(content, sector.position, bytes);
            break;
        case 1: // garbage
            std::ranges::generate(bytes, [&] { return static_cast<char>(m_choices.Below(256)); });
            Put(content, sector.position, bytes);
            break;
        default: // nothing
            break;
        }
    }

    // The content of the file on the disk after the power has failed. Counts the lost sectors.
    std::string AfterALoss(const StoredFile& file, int& lostSectors)
    {
        std::string content = file.synced;
        const std::size_t lostOneIn = 2 + m_choices.Below(8);
        for (const Change& change : file.changes) {
            if (change.bytes.empty()) {
                if (!m_choices.OneIn(lostOneIn)) {
                    content.resize(change.position);
                }
                continue;
            }
            for (std::size_t done = 0; done < change.bytes.size();) {
                const std::size_t position = change.position + done;
                const Change sector{position, change.bytes.substr(done, SectorSize - position % SectorSize)};
                done += sector.bytes.size();
                PutOrLose(content, sector, lostOneIn, lostSectors);
            }
        }
        return content;
    }

    FuzzInput& m_choices;
    int m_changesLeft;
    const Removals m_removals;
    bool m_out = false;

    // The files that the directory may have for a path after the last sync: the oldest first, the current one last.
    std::map<std::string, std::vector<Entry>> m_directory;

    std::set<std::string> m_newJournals; // not synced yet
};

} // namespace Morvik::sql::tests
