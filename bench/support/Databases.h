#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "support/Require.h"
#include "support/Sample.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::bench {

inline constexpr const char* InMemory = ":memory:";

/// The path of a file that does not exist yet.
std::string NewFile();

/// The path of a database file that holds SampleRows(count) in the table `sample`; the first call creates the file.
std::string FilledFile(int count);

/// The texts that are executed on the connections that `action` opens.
std::vector<std::string> ExecutedTexts(const std::function<void()>& action);

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

/// The database that a job changes.
struct Setup {
    bool inFile = false;        ///< Otherwise in memory.
    bool inTransaction = false; ///< The job runs in a transaction.
    int filled = 0;             ///< The table holds SampleRows(filled).
};

/// A contender on a database that is created again before each run.
template <typename Contender>
class Fresh {
public:
    explicit Fresh(const Setup& setup = {}) : m_setup(setup), m_path(setup.inFile ? NewFile() : InMemory) {}

    Contender& Get() { return *m_contender; }

    void Make()
    {
        m_contender.reset();
        std::filesystem::remove(m_path);
        m_contender = std::make_unique<Contender>(m_path);
        if (m_setup.filled > 0) {
            Fill(Get(), m_setup.filled);
        } else {
            Get().Execute(CreateTable);
        }
        if (m_setup.inTransaction) {
            Get().Execute("BEGIN");
        }
    }

    /// Commits the transaction, then ends the program unless the database holds exactly these rows.
    void RequireWritten(const std::vector<SampleRow>& rows)
    {
        if (m_setup.inTransaction) {
            Get().Execute("COMMIT");
        }
        const tests::TemporaryDirectory directory;
        const std::string copy = directory.File("copy.db");
        Get().Execute("VACUUM INTO '" + copy + "'");
        RequireRows(copy, rows);
    }

private:
    Setup m_setup;
    std::string m_path;
    std::unique_ptr<Contender> m_contender;
};

} // namespace Morvik::sql::bench
