#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/FuzzInput.h"

namespace Morvik::sql::tests {

/// A file that was synced, and the changes that were written after that.
class WriteBackFile {
public:
    /// A file with synced content.
    explicit WriteBackFile(std::string synced = {}) : m_synced(std::move(synced)) {}

    void Write(std::size_t position, std::string bytes);
    void Truncate(std::size_t size);
    void Sync();

    /// The content of the disk when the power fails: each sector written since the last sync may be there, be missing,
    /// be incomplete, or hold garbage. Counts the sectors that are not complete.
    std::string AfterALoss(FuzzInput& choices, int& lostSectors) const;

private:
    struct Change {
        // A write: the position of the bytes or, without bytes, the size that the file is truncated to.
        std::size_t position;
        std::string bytes;
    };

    std::string m_synced;
    std::vector<Change> m_changes;
};

} // namespace Morvik::sql::tests
