#include "support/PowerLossVfs.h"

#include <filesystem>
#include <fstream>
#include <utility>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

namespace {

// SQLite's own file system syncs the directory with these flags.
bool IsNewJournal(int flags)
{
    constexpr int Journals = SQLITE_OPEN_MAIN_JOURNAL | SQLITE_OPEN_SUPER_JOURNAL | SQLITE_OPEN_WAL;
    return (flags & SQLITE_OPEN_CREATE) != 0 && (flags & Journals) != 0;
}

} // namespace

class PowerLossVfs::File : public InterposedFile {
public:
    File(PowerLossVfs& system, Entry stored, bool isNewJournal, std::unique_ptr<std::byte[]> real)
        : InterposedFile(std::move(real)), m_system(system), m_stored(std::move(stored)),
          m_directoryAwaitsSync(isNewJournal)
    {}

    int Read(void* bytes, int count, sqlite3_int64 offset) override
    {
        return m_system.IsOut() ? SQLITE_IOERR_READ : InterposedFile::Read(bytes, count, offset);
    }

    int Write(const void* bytes, int count, sqlite3_int64 offset) override
    {
        if (m_system.IsOut()) {
            return SQLITE_IOERR_WRITE;
        }
        m_stored->Write(static_cast<std::size_t>(offset),
                        std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(count)));
        return m_system.GoesOut() ? SQLITE_IOERR_WRITE : InterposedFile::Write(bytes, count, offset);
    }

    int Truncate(sqlite3_int64 size) override
    {
        if (m_system.IsOut()) {
            return SQLITE_IOERR_TRUNCATE;
        }
        m_stored->Truncate(static_cast<std::size_t>(size));
        return m_system.GoesOut() ? SQLITE_IOERR_TRUNCATE : InterposedFile::Truncate(size);
    }

    int Sync(int /*flags*/) override
    {
        if (m_system.GoesOut()) {
            return SQLITE_IOERR_FSYNC;
        }
        m_stored->Sync();
        if (std::exchange(m_directoryAwaitsSync, false)) {
            m_system.SyncDirectory();
        }
        return SQLITE_OK;
    }

    int FileSize(sqlite3_int64& size) override
    {
        return m_system.IsOut() ? SQLITE_IOERR_FSTAT : InterposedFile::FileSize(size);
    }

    int Lock(int level) override { return m_system.IsOut() ? SQLITE_IOERR_LOCK : InterposedFile::Lock(level); }

private:
    PowerLossVfs& m_system;
    Entry m_stored;
    bool m_directoryAwaitsSync;
};

PowerLossVfs::PowerLossVfs(FuzzInput& choices, int changesUntilTheLoss, Removals removals)
    : m_choices(choices), m_changesLeft(changesUntilTheLoss), m_removals(removals)
{}

PowerLossVfs::~PowerLossVfs() = default;

bool PowerLossVfs::GoesOut()
{
    m_out = m_out || --m_changesLeft == 0;
    return m_out;
}

PowerLossVfs::Entry& PowerLossVfs::Current(const std::string& path)
{
    std::vector<Entry>& entries = m_directory[path];
    if (entries.empty()) {
        Entry found;
        if (std::filesystem::exists(path)) {
            found = std::make_shared<WriteBackFile>(FileContent(path));
        }
        entries.push_back(found);
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
        m_directory[path].push_back(std::make_shared<WriteBackFile>());
        if (GoesOut()) {
            return SQLITE_CANTOPEN;
        }
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

int PowerLossVfs::Access(const char* path, int flags, int& answer)
{
    return IsOut() ? SQLITE_IOERR_ACCESS : VfsShim::Access(path, flags, answer);
}

std::unique_ptr<InterposedFile> PowerLossVfs::Interpose(const char* path, int flags, std::unique_ptr<std::byte[]> real)
{
    if (path == nullptr) {
        return VfsShim::Interpose(path, flags, std::move(real));
    }
    return std::make_unique<File>(*this, Current(path), IsNewJournal(flags), std::move(real));
}

int PowerLossVfs::ComeBack()
{
    int lostSectors = 0;
    for (auto& [path, entries] : m_directory) {
        std::filesystem::remove(path);
        if (const Entry& entry = m_choices.Of(entries); entry != nullptr) {
            std::ofstream(path, std::ios::binary) << entry->AfterALoss(m_choices, lostSectors);
        }
    }
    return lostSectors;
}

} // namespace Morvik::sql::tests
