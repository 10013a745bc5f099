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

/// The directory of all files of this program; it is removed when the program ends.
const tests::TemporaryDirectory& Directory();

/// The path of a file that does not exist yet.
std::string NewFile();

/// The path of a database file that holds SampleRows(count) in the table `sample`; the first call creates the file.
std::string FilledFile(int count);

/// Ends the program unless the table `sample` of the database file holds exactly these rows.
void RequireRows(const std::string& path, const std::vector<SampleRow>& rows);

/// Writes SampleRows(count) into the contender's new database.
template <typename Contender>
void Fill(Contender& contender, int count)
{
    contender.Execute("ATTACH '" + FilledFile(count) + "' AS source");
    contender.Execute(CreateTable);
    contender.Execute("INSERT INTO main.sample SELECT * FROM source.sample");
    contender.Execute("DETACH source");
}

/// A contender on a database that is created again before each run, in memory or in a file.
template <typename Contender>
class Fresh {
public:
    explicit Fresh(bool inFile) : m_path(inFile ? NewFile() : InMemory) {}

    Contender& Get() { return *m_contender; }

    /// Creates a database with an empty table.
    void Make()
    {
        m_contender.reset();
        std::filesystem::remove(m_path);
        m_contender = std::make_unique<Contender>(m_path);
        Get().Execute(CreateTable);
    }

    /// Creates a database with an empty table and begins a transaction.
    void Begin()
    {
        Make();
        Get().Execute("BEGIN");
    }

    /// Creates a database whose table holds SampleRows(count) and begins a transaction.
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

    /// Commits the transaction, then ends the program unless the database holds exactly these rows.
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
