#include "files/DamageTrials.h"

#include <gtest/gtest.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <set>
#include <utility>

#include "support/ChildProcess.h"

namespace Morvik::sql::tests {

namespace {

using Operations = Transcript (*)(const std::string& path, bool readOnly);

struct Outcome {
    Transcript answers;
    std::string content;
};

/// Runs the operations on a file with this content. An exception is recorded as a distinct result.
Outcome Run(Operations operations, const std::string& path, const std::string& content, bool readOnly)
{
    // The file is created again each time: some systems write a file to the disk at once if it is emptied and filled
    // again.
    for (const char* companion : {"", "-journal", "-wal", "-shm"}) {
        std::filesystem::remove(path + companion);
    }
    std::ofstream(path, std::ios::binary) << content;
    Outcome outcome;
    try {
        outcome.answers = operations(path, readOnly);
    } catch (const std::exception& thrown) {
        outcome.answers.push_back({"an exception", false, -1, thrown.what()});
    }
    outcome.content = FileContent(path);
    return outcome;
}

} // namespace

DamageTrials::DamageTrials(std::string content) : m_content(std::move(content))
{
    for (const bool readOnly : {false, true}) {
        const Outcome library = Run(LibraryTranscript, m_path, m_content, readOnly);
        EXPECT_EQ(library.content == m_content, readOnly) << "the operations change the file";
        m_undamaged[readOnly] = library.answers;
        EXPECT_TRUE(Try(m_content, "undamaged", readOnly));
    }
    trials = unnoticed = 0;
}

bool DamageTrials::Try(const std::string& damaged, const std::string& damage, bool readOnly)
{
    const Outcome library = Run(LibraryTranscript, m_path, damaged, readOnly);
    const Outcome reference = Run(ReferenceTranscript, m_path, damaged, readOnly);
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
