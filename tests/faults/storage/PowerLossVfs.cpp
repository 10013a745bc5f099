#include "faults/storage/PowerLossVfs.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <utility>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t SectorSize = 512;

// SQLite's own file system syncs the directory with these flags.
bool IsNewJournal(int flags)
{
    constexpr int Journals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL;
    return (flags & SQLITE_OPEN_CREATE) != 0 && (flags & Journals) != 0;
}

void Put(std::string& content, std::size_t position, const std::string& bytes)
{
    content.resize(std::max(content.size(), position + bytes.size()));
    content.replace(position, bytes.size(), bytes);
}

} // namespace

void PowerLossVfs::Changing(const std::string& path, sqlite3_int64 position, std::string_view bytes)
{
    if (!IsOut()) {
        Current(path)->changes.push_back({static_cast<std::size_t>(position), std::string(bytes)});
    }
}

void PowerLossVfs::Synced(const std::string& path)
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

FileFailure PowerLossVfs::Fails(FileCall call)
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

bool PowerLossVfs::GoesOut()
{
    m_out = m_out || --m_changesLeft == 0;
    return m_out;
}

PowerLossVfs::Entry& PowerLossVfs::Current(const std::string& path)
{
    std::vector<Entry>& entries = m_directory[path];
    if (entries.empty()) {
        entries.push_back(std::filesystem::exists(path)
                              ? std::make_shared<StoredFile>(StoredFile{.synced = FileContent(path)})
                              : nullptr);
    }
    return entries.back();
}

void PowerLossVfs::SyncDirectory()
{
    for (auto& [path, entries] : m_directory) {
        entries.erase(entries.begin(), entries.end() - 1);
    }
}

int PowerLossVfs::Open(const char* path, sqlite3_file* real, int flags, int* outFlags)
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

int PowerLossVfs::Delete(const char* path, int syncDirectory)
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

// Writes one sector to the disk. A lost sector is written in part, as garbage, or not at all.
void PowerLossVfs::PutOrLose(std::string& content, const Change& sector, std::size_t lostOneIn, int& lostSectors)
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
std::string PowerLossVfs::AfterALoss(const StoredFile& file, int& lostSectors)
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

int PowerLossVfs::ComeBack()
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

} // namespace Morvik::sql::tests
