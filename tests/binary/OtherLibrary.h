#pragma once

#include <sql/IDatabaseApi.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

#pragma GCC visibility push(default)

/// The base of a class hierarchy that is separate from the library's.
class OtherBase {
public:
    virtual ~OtherBase();
};

/// An implementation of the interface in a separate shared library, which exports nothing of the class except the
/// functions below. It appends the name of each called operation, also of the destructor, to `calls`. Its first base is
/// OtherBase, the interface is its second.
std::unique_ptr<IDatabaseApi> MakeNotingDatabase(std::vector<std::string>& calls);

/// Whether the other library recognises the object as an object of its class.
bool IsNotingDatabase(const IDatabaseApi& database);

/// Whether the other library recognises the object as the library's facade.
bool IsFacade(const IDatabaseApi& database);

/// A facade created by the other library.
std::unique_ptr<IDatabaseApi> MakeFacade();

/// Calls every operation of the interface on the object, from inside the other library.
bool CallEveryOperationThere(IDatabaseApi& database);

#pragma GCC visibility pop

/// The operations of the interface, in its order.
inline const std::vector<std::string> Operations{
    "OpenDatabase",    "CloseDatabase", "IsOpen",   "CreateTable",      "ExistsTable",
    "DropTable",       "AlterTable",    "Execute",  "WriteTableValues", "UpdateTableValues",
    "ReadTableValues", "ReadValues",    "ExistData"};

/// Calls every operation, in the order of the interface. Returns whether each one returned true, or 1.
inline bool CallEveryOperation(IDatabaseApi& database)
{
    int result = 0;
    DbTableData data;
    const bool results[] = {database.OpenDatabase("", false),
                            database.CloseDatabase(),
                            database.IsOpen(),
                            database.CreateTable({}),
                            database.ExistsTable("", result),
                            database.DropTable(""),
                            database.AlterTable("", ""),
                            database.Execute(""),
                            database.WriteTableValues("", {}),
                            database.UpdateTableValues("", {}, ""),
                            database.ReadTableValues("", data),
                            database.ReadValues("", data),
                            database.ExistData("", "", result) == 1};
    return std::ranges::all_of(results, std::identity());
}

} // namespace Morvik::sql::tests
