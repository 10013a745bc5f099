#pragma once

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "faults/storage/VfsShim.h"
#include "support/ChildProcess.h"
#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

/// A file system whose power fails while the object lives: from then on, no file can be opened, read, changed or
/// locked. For every file and for the directory, it keeps synced content separate from content that was written and not
/// synced. The first sync of a new journal syncs the directory too, as in SQLite's own file system.
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
        for (auto& [path, entries] : m_directory) {
            std::filesystem::remove(path);
            if (const Entry& entry = m_choices.Of(entries)) {
                std::ofstream(path, std::ios::binary) << AfterALoss(*entry);
            }
        }
        return m_lostSectors;
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
        const bool creates = (flags & SQLITE_OPEN_CREATE) != 0;
        // A file without a name does not survive its process.
        if (path != nullptr && creates && !Current(path)) {
            m_directory[path].push_back(StoredFile());
            if (GoesOut()) {
                return SQLITE_CANTOPEN;
            }
        }
        constexpr int Journals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL;
        if (creates && (flags & Journals) != 0) {
            m_newJournals.insert(path);
        }
        return VfsShim::Open(path, real, flags, outFlags);
    }

    int Delete(const char* path, int syncDirectory) override
    {
        if (IsOut()) {
            return SQLITE_IOERR_DELETE;
        }
        if (!Current(path)) {
            return SQLITE_IOERR_DELETE_NOENT;
        }
        std::vector<Entry>& entries = m_directory[path];
        entries.push_back(std::nullopt);
        if (GoesOut()) {
            return SQLITE_IOERR_DELETE;
        }
        if (m_removals == Removals::Lasting) {
            entries = {std::nullopt};
        }
        if (syncDirectory != 0) {
            SyncDirectory();
        }
        return VfsShim::Delete(path, 0);
    }

    void Changing(const char* path, sqlite3_int64 position, std::string_view bytes) override
    {
        if (path == nullptr || IsOut()) {
            return;
        }
        auto begin = static_cast<std::size_t>(position);
        do {
            const std::string_view sector = bytes.substr(0, SectorSize - begin % SectorSize);
            Current(path)->changes.push_back({begin, std::string(sector)});
            begin += sector.size();
            bytes.remove_prefix(sector.size());
        } while (!bytes.empty());
    }

    void Synced(const char* path) override
    {
        if (path == nullptr) {
            return;
        }
        StoredFile& file = *Current(path);
        for (const Change& change : std::exchange(file.changes, {})) {
            Apply(change, file.synced);
        }
        if (m_newJournals.erase(path) > 0) {
            SyncDirectory();
        }
    }

private:
    static constexpr std::size_t SectorSize = 512;

    // A write within one sector or, without bytes, a truncation to the size `position`.
    struct Change {
        std::size_t position;
        std::string bytes;
    };

    struct StoredFile {
        std::string synced{};
        std::vector<Change> changes{};
    };

    using Entry = std::optional<StoredFile>; // empty if there is no file

    static void Apply(const Change& change, std::string& content)
    {
        const auto& [position, bytes] = change;
        content.resize(bytes.empty() ? position : std::max(content.size(), position + bytes.size()));
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
            entries.push_back(std::filesystem::exists(path) ? Entry({.synced = FileContent(path)}) : std::nullopt);
        }
        return entries.back();
    }

    void SyncDirectory()
    {
        for (auto& [path, entries] : m_directory) {
            entries.erase(entries.begin(), entries.end() - 1);
        }
    }

    // The content of the file on the disk after the power has failed. Counts the lost sectors.
    std::string AfterALoss(const StoredFile& file)
    {
        std::string content = file.synced;
        const std::size_t lostOneIn = 2 + m_choices.Below(8);
        for (Change change : file.changes) {
            if (!m_choices.OneIn(lostOneIn)) {
                Apply(change, content);
            } else if (!change.bytes.empty()) {
                ++m_lostSectors;
                switch (m_choices.Below(4)) {
                case 0: // only its beginning
                    change.bytes.resize(std::max<std::size_t>(m_choices.Below(change.bytes.size()), 1));
                    Apply(change, content);
                    break;
                case 1: // garbage
                    std::ranges::generate(change.bytes, [&] { return static_cast<char>(m_choices.Below(256)); });
                    Apply(change, content);
                    break;
                default: // the earlier content
                    break;
                }
            }
        }
        return content;
    }

    FuzzInput& m_choices;
    int m_changesLeft;
    const Removals m_removals;
    bool m_out = false;
    int m_lostSectors = 0;

    // For each path, the files that it may name on the disk: from that of the last sync to the current one.
    std::map<std::string, std::vector<Entry>> m_directory;

    std::set<std::string> m_newJournals; // not synced yet
};

} // namespace Morvik::sql::tests
