#pragma once

#include <sql/IDatabaseApi.h>

#include <memory>
#include <string>
#include <vector>

namespace Morvik::sql::tests {

/// A class hierarchy of its own, next to the library's.
class __attribute__((visibility("default"))) Named {
public:
    Named(const Named&) = delete;
    Named& operator=(const Named&) = delete;
    virtual ~Named();

    virtual std::string Name() const = 0;

protected:
    Named() = default;
};

/// An implementation of the interface that lives in a shared library of its own, which exports nothing of the class but
/// the functions below. It notes the name of each operation that is called, the destructor's included, in `calls`.
__attribute__((visibility("default"))) std::unique_ptr<IDatabaseApi>
MakeNotingDatabase(std::vector<std::string>& calls);

/// The same, seen as a Named: the interface is its second base.
__attribute__((visibility("default"))) std::unique_ptr<Named> MakeNamedDatabase(std::vector<std::string>& calls);

/// Whether the other library recognises the object as one of its own.
__attribute__((visibility("default"))) bool IsNotingDatabase(const IDatabaseApi& database);

/// Whether the other library recognises the object as the library's own facade.
__attribute__((visibility("default"))) bool IsFacade(const IDatabaseApi& database);

/// A facade made by the other library.
__attribute__((visibility("default"))) std::unique_ptr<IDatabaseApi> MakeFacade();

/// Asks the object for everything that the interface offers, from inside the other library.
__attribute__((visibility("default"))) void CallEveryOperation(IDatabaseApi& database);

} // namespace Morvik::sql::tests
