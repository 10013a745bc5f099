#include <sql/IDatabaseApi.h>

#include <memory>
#include <type_traits>

#include <gmock/gmock.h>

#include <sql/DatabaseApi.h>

#include "support/Cells.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

static_assert(std::is_abstract_v<IDatabaseApi>);
static_assert(std::has_virtual_destructor_v<IDatabaseApi>);
static_assert(std::is_base_of_v<IDatabaseApi, DatabaseApi> && std::is_convertible_v<DatabaseApi*, IDatabaseApi*>);
static_assert(!std::is_copy_constructible_v<IDatabaseApi> && !std::is_copy_assignable_v<IDatabaseApi>);

TEST(IDatabaseApiTest, EveryOperationIsReachedThroughTheInterface)
{
    const std::unique_ptr<IDatabaseApi> database = std::make_unique<DatabaseApi>();
    DbTableData data;
    int result = -1;

    EXPECT_TRUE(database->OpenDatabase(":memory:", false));
    EXPECT_TRUE(database->IsOpen());
    EXPECT_TRUE(database->CreateTable({"t", {{"a"}}, {}}));
    EXPECT_TRUE(database->WriteTableValues("t", {{"a"}, {{{IntegerCell(1)}}}}));
    EXPECT_TRUE(database->Execute("INSERT INTO t VALUES (2)"));
    EXPECT_TRUE(database->UpdateTableValues("t", {{"a"}, {{{IntegerCell(3)}}}}, "WHERE a=1"));
    EXPECT_TRUE(database->AlterTable("t", "u"));
    EXPECT_TRUE(database->ExistsTable("u", result));
    EXPECT_TRUE(database->ReadTableValues("u", data));
    EXPECT_TRUE(database->ReadValues("SELECT max(a) FROM u", data));
    EXPECT_EQ(database->ExistData("u", "WHERE a > 0", result), 2);
    EXPECT_TRUE(database->DropTable("u"));
    EXPECT_TRUE(database->CloseDatabase());
    EXPECT_FALSE(database->IsOpen());

    EXPECT_THAT(CellTexts(data), ElementsAre(ElementsAre("0:Integer int(3)"), ElementsAre("0:Integer int(2)"),
                                             ElementsAre("0:Integer int(3)")));
}

} // namespace

} // namespace Morvik::sql::tests
