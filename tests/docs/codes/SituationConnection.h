#pragma once

#include <sql/SqlDatabase.h>

#include <stdexcept>
#include <string>

#include "docs/codes/Situation.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// A connection to a separate file, and a raw SQLite connection to it that gives SQLite's result. The file holds the
/// table t, whose column a is 1, 2 and 3.
struct SituationConnection {
    explicit SituationConnection(bool open = true)
    {
        plain.Execute("CREATE TABLE t (a UNIQUE); INSERT INTO t VALUES (1), (2), (3)");
        if (open && !database.Open(path, false)) {
            throw std::runtime_error(database.GetLastErrorMsg());
        }
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    RawSqlite plain{path};
    SqlDatabase database;
};

} // namespace Morvik::sql::tests
