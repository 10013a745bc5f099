#pragma once

#include <sql/SqlDatabase.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// A fixture with a connection that is open on a new, separate database file.
class WithOpenDatabase : public testing::Test {
protected:
    WithOpenDatabase()
    {
        if (!database.Open(path, false)) {
            throw std::runtime_error("no database at " + path + ": " + database.GetLastErrorMsg());
        }
    }

    const TemporaryDirectory directory;
    const std::string path = directory.File("test.db");
    SqlDatabase database;
};

} // namespace Morvik::sql::tests
