#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/DatabaseContent.h"
#include "support/FuzzInput.h"

namespace Morvik::sql {
class DatabaseApi;
}

namespace Morvik::sql::tests {

/// One call on a facade that writes.
struct WriteBatch {
    /// Makes the call; returns whether the facade acknowledged it.
    std::function<bool(DatabaseApi&)> run;

    /// The content of the database after each statement of the call; the last is the content after a success.
    std::vector<DatabaseContent> states;
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

    std::string NewName() { return "t" + std::to_string(++m_names); }
    std::string AnyTable();
    std::string AnyText();
    DatabaseContent Content() const;

    /// Adds up to twenty rows to the table and calls `written(id, text)` for each of them.
    template <typename Written>
    void AddRows(const std::string& table, Written written);

    FuzzInput m_choices;
    std::map<std::string, std::map<int, std::string>> m_tables; // the text of each row by its id
    int m_names = 0;
    int m_rows = 0;
};

} // namespace Morvik::sql::tests
