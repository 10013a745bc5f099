#pragma once

#include <sql/IDatabaseApi.h>

#include <memory>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// A separate class hierarchy, besides the library's.
class __attribute__((visibility("default"))) Named {
public:
    Named(const Named&) = delete;
    Named& operator=(const Named&) = delete;
    virtual ~Named();

    virtual std::string Name() const = 0;

protected:
    Named() = default;
};

/// An implementation of the interface in a separate shared library, which exports nothing of the class except the
/// functions below. It appends the name of each called operation, also of the destructor, to `calls`.
__attribute__((visibility("default"))) std::unique_ptr<IDatabaseApi>
MakeNotingDatabase(std::vector<std::string>& calls);

/// The same object as a Named: the interface is its second base.
__attribute__((visibility("default"))) std::unique_ptr<Named> MakeNamedDatabase(std::vector<std::string>& calls);

/// Whether the other library recognises the object as an object of its class.
__attribute__((visibility("default"))) bool IsNotingDatabase(const IDatabaseApi& database);

/// Whether the other library recognises the object as the library's facade.
__attribute__((visibility("default"))) bool IsFacade(const IDatabaseApi& database);

/// A facade created by the other library.
__attribute__((visibility("default"))) std::unique_ptr<IDatabaseApi> MakeFacade();

/// Calls every operation of the interface on the object, from inside the other library.
__attribute__((visibility("default"))) void CallEveryOperation(IDatabaseApi& database);

} // namespace Morvik::sql::tests
