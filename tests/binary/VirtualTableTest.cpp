// Programs call the facade by the positions in its virtual table. If an operation moves, programs that are not compiled
// again call a different operation.
#include <sql/DatabaseApi.h>
#include <sql/IDatabaseApi.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <typeinfo>
#include <vector>

#include "binary/ObjectBytes.h"
#include "binary/OtherLibrary.h"

namespace Morvik::sql::tests {

namespace {

using testing::ContainsRegex;

// The position in the virtual table that a call through the member pointer uses. Compilers of the common C++ ABI store
// the position in bytes; ARM marks a virtual function in the second field, others in the lowest bit of the first.
template <typename Operation>
std::size_t Slot(Operation operation)
{
    struct {
        std::ptrdiff_t function;
        std::ptrdiff_t adjustment;
    } pointer;
    static_assert(sizeof operation == sizeof pointer);
    std::memcpy(&pointer, &operation, sizeof pointer);
#if defined(__arm__)
    EXPECT_EQ(pointer.adjustment, 1) << "not a virtual function of this class itself";
#else
    EXPECT_EQ(pointer.adjustment, 0) << "not a function of this class itself";
    EXPECT_EQ(pointer.function % 2, 1) << "not a virtual function";
#endif
    return static_cast<std::size_t>(pointer.function) / sizeof(void*);
}

// The functions in the virtual table of the object at `object`, in order.
const void* const* TableOf(const void* object)
{
    return ReadAt<const void* const*>(object, 0);
}

// The name of a function in the dynamic symbol table, null if the function is not exported, and its library.
Dl_info Find(const void* address)
{
    Dl_info info{};
    dladdr(address, &info);
    return info;
}

TEST(VirtualTableTest, OperationsFollowTheTwoDestructorsInOrder)
{
    const std::vector<std::size_t> slots{Slot(&IDatabaseApi::OpenDatabase),     Slot(&IDatabaseApi::CloseDatabase),
                                         Slot(&IDatabaseApi::IsOpen),           Slot(&IDatabaseApi::CreateTable),
                                         Slot(&IDatabaseApi::ExistsTable),      Slot(&IDatabaseApi::DropTable),
                                         Slot(&IDatabaseApi::AlterTable),       Slot(&IDatabaseApi::Execute),
                                         Slot(&IDatabaseApi::WriteTableValues), Slot(&IDatabaseApi::UpdateTableValues),
                                         Slot(&IDatabaseApi::ReadTableValues),  Slot(&IDatabaseApi::ReadValues),
                                         Slot(&IDatabaseApi::ExistData)};
    const DatabaseApi facade;
    const auto* table = TableOf(&facade);

    EXPECT_THAT(Find(table[0]).dli_sname, ContainsRegex("DatabaseApiD[12]Ev$"))
        << "the destructor of the complete object";
    EXPECT_THAT(Find(table[1]).dli_sname, ContainsRegex("DatabaseApiD0Ev$")) << "the deleting destructor";
    ASSERT_EQ(slots.size(), Operations.size());
    for (std::size_t i = 0; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i], 2 + i) << Operations[i];
        EXPECT_THAT(Find(table[2 + i]).dli_sname,
                    ContainsRegex("^_ZNK?6Morvik3sql11DatabaseApi[0-9]+" + Operations[i] + "E"));
    }
}

TEST(VirtualTableTest, PrivateStateOfAStatementBeginsWithItsTwoDestructors)
{
    SqlDatabase database;
    const SqlCommand command(database);
    const void* state = ReadAt<const void*>(&command, 0);
    const auto* table = TableOf(state);

    EXPECT_EQ(ReadAt<std::ptrdiff_t>(table - 2, 0), 0) << "the object begins with this table";
    EXPECT_STREQ(static_cast<const std::type_info*>(table[-1])->name(), "N6Morvik3sql10SqlCommand4ImplE");
    const DatabaseApi facade;
    const char* const library = Find(TableOf(&facade)[0]).dli_fname;
    ASSERT_NE(library, nullptr);
    EXPECT_STREQ(Find(table[0]).dli_fname, library);
    EXPECT_STREQ(Find(table[1]).dli_fname, library);
    EXPECT_NE(table[0], table[1]);
}

} // namespace

} // namespace Morvik::sql::tests
