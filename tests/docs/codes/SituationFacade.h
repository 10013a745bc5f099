#pragma once

#include <sql/DatabaseApi.h>

#include <stdexcept>
#include <string>

#include "docs/codes/Situation.h"
#include "support/RawSqlite.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// A facade on a separate file, and a raw SQLite connection to it that gives SQLite's result. The file holds the table
/// t, whose column a is 1, 2 and 3, and the view failing, which fails at its second row.
struct SituationFacade {
    explicit SituationFacade(bool open = true)
    {
        plain.Execute("CREATE TABLE t (a UNIQUE); INSERT INTO t VALUES (1), (2), (3);"
                      "CREATE VIEW failing AS SELECT abs(-9223372036854775807 + 1 - a) AS a FROM t");
        if (open && !database.OpenDatabase(path, false)) {
            throw std::runtime_error(database.GetLastErrorMsg());
        }
    }

    /// Leaves the record 112 "Missing command.".
    void FailBefore() { database.Execute(""); }

    /// Another connection locks the file so that it cannot be read. The facade knows the schema and can compile
    /// queries.
    void LockAfterTheSchemaWasRead()
    {
        int result = -1;
        if (!database.ExistsTable("t", result)) {
            throw std::logic_error("the table is there");
        }
        plain.Execute("BEGIN EXCLUSIVE");
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    RawSqlite plain{path};
    DatabaseApi database;
};

} // namespace Morvik::sql::tests
