#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/FuzzInput.h"

namespace Morvik::sql {
class DatabaseApi;
}

namespace Morvik::sql::tests {

/// For every table, the text of each row by the number of the row.
using BatchTables = std::map<std::string, std::map<int, std::string>>;

/// One call on a facade that writes.
struct WriteBatch {
    /// Makes the call; returns whether the facade acknowledged it.
    std::function<bool(DatabaseApi&)> run;

    /// The content of the database after each statement of the call; the last is the content after a success.
    std::vector<BatchTables> states;
};

/// Calls in an order that a seed decides: new tables, rows, changes, renames, removals and complete transactions. Two
/// objects with the same seed give the same calls, so that one process knows what another process wrote.
class WriteBatches {
public:
    explicit WriteBatches(std::uint64_t seed) : m_choices(seed) {}

    /// The next call, for a database on which all earlier calls succeeded. The first call creates a table.
    WriteBatch Next();

private:
    WriteBatch Create();
    WriteBatch Write();
    WriteBatch Update();
    WriteBatch Alter();
    WriteBatch Drop();
    WriteBatch Transaction();

    std::string NewName();
    std::string AnyTable();
    std::string AnyText();

    FuzzInput m_choices;
    BatchTables m_tables;
    int m_names = 0;
    int m_rows = 0;
};

} // namespace Morvik::sql::tests
