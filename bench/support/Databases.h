#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "support/Require.h"
#include "support/Sample.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::bench {

inline constexpr const char* InMemory = ":memory:";

/// The directory of every file of this program, removed at its end.
const tests::TemporaryDirectory& Directory();

/// The path of a file that does not exist yet.
std::string NewFile();

/// A database file that holds SampleRows(count) as `sample`, made at the first call.
std::string FilledFile(int count);

/// Ends the program unless the database file holds exactly these rows as `sample`.
void RequireRows(const std::string& path, const std::vector<SampleRow>& rows);

/// Fills the contender's new database with SampleRows(count).
template <typename Contender>
void Fill(Contender& contender, int count)
{
    contender.Execute("ATTACH '" + FilledFile(count) + "' AS source");
    contender.Execute(CreateTable);
    contender.Execute("INSERT INTO main.sample SELECT * FROM source.sample");
    contender.Execute("DETACH source");
}

/// A contender on a database that is made again before each run, in memory or in a file.
template <typename Contender>
class Fresh {
public:
    explicit Fresh(bool inFile) : m_path(inFile ? NewFile() : InMemory) {}

    Contender& Get() { return *m_contender; }

    /// Makes a database with an empty table.
    void Make()
    {
        m_contender.reset();
        std::filesystem::remove(m_path);
        m_contender = std::make_unique<Contender>(m_path);
        Get().Execute(CreateTable);
    }

    /// The same, and begins a transaction.
    void Begin()
    {
        Make();
        Get().Execute("BEGIN");
    }

    /// The same on a table with SampleRows(count).
    void BeginFilled(int count)
    {
        m_contender = std::make_unique<Contender>(m_path);
        Fill(Get(), count);
        Get().Execute("BEGIN");
    }

    /// Ends the program unless the database holds exactly these rows.
    void RequireWritten(const std::vector<SampleRow>& rows)
    {
        const tests::TemporaryDirectory directory;
        const std::string copy = directory.File("copy.db");
        Get().Execute("VACUUM INTO '" + copy + "'");
        RequireRows(copy, rows);
    }

    /// The same after the transaction is committed.
    void RequireCommitted(const std::vector<SampleRow>& rows)
    {
        Get().Execute("COMMIT");
        RequireWritten(rows);
    }

private:
    std::string m_path;
    std::unique_ptr<Contender> m_contender;
};

} // namespace Morvik::sql::bench
