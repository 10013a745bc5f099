// Programs call the facade by the positions in its virtual table. If an operation moves, programs that are not compiled
// again call a different operation.
#include <sql/DatabaseApi.h>
#include <sql/IDatabaseApi.h>
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>

#include <cxxabi.h>
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "binary/ObjectBytes.h"

namespace Morvik::sql::tests {

namespace {

using testing::ContainsRegex;
using testing::StartsWith;

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

struct Function {
    std::string name;
    std::string library;
};

// The name of a function in the dynamic symbol table, empty if the function is not exported.
Function Find(const void* address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0) {
        return {};
    }
    return {info.dli_sname != nullptr ? info.dli_sname : "", info.dli_fname != nullptr ? info.dli_fname : ""};
}

std::string Demangled(const std::string& linkageName)
{
    const std::unique_ptr<char, decltype(&std::free)> text(
        abi::__cxa_demangle(linkageName.c_str(), nullptr, nullptr, nullptr), std::free);
    return text != nullptr ? text.get() : linkageName;
}

TEST(VirtualTableTest, OperationsFollowTheTwoDestructorsInOrder)
{
    const std::vector<std::pair<const char*, std::size_t>> operations{
        {"OpenDatabase", Slot(&IDatabaseApi::OpenDatabase)},
        {"CloseDatabase", Slot(&IDatabaseApi::CloseDatabase)},
        {"IsOpen", Slot(&IDatabaseApi::IsOpen)},
        {"CreateTable", Slot(&IDatabaseApi::CreateTable)},
        {"ExistsTable", Slot(&IDatabaseApi::ExistsTable)},
        {"DropTable", Slot(&IDatabaseApi::DropTable)},
        {"AlterTable", Slot(&IDatabaseApi::AlterTable)},
        {"Execute", Slot(&IDatabaseApi::Execute)},
        {"WriteTableValues", Slot(&IDatabaseApi::WriteTableValues)},
        {"UpdateTableValues", Slot(&IDatabaseApi::UpdateTableValues)},
        {"ReadTableValues", Slot(&IDatabaseApi::ReadTableValues)},
        {"ReadValues", Slot(&IDatabaseApi::ReadValues)},
        {"ExistData", Slot(&IDatabaseApi::ExistData)}};
    const DatabaseApi facade;
    const auto* table = TableOf(&facade);

    EXPECT_THAT(Find(table[0]).name, ContainsRegex("DatabaseApiD[12]Ev$")) << "the destructor of the complete object";
    EXPECT_THAT(Find(table[1]).name, ContainsRegex("DatabaseApiD0Ev$")) << "the deleting destructor";
    std::size_t position = 2;
    for (const auto& [operation, slot] : operations) {
        EXPECT_EQ(slot, position) << operation;
        EXPECT_THAT(Demangled(Find(table[position]).name),
                    StartsWith(std::string("Morvik::sql::DatabaseApi::") + operation + "("));
        ++position;
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
    const std::string library = Find(TableOf(&facade)[0]).library;
    EXPECT_EQ(Find(table[0]).library, library);
    EXPECT_EQ(Find(table[1]).library, library);
    EXPECT_NE(table[0], table[1]);
}

} // namespace

} // namespace Morvik::sql::tests
