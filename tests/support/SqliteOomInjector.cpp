#include "support/SqliteOomInjector.h"

#include <sqlite3.h>

#include <stdexcept>
#include <string>

#include "support/FaultCounter.h"

namespace Morvik::sql::tests {

namespace {

thread_local FaultCounter failurePoint;
sqlite3_mem_methods usual{};

void* Allocate(int size)
{
    return failurePoint.Reached() ? nullptr : usual.xMalloc(size);
}

void* Reallocate(void* memory, int size)
{
    return failurePoint.Reached() ? nullptr : usual.xRealloc(memory, size);
}

template <typename... Values>
void Configure(int option, Values... values)
{
    const int code = sqlite3_config(option, values...);
    if (code != SQLITE_OK) {
        throw std::runtime_error("sqlite3_config: option " + std::to_string(option) + ", code " + std::to_string(code));
    }
}

} // namespace

void SqliteOomInjector::Install()
{
    if (usual.xMalloc != nullptr) {
        return;
    }
    if (sqlite3_shutdown() != SQLITE_OK) {
        throw std::runtime_error("SQLite is in use already");
    }
    Configure(SQLITE_CONFIG_GETMALLOC, &usual);
    sqlite3_mem_methods failing = usual;
    failing.xMalloc = Allocate;
    failing.xRealloc = Reallocate;
    Configure(SQLITE_CONFIG_MALLOC, &failing);
    Configure(SQLITE_CONFIG_LOOKASIDE, 0, 0);
    Configure(SQLITE_CONFIG_PAGECACHE, static_cast<void*>(nullptr), 0, 0);
}

SqliteOomInjector::SqliteOomInjector(int succeeding, FailureExtent extent)
{
    failurePoint.Set(succeeding, extent);
}

SqliteOomInjector::~SqliteOomInjector()
{
    failurePoint.Clear();
}

bool SqliteOomInjector::Fired() const
{
    return failurePoint.Fired();
}

} // namespace Morvik::sql::tests
