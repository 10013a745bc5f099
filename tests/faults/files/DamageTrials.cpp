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

Transcript Everything(const std::string& path, bool readOnly)
{
    Transcript answers = AccessTranscript(path);
    for (Answer& answer : FacadeTranscript(path, readOnly)) {
        answers.push_back(std::move(answer));
    }
    return answers;
}

Transcript PlainEverything(const std::string& path, bool readOnly)
{
    Transcript answers = PlainAccessTranscript(path);
    for (Answer& answer : PlainFacadeTranscript(path, readOnly)) {
        answers.push_back(std::move(answer));
    }
    return answers;
}

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
        outcome.answers.push_back({"an exception", false, -1, thrown.what(), {}});
    }
    outcome.content = FileContent(path);
    return outcome;
}

} // namespace

DamageTrials::DamageTrials(std::string content) : m_content(std::move(content))
{
    for (const bool readOnly : {false, true}) {
        const Outcome library = Run(Everything, m_path, m_content, readOnly);
        const Outcome plain = Run(PlainEverything, m_path, m_content, readOnly);
        EXPECT_EQ(Difference(library.answers, plain.answers), "") << "undamaged";
        EXPECT_EQ(library.content == m_content, readOnly) << "the operations change the file";
        m_undamaged[readOnly] = library.answers;
    }
}

bool DamageTrials::Try(const std::string& damaged, const std::string& damage, bool readOnly)
{
    const Outcome library = Run(Everything, m_path, damaged, readOnly);
    const Outcome plain = Run(PlainEverything, m_path, damaged, readOnly);
    EXPECT_EQ(Difference(library.answers, plain.answers), "") << damage;
    EXPECT_TRUE(library.content == plain.content) << damage << ": the library left other bytes than plain SQLite";
    Tally(library.answers, m_undamaged[readOnly]);
    return library.answers == plain.answers && library.content == plain.content;
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
    for (const Answer& answer : answers) {
        if (!answer.succeeded && answer.code != 0) {
            failures.insert(answer.code);
        }
    }
    for (const Answer& answer : undamaged) {
        failures.erase(answer.code);
    }
    otherContent += failures.empty() ? 1 : 0;
    for (const int code : failures) {
        ++codes[code];
    }
}

} // namespace Morvik::sql::tests
