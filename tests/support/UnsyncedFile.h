#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/Choices.h"

namespace Morvik::sql::tests {

/// A file of which a part has only been written and the rest has also been synced.
class UnsyncedFile {
public:
    /// A file whose content has been synced.
    explicit UnsyncedFile(std::string synced = {}) : m_synced(std::move(synced)) {}

    void Write(std::size_t position, std::string bytes);
    void Truncate(std::size_t size);
    void Sync();

    /// What the disk may hold when the power goes: of what was written since the last sync each sector or not, in part,
    /// or as garbage. Counts the sectors that did not get there whole.
    std::string AfterALoss(Choices& choices, int& lostSectors) const;

private:
    struct Change {
        // Where the bytes go or, without any, the size that the file is cut to.
        std::size_t position;
        std::string bytes;
    };

    std::string m_synced;
    std::vector<Change> m_changes;
};

} // namespace Morvik::sql::tests
