// Objects of the interface's type pass between libraries that were built separately: calls, casts, type comparisons and
// destruction must find the same classes on both sides.
#include <sql/DatabaseApi.h>
#include <sql/IDatabaseApi.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <typeinfo>
#include <vector>

#include "binary/OtherLibrary.h"

namespace Morvik::sql::tests {

namespace {

const std::vector<std::string> Operations{"OpenDatabase",     "CloseDatabase",     "IsOpen",          "CreateTable",
                                          "ExistsTable",      "DropTable",         "AlterTable",      "Execute",
                                          "WriteTableValues", "UpdateTableValues", "ReadTableValues", "ReadValues",
                                          "ExistData"};

// Overrides one operation of the facade and inherits the others, in the test program.
class ClosedFacade : public DatabaseApi {
public:
    bool OpenDatabase(const std::string& /*path*/, bool /*readOnly*/) override
    {
        ++refused;
        return false;
    }

    int refused = 0;
};

TEST(AcrossLibrariesTest, OperationsReachTheClassOfTheOtherLibrary)
{
    std::vector<std::string> calls;
    const std::unique_ptr<IDatabaseApi> database = MakeNotingDatabase(calls);

    EXPECT_TRUE(CallEveryOperation(*database));

    EXPECT_EQ(calls, Operations);
}

TEST(AcrossLibrariesTest, DestructionReachesTheClassOfTheOtherLibrary)
{
    std::vector<std::string> calls;

    MakeNotingDatabase(calls).reset();

    EXPECT_THAT(calls, testing::ElementsAre("destructor"));
}

TEST(AcrossLibrariesTest, OtherLibraryDistinguishesItsClassFromTheFacade)
{
    std::vector<std::string> calls;
    const std::unique_ptr<IDatabaseApi> noting = MakeNotingDatabase(calls);
    const DatabaseApi facade;

    EXPECT_TRUE(IsNotingDatabase(*noting));
    EXPECT_FALSE(IsFacade(*noting));
    EXPECT_TRUE(IsFacade(facade));
    EXPECT_FALSE(IsNotingDatabase(facade));
}

TEST(AcrossLibrariesTest, ProgramDistinguishesTheFacadeFromTheOtherClass)
{
    std::vector<std::string> calls;
    const std::unique_ptr<IDatabaseApi> noting = MakeNotingDatabase(calls);
    const std::unique_ptr<IDatabaseApi> facade = MakeFacade();

    const IDatabaseApi& facadeOfOtherLibrary = *facade;

    EXPECT_NE(dynamic_cast<DatabaseApi*>(facade.get()), nullptr);
    EXPECT_EQ(dynamic_cast<DatabaseApi*>(noting.get()), nullptr);
    EXPECT_EQ(typeid(facadeOfOtherLibrary), typeid(DatabaseApi));
}

TEST(AcrossLibrariesTest, InterfaceIsFoundBesideAnotherBaseClass)
{
    std::vector<std::string> calls;
    const std::unique_ptr<Named> named = MakeNamedDatabase(calls);

    auto* database = dynamic_cast<IDatabaseApi*>(named.get());

    ASSERT_NE(database, nullptr);
    EXPECT_TRUE(database->IsOpen());
    EXPECT_THAT(calls, testing::ElementsAre("IsOpen"));
    EXPECT_EQ(dynamic_cast<Named*>(database), named.get());
}

TEST(AcrossLibrariesTest, OtherLibraryCallsTheProgramsOverride)
{
    ClosedFacade facade;

    EXPECT_FALSE(CallEveryOperationThere(facade));

    EXPECT_EQ(facade.refused, 1);
    EXPECT_TRUE(IsFacade(facade));
    EXPECT_FALSE(facade.IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
