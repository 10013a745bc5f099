#include "support/WriteBackFile.h"

#include <algorithm>

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t SectorSize = 512;

void Put(std::string& content, std::size_t position, std::string_view bytes)
{
    content.resize(std::max(content.size(), position + bytes.size()));
    content.replace(position, bytes.size(), bytes);
}

// Writes one sector to the disk, or a part of it.
void PutOrLose(std::string& content, std::size_t position, std::string sector, FuzzInput& choices,
               std::size_t lostOneIn, int& lostSectors)
{
    if (!choices.OneIn(lostOneIn)) {
        Put(content, position, sector);
        return;
    }
    ++lostSectors;
    switch (choices.Below(4)) {
    case 0: // only its beginning
        sector.resize(choices.Below(sector.size()));
        Put(content, position, sector);
        break;
    case 1: // garbage
        std::ranges::generate(sector, [&] { return static_cast<char>(choices.Below(256)); });
        Put(content, position, sector);
        break;
    default: // nothing
        break;
    }
}

} // namespace

void WriteBackFile::Write(std::size_t position, std::string bytes)
{
    m_changes.push_back({position, std::move(bytes)});
}

void WriteBackFile::Truncate(std::size_t size)
{
    m_changes.push_back({size, {}});
}

void WriteBackFile::Sync()
{
    for (const Change& change : m_changes) {
        if (change.bytes.empty()) {
            m_synced.resize(change.position);
        } else {
            Put(m_synced, change.position, change.bytes);
        }
    }
    m_changes.clear();
}

std::string WriteBackFile::AfterALoss(FuzzInput& choices, int& lostSectors) const
{
    std::string content = m_synced;
    const std::size_t lostOneIn = 2 + choices.Below(8);
    for (const Change& change : m_changes) {
        if (change.bytes.empty()) {
            if (!choices.OneIn(lostOneIn)) {
                content.resize(change.position);
            }
            continue;
        }
        for (std::size_t done = 0; done < change.bytes.size();) {
            const std::size_t position = change.position + done;
            std::string sector = change.bytes.substr(done, SectorSize - position % SectorSize);
            done += sector.size();
            PutOrLose(content, position, std::move(sector), choices, lostOneIn, lostSectors);
        }
    }
    return content;
}

} // namespace Morvik::sql::tests
