#include <gtest/gtest.h>
#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "faults/files/Transcript.h"
#include "support/ChildProcess.h"
#include "support/DatabaseFiles.h"
#include "support/FuzzInput.h"
#include "support/SoakMode.h"
#include "support/TemporaryDirectory.h"
#include "support/TestSeeds.h"

// Changes a real database. The library must give the same outcomes as the reference implementation, and leave the same
// bytes in the file.

namespace Morvik::sql::tests {

namespace {

constexpr std::size_t Page = 1024;

/// Gives damaged copies of one database to the library and to the reference implementation.
class DamagedFileTest : public testing::Test {
protected:
    DamagedFileTest() { Use(Page); }

    /// Begins the trials with a database of this page size.
    void Use(std::size_t pageSize)
    {
        content = SampleDatabase(pageSize);
        for (const bool readOnly : {false, true}) {
            const Result library = ResultOf(LibraryTranscript, content, readOnly);
            EXPECT_EQ(library.content == content, readOnly) << "the operations change the file";
            m_undamaged[readOnly] = library.transcript;
            Try(content, "undamaged", readOnly);
        }
        trials = unnoticed = 0;
    }

    /// Tries one damaged content, unless an earlier trial failed. `damage` describes the damage for a failure's
    /// message.
    void Try(const std::string& damaged, const std::string& damage, bool readOnly = false)
    {
        if (HasFailure()) {
            return;
        }
        const Result library = ResultOf(LibraryTranscript, damaged, readOnly);
        const Result reference = ResultOf(ReferenceTranscript, damaged, readOnly);
        ASSERT_EQ(Difference(library.transcript, reference.transcript), "") << damage;
        ASSERT_TRUE(library.content == reference.content) << damage << ": other bytes than with the reference";
        Tally(library.transcript, m_undamaged[readOnly]);
    }

    void CutTo(std::size_t bytes) { Try(content.substr(0, bytes), "cut to " + std::to_string(bytes) + " bytes"); }

    /// Tries the database with each of the bytes flipped, one at a time, with every pattern.
    void FlipEach(std::size_t begin, std::size_t end, const std::vector<unsigned>& patterns, std::size_t stride = 1)
    {
        for (std::size_t offset = begin; offset < end; offset += stride) {
            for (const unsigned pattern : patterns) {
                std::string damaged = content;
                damaged.at(offset) = static_cast<char>(static_cast<unsigned char>(damaged.at(offset)) ^ pattern);
                Try(damaged, "byte " + std::to_string(offset) + " ^ " + std::to_string(pattern));
            }
        }
    }

    /// The undamaged database.
    std::string content;

    /// How many damaged databases were tried, how many of them gave the same results as the undamaged one, and how many
    /// were read without a failure but with other content.
    int trials = 0;
    int unnoticed = 0;
    int otherContent = 0;

    /// For each of SQLite's codes, the number of databases on which an operation failed with that code.
    std::map<int, int> codes;

private:
    struct Result {
        Transcript transcript;
        std::string content;
    };

    /// Runs the operations on a file with this content. An exception is recorded as a distinct result.
    template <typename Operations>
    Result ResultOf(Operations operations, const std::string& before, bool readOnly) const
    {
        DatabaseFiles files;
        files.contents[""] = before;
        files.PutBack(m_path);
        Result result;
        try {
            result.transcript = operations(m_path, readOnly);
        } catch (const std::exception& thrown) {
            result.transcript.push_back({"an exception", false, -1, thrown.what()});
        }
        result.content = FileContent(m_path);
        return result;
    }

    void Tally(const Transcript& transcript, const Transcript& undamaged)
    {
        ++trials;
        if (transcript == undamaged) {
            ++unnoticed;
            return;
        }
        // A read-only database rejects the changes even without damage.
        std::set<int> failures;
        for (const StepOutcome& step : transcript) {
            if (!step.succeeded && step.code != 0) {
                failures.insert(step.code);
            }
        }
        for (const StepOutcome& step : undamaged) {
            failures.erase(step.code);
        }
        otherContent += failures.empty() ? 1 : 0;
        for (const int code : failures) {
            ++codes[code];
        }
    }

    const TemporaryDirectory m_directory;
    const std::string m_path = m_directory.File("damaged.db");
    std::map<bool, Transcript> m_undamaged;
};

// Files that end too early, as a copy or a power failure leaves them, and files that are too long.
using CutFileTest = DamagedFileTest;

TEST_F(CutFileTest, CompletePagesGiveEqualOutcomes)
{
    for (std::size_t bytes = 0; bytes < content.size(); bytes += Page) {
        CutTo(bytes);
    }

    EXPECT_EQ(trials, content.size() / Page);
    EXPECT_GT(codes[SQLITE_CORRUPT], 20);
}

TEST_F(CutFileTest, SizesWithinTheHeaderGiveEqualOutcomes)
{
    for (std::size_t bytes = 1; bytes < 2 * Page; bytes = bytes * 5 / 4 + 1) {
        CutTo(bytes);
    }

    EXPECT_GT(codes[SQLITE_NOTADB], 5);
    EXPECT_GT(codes[SQLITE_CORRUPT], 0);
}

TEST_F(CutFileTest, RandomSizesGiveEqualOutcomes)
{
    const int sizes = Rounds(100, 1000);
    for (const std::uint64_t seed : TestSeeds()) {
        SCOPED_TRACE(Describe(seed));
        FuzzInput choices(seed);
        for (int i = 0; i < sizes; ++i) {
            CutTo(choices.Below(content.size()));
        }
    }

    EXPECT_GT(codes[SQLITE_CORRUPT], sizes / 2);
}

TEST_F(CutFileTest, BytesAfterTheEndGiveEqualOutcomes)
{
    for (const std::size_t bytes : {std::size_t{1}, Page - 1, Page, 10 * Page}) {
        for (const char byte : {'\0', '\x2A'}) {
            Try(content + std::string(bytes, byte), std::to_string(bytes) + " bytes more");
        }
    }
}

TEST_F(CutFileTest, OneRepeatedByteGivesEqualOutcomes)
{
    for (const char byte : {'\0', '\x2A', '\xFF'}) {
        Try(std::string(3 * Page, byte), "filled with " + std::to_string(byte));
    }

    EXPECT_EQ(codes[SQLITE_NOTADB], 3);
}

// Patterns that flip all bits of a byte, and each bit alone.
const std::vector<unsigned> AllBits{0xFF};
const std::vector<unsigned> EachPattern{0xFF, 1, 2, 4, 8, 16, 32, 64, 128};

using FlippedByteTest = DamagedFileTest;

TEST_F(FlippedByteTest, EveryByteOfTheFirstPageGivesEqualOutcomes)
{
    FlipEach(0, Page, SoakIsOn() ? EachPattern : AllBits);

    EXPECT_GE(codes[SQLITE_NOTADB], 16) << "the file begins with 16 bytes that identify a database";
    EXPECT_GT(codes[SQLITE_CORRUPT], 100);
    EXPECT_GT(codes[SQLITE_ERROR], 20) << "the schema is there too";
    EXPECT_GT(otherContent, 20);
    EXPECT_LT(unnoticed, trials * 3 / 4);
}

TEST_F(FlippedByteTest, BytesOfFurtherPagesGiveEqualOutcomes)
{
    // Has no common factor with the page size, so that every position in a page is tried.
    constexpr std::size_t Stride = 97;
    ASSERT_GT(content.size(), 30 * Page);

    FlipEach(Page, content.size(), AllBits, Stride);
    if (SoakIsOn()) {
        FlipEach(Page, 4 * Page, EachPattern);
    }

    EXPECT_GT(codes[SQLITE_CORRUPT], 20);
    EXPECT_GT(otherContent, 50) << "texts and blobs are stored without any check";
}

TEST_F(FlippedByteTest, PagesOfDefaultSizeGiveEqualOutcomes)
{
    constexpr std::size_t DefaultPage = 4096;
    Use(DefaultPage);

    FlipEach(0, 4 * DefaultPage, AllBits, SoakIsOn() ? 1 : 211);

    EXPECT_LT(unnoticed, trials);
}

using HeaderValueTest = DamagedFileTest;

// A number in the header of the file, most significant byte first, and special values to try in addition to the
// usual ones.
struct HeaderField {
    const char* name;
    std::size_t offset;
    std::size_t bytes;
    std::vector<std::uint32_t> values;
};

// The page size 65536 is stored as 1.
const std::vector<HeaderField> Fields{
    {"page size", 16, 2, {256, 511, 512, 513, 2048, 4096, 32768, 65535}},
    {"write and read version", 18, 2, {0x0102, 0x0201, 0x0202, 0x0303}},
    {"reserved bytes of a page", 20, 1, {64, 255}},
    {"payload fractions", 21, 2, {0x4040, 0xFFFF}},
    {"leaf payload fraction", 23, 1, {255}},
    {"change counter", 24, 4, {}},
    {"page count", 28, 4, {35, 36, 37}},
    {"first free page", 32, 4, {35, 36, 37}},
    {"count of free pages", 36, 4, {5, 100}},
    {"schema cookie", 40, 4, {}},
    {"schema format", 44, 4, {4, 5}},
    {"cache size", 48, 4, {}},
    {"largest root page", 52, 4, {36}},
    {"text encoding", 56, 4, {4}},
    {"user version", 60, 4, {}},
    {"incremental vacuum", 64, 4, {}},
    {"application", 68, 4, {}},
    {"reserved for expansion", 72, 4, {}},
    {"version valid for", 92, 4, {}},
    {"version number", 96, 4, {}},
};

std::string WithValue(std::string content, const HeaderField& field, std::uint32_t value)
{
    for (std::size_t i = field.bytes; i > 0; --i) {
        content[field.offset + i - 1] = static_cast<char>(value & 0xFF);
        value >>= 8;
    }
    return content;
}

TEST_F(HeaderValueTest, UnlikelyValuesGiveEqualOutcomes)
{
    for (const HeaderField& field : Fields) {
        std::vector<std::uint32_t> values{0, 1, 2, 3, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
        values.insert(values.end(), field.values.begin(), field.values.end());
        for (const std::uint32_t value : values) {
            for (const bool readOnly : {false, true}) {
                const std::string damage = std::string(field.name) + " " + std::to_string(value);
                Try(WithValue(content, field, value), damage, readOnly);
            }
        }
    }

    EXPECT_GT(codes[SQLITE_NOTADB], 20);
    EXPECT_GT(codes[SQLITE_CORRUPT], 20);
    EXPECT_GT(codes[SQLITE_ERROR], 0) << "there are schema formats that SQLite does not know";
    EXPECT_GT(otherContent, 0) << "texts read in another encoding";
}

} // namespace

} // namespace Morvik::sql::tests
