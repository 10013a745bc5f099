#include "model/Strings.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "support/OomInjector.h"

namespace Morvik::sql::tests {

namespace {

TEST(StringsTest, PartsFollowOneAnother)
{
    EXPECT_EQ(StrCat({"one", "", std::string_view("t\0wo", 4), "three"}), std::string("onet\0wothree", 12));
    EXPECT_EQ(StrCat({}), "");
}

TEST(StringsTest, TextIsAllocatedOnceAndTakesNoMoreThanItNeeds)
{
    const std::string part(100, 'x');
    bool fired = true;
    std::string text;

    {
        const OomInjector failing(1);
        text = StrCat({part, part, part});
        fired = failing.Fired();
    }

    EXPECT_FALSE(fired);
    EXPECT_EQ(text.size(), 300U);
    EXPECT_EQ(text.capacity(), 300U);
}

} // namespace

} // namespace Morvik::sql::tests
