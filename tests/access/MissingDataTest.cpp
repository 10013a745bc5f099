#include "access/MissingData.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

#include <sqlite3.h>

namespace Morvik::sql::tests {

namespace {

using testing::ThrowsMessage;

TEST(MissingDataTest, NullHasNoTextAndSaysSo)
{
    EXPECT_THAT([] { ThrowMissingData(SQLITE_NULL); }, ThrowsMessage<std::logic_error>("SQL NULL has no text."));
}

TEST(MissingDataTest, AnythingElseLacksMemory)
{
    for (const int storageClass : {SQLITE_INTEGER, SQLITE_FLOAT, SQLITE_TEXT, SQLITE_BLOB}) {
        EXPECT_THROW(ThrowMissingData(storageClass), std::bad_alloc);
    }
}

} // namespace

} // namespace Morvik::sql::tests
