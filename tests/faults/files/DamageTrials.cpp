#include "faults/files/DamageTrials.h"

#include <gtest/gtest.h>

#include <exception>
#include <set>
#include <utility>

#include "support/ChildProcess.h"
#include "support/DatabaseFiles.h"

namespace Morvik::sql::tests {

namespace {

using Operations = Transcript (*)(const std::string& path, bool readOnly);

struct FileResult {
    Transcript answers;
    std::string content;
};

/// Runs the operations on a file with this content. An exception is recorded as a distinct result.
FileResult Run(Operations operations, const std::string& path, const std::string& content, bool readOnly)
{
    DatabaseFiles files;
    files.contents[""] = content;
    files.PutBack(path);
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
