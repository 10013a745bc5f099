#pragma once

#include <sqlite3.h>

namespace Morvik::sql {

/// The library's own result codes. They share one number space with SQLite's primary codes and lie just above them.
enum ResultCode : int {
    CaughtException = 110,
    NotOpen = 111,
    MissingValue = 112,
    NoSuchTable = 113,
};

static_assert(CaughtException > SQLITE_DONE, "the library's codes lie above SQLite's primary codes");

} // namespace Morvik::sql
