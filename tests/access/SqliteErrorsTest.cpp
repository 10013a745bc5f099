#include "access/SqliteErrors.h"

#include <gmock/gmock.h>

#include <new>
#include <stdexcept>

namespace Morvik::sql::tests {

namespace {

using testing::ThrowsMessage;

TEST(SqliteErrorsTest, NullHasNoTextAndSaysSo)
{
    EXPECT_THAT([] { ThrowNullText(); }, ThrowsMessage<std::logic_error>("SQL NULL has no text."));
}

TEST(SqliteErrorsTest, LackOfMemoryIsABadAlloc)
{
    EXPECT_THROW(ThrowOutOfMemory(), std::bad_alloc);
}

} // namespace

} // namespace Morvik::sql::tests
