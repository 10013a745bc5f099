#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common/OwnDatabase.h"
#include "package_inventory/Package.h"

namespace examples {

/// What has changed between an inventory and the one before it.
struct Changes {
    int added = 0;
    int removed = 0;
    int upgraded = 0;
};

/// The inventory: one table of packages in a database file of its own.
class Inventory {
public:
    /// Opens the inventory at `path`, or begins a new one.
    explicit Inventory(const std::string& path);

    /// Replaces the inventory by `packages`, in one transaction: whatever happens meanwhile, the file holds either the
    /// whole earlier inventory or the whole new one. Packages that were there before keep the time at which their
    /// version was first recorded, and the `marked` largest packages get the mark "largest".
    ///
    /// Returns what has changed since the earlier inventory, or nothing if there was none.
    std::optional<Changes> Replace(const std::vector<Package>& packages, int marked);

    /// For the questions of a report; the table is "package".
    OwnDatabase& Database() { return m_database; }

private:
    void CreateTable();
    void Write(const std::vector<Package>& packages);
    void KeepEarlierTimes();
    void MarkLargest(int count);
    Changes CompareWithEarlier();

    OwnDatabase m_database;
};

} // namespace examples
