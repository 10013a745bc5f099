#pragma once

#include <sqlite3.h>

namespace Morvik::sql {

/// The library's result codes. They are just above SQLite's primary codes, so that no number has two meanings.
enum ResultCode : int {
    CaughtException = 110,
    NotOpen = 111,
    MissingValue = 112,
    NoSuchTable = 113,
};

static_assert(CaughtException > SQLITE_DONE, "the library's codes lie above SQLite's primary codes");

} // namespace Morvik::sql
