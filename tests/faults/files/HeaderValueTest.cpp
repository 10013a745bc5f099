#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "files/DamageTrials.h"
#include "files/SampleDatabase.h"

namespace Morvik::sql::tests {

namespace {

/// A number in the header of the file, most significant byte first, and the values to try in addition to the usual
/// ones.
struct HeaderField {
    const char* name;
    std::size_t offset;
    std::size_t bytes;
    std::vector<std::uint32_t> values;
};

constexpr int Page = 1024;

// 65536 is written as 1.
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

TEST(HeaderValueTest, UnlikelyValuesAreAnsweredAsRawSqliteAnswersThem)
{
    DamageTrials trials(SampleDatabase(Page));

    for (const HeaderField& field : Fields) {
        std::vector<std::uint32_t> values{0, 1, 2, 3, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFE, 0xFFFFFFFF};
        values.insert(values.end(), field.values.begin(), field.values.end());
        for (const std::uint32_t value : values) {
            for (const bool readOnly : {false, true}) {
                const std::string damage = std::string(field.name) + " " + std::to_string(value);
                ASSERT_TRUE(trials.Try(WithValue(trials.Content(), field, value), damage, readOnly));
            }
        }
    }

    EXPECT_GT(trials.codes[SQLITE_NOTADB], 20);
    EXPECT_GT(trials.codes[SQLITE_CORRUPT], 20);
    EXPECT_GT(trials.codes[SQLITE_ERROR], 0) << "there are schema formats that SQLite does not know";
    EXPECT_GT(trials.otherContent, 0) << "texts read in another encoding";
}

} // namespace

} // namespace Morvik::sql::tests
