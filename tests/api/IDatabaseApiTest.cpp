#include <sql/IDatabaseApi.h>

#include <sql/DatabaseApi.h>

#include <gmock/gmock.h>

#include <memory>
#include <type_traits>

#include "support/Cells.h"
#include "support/SqliteCallRecorder.h"

namespace Morvik::sql::tests {

namespace {

using testing::ElementsAre;

static_assert(std::is_abstract_v<IDatabaseApi>);
static_assert(std::has_virtual_destructor_v<IDatabaseApi>);
static_assert(std::is_base_of_v<IDatabaseApi, DatabaseApi> && std::is_convertible_v<DatabaseApi*, IDatabaseApi*>);
static_assert(!std::is_copy_constructible_v<IDatabaseApi> && !std::is_copy_assignable_v<IDatabaseApi>);

/// An application's test double for a database.
class DatabaseDouble : public IDatabaseApi {
public:
    explicit DatabaseDouble(bool& destroyed) : m_destroyed(destroyed) {}
    ~DatabaseDouble() override { m_destroyed = true; }

    bool OpenDatabase(const std::string&, bool) override { return m_open = true; }
    bool CloseDatabase() override { return !(m_open = false); }
    bool IsOpen() const override { return m_open; }
    bool CreateTable(const DbTableDefinition&) override { return true; }
    bool ExistsTable(const std::string&, int&) const override { return true; }
    bool DropTable(const std::string&) override { return true; }
    bool AlterTable(const std::string&, const std::string&) override { return true; }
    bool Execute(const std::string&) override { return true; }
    bool WriteTableValues(const std::string&, const DbTableDataWrite&) override { return true; }
    bool UpdateTableValues(const std::string&, const DbTableDataWrite&, const std::string&) override { return true; }
    bool ReadTableValues(const std::string&, DbTableData&) const override { return true; }
    bool ReadValues(const std::string&, DbTableData&) const override { return true; }
    int ExistData(const std::string&, const std::string&, int&) override { return 3; }

private:
    bool& m_destroyed;
    bool m_open = false;
};

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

TEST(IDatabaseApiTest, DestructionThroughTheInterfaceClosesTheDatabase)
{
    std::unique_ptr<IDatabaseApi> database = std::make_unique<DatabaseApi>();
    ASSERT_TRUE(database->OpenDatabase(":memory:", false));
    const SqliteCallRecorder sqlite;

    database.reset();

    EXPECT_THAT(sqlite.Calls(), ElementsAre("sqlite3_close(handle)"));
}

TEST(IDatabaseApiTest, DynamicCastDistinguishesImplementationsOfTheInterface)
{
    bool destroyed = false;
    int result = 0;
    const std::unique_ptr<IDatabaseApi> facade = std::make_unique<DatabaseApi>();
    std::unique_ptr<IDatabaseApi> other = std::make_unique<DatabaseDouble>(destroyed);

    EXPECT_TRUE(other->OpenDatabase("anything", true));
    EXPECT_TRUE(other->IsOpen());
    EXPECT_EQ(other->ExistData("t", "", result), 3);
    EXPECT_NE(dynamic_cast<DatabaseApi*>(facade.get()), nullptr);
    EXPECT_EQ(dynamic_cast<DatabaseApi*>(other.get()), nullptr);
    EXPECT_NE(dynamic_cast<DatabaseDouble*>(other.get()), nullptr);
    EXPECT_EQ(dynamic_cast<DatabaseDouble*>(facade.get()), nullptr);
    other.reset();

    EXPECT_TRUE(destroyed);
}

} // namespace

} // namespace Morvik::sql::tests
