#include "files/DamageTrials.h"

#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

#include "support/ChildProcess.h"
#include "support/RawSqlite.h"

namespace Morvik::sql::tests {

namespace {

/// A database with the tables "reading" (with the index "by_label") and "note", whose texts and blobs fill several
/// pages, and with free pages of a dropped table.
std::string SampleDatabase(std::size_t page)
{
    const TemporaryDirectory directory;
    const std::string path = directory.File("sample.db");
    RawSqlite sqlite(path);
    const auto insert = [&](const std::string& table, int rows, std::size_t labelSize) {
        const std::string size = "(" + std::to_string(labelSize) + " + i)";
        sqlite.Execute("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT " + std::to_string(rows) +
                       ") INSERT INTO " + table + " SELECT i, substr('label ' || (i * 7919 % 1000) || replace(hex(" +
                       "zeroblob(" + size + ")), '00', char(97 + i % 26)), 1, " + size + "), i / 8.0, NULL FROM n");
    };
    sqlite.Execute("PRAGMA synchronous = OFF; PRAGMA page_size = " + std::to_string(page));
    for (const char* const table : {"reading", "note", "scrap"}) {
        sqlite.Execute(std::string("CREATE TABLE ") + table +
                       " (number INTEGER PRIMARY KEY, label TEXT NOT NULL, value REAL, bytes BLOB)");
    }
    sqlite.Execute("CREATE INDEX by_label ON reading (label)");
    insert("scrap", 6, 2 * page);
    insert("reading", 60, page / 32);
    insert("note", 6, page);
    sqlite.Execute("UPDATE reading SET bytes = CAST(label || label || label AS BLOB) WHERE number = 3;"
                   "UPDATE note SET bytes = CAST(label || label AS BLOB) WHERE number = 2;"
                   "DELETE FROM scrap; DROP TABLE scrap");
    return FileContent(path);
}

using Operations = Transcript (*)(const std::string& path, bool readOnly);

struct FileResult {
    Transcript answers;
    std::string content;
};

/// Runs the operations on a file with this content. An exception is recorded as a distinct result.
FileResult Run(Operations operations, const std::string& path, const std::string& content, bool readOnly)
{
    // The file is created again each time: some systems write a file to the disk at once if it is emptied and filled
    // again.
    for (const char* companion : {"", "-journal", "-wal", "-shm"}) {
        std::filesystem::remove(path + companion);
    }
    std::ofstream(path, std::ios::binary) << content;
    FileResult outcome;
    try {
        outcome.answers = operations(path, readOnly);
    } catch (const std::exception& thrown) {
        outcome.answers.push_back({"an exception", false, -1, thrown.what()});
    }
    outcome.content = FileContent(path);
    return outcome;
}

} // namespace

DamageTrials::DamageTrials(std::size_t pageSize) : m_content(SampleDatabase(pageSize))
{
    for (const bool readOnly : {false, true}) {
        const FileResult library = Run(LibraryTranscript, m_path, m_content, readOnly);
        EXPECT_EQ(library.content == m_content, readOnly) << "the operations change the file";
        m_undamaged[readOnly] = library.answers;
        EXPECT_TRUE(Try(m_content, "undamaged", readOnly));
    }
    trials = unnoticed = 0;
}

bool DamageTrials::Try(const std::string& damaged, const std::string& damage, bool readOnly)
{
    const FileResult library = Run(LibraryTranscript, m_path, damaged, readOnly);
    const FileResult reference = Run(ReferenceTranscript, m_path, damaged, readOnly);
    const std::string difference = Difference(library.answers, reference.answers);
    EXPECT_EQ(difference, "") << damage;
    EXPECT_TRUE(library.content == reference.content) << damage << ": the library left other bytes than the reference";
    Tally(library.answers, m_undamaged[readOnly]);
    return difference.empty() && library.content == reference.content;
}

void DamageTrials::Tally(const Transcript& answers, const Transcript& undamaged)
{
    ++trials;
    if (answers == undamaged) {
        ++unnoticed;
        return;
    }
    // A read-only database rejects the changes even without damage.
    std::set<int> failures;
    for (const StepOutcome& answer : answers) {
        if (!answer.succeeded && answer.code != 0) {
            failures.insert(answer.code);
        }
    }
    for (const StepOutcome& answer : undamaged) {
        failures.erase(answer.code);
    }
    otherContent += failures.empty() ? 1 : 0;
    for (const int code : failures) {
        ++codes[code];
    }
}

} // namespace Morvik::sql::tests
