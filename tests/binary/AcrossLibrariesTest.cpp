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

// Overrides one operation of the facade and inherits the others, in the test program.
class ClosedFacade : public DatabaseApi {
public:
    bool OpenDatabase(const std::string&, bool) override
    {
        ++refused;
        return false;
    }

    int refused = 0;
};

class AcrossLibrariesTest : public testing::Test {
protected:
    std::vector<std::string> m_calls;
    std::unique_ptr<IDatabaseApi> m_noting = MakeNotingDatabase(m_calls);
};

TEST_F(AcrossLibrariesTest, OperationsReachTheClassOfTheOtherLibrary)
{
    EXPECT_TRUE(CallEveryOperation(*m_noting));

    EXPECT_EQ(m_calls, Operations);
}

TEST_F(AcrossLibrariesTest, DestructionReachesTheClassOfTheOtherLibrary)
{
    m_noting.reset();

    EXPECT_THAT(m_calls, testing::ElementsAre("destructor"));
}

TEST_F(AcrossLibrariesTest, OtherLibraryDistinguishesItsClassFromTheFacade)
{
    const DatabaseApi facade;

    EXPECT_TRUE(IsNotingDatabase(*m_noting));
    EXPECT_FALSE(IsFacade(*m_noting));
    EXPECT_TRUE(IsFacade(facade));
    EXPECT_FALSE(IsNotingDatabase(facade));
}

TEST_F(AcrossLibrariesTest, ProgramDistinguishesTheFacadeFromTheOtherClass)
{
    const std::unique_ptr<IDatabaseApi> facade = MakeFacade();

    const IDatabaseApi& facadeOfOtherLibrary = *facade;

    EXPECT_NE(dynamic_cast<DatabaseApi*>(facade.get()), nullptr);
    EXPECT_EQ(dynamic_cast<DatabaseApi*>(m_noting.get()), nullptr);
    EXPECT_EQ(typeid(facadeOfOtherLibrary), typeid(DatabaseApi));
}

TEST_F(AcrossLibrariesTest, InterfaceIsFoundBesideAnotherBaseClass)
{
    auto* const other = dynamic_cast<OtherBase*>(m_noting.get());
    auto* const database = dynamic_cast<IDatabaseApi*>(other);

    ASSERT_NE(other, nullptr);
    ASSERT_EQ(database, m_noting.get());
    EXPECT_TRUE(database->IsOpen());
    EXPECT_THAT(m_calls, testing::ElementsAre("IsOpen"));
}

TEST_F(AcrossLibrariesTest, OtherLibraryCallsTheProgramsOverride)
{
    ClosedFacade facade;

    EXPECT_FALSE(CallEveryOperationThere(facade));

    EXPECT_EQ(facade.refused, 1);
    EXPECT_TRUE(IsFacade(facade));
    EXPECT_FALSE(facade.IsOpen());
}

} // namespace

} // namespace Morvik::sql::tests
