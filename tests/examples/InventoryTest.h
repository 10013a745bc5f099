#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "examples/ExampleProgram.h"
#include "examples/StatusText.h"
#include "support/TemporaryDirectory.h"

namespace Morvik::sql::tests {

/// Runs the package_inventory example on an inventory of the test's own, in a directory that is not there yet.
class InventoryTest : public testing::Test {
protected:
    /// The command line for a status file, the machine's own without one.
    std::vector<std::string> Command(const std::vector<std::string>& statusFile = {}) const
    {
        std::vector<std::string> arguments = {"--database", m_database};
        arguments.insert(arguments.end(), statusFile.begin(), statusFile.end());
        return ExampleCommand("package_inventory", arguments);
    }

    /// Runs the program on a status file with this content.
    ChildResult RunOn(const std::string& statusText) const
    {
        WriteFile(StatusFile(), statusText);
        return RunChild(Command({StatusFile()}));
    }

    std::string StatusFile() const { return m_directory.File("status"); }

    /// What the sqlite3 program answers on the inventory.
    std::string Answer(const std::string& sql) const { return AnswerOfSqlite3(m_database, sql); }

    /// Everything in the inventory but the times, and whether the file is sound: two inventories that answer the same
    /// are the same.
    std::string WholeInventory() const
    {
        return Answer("PRAGMA integrity_check; SELECT name FROM sqlite_master ORDER BY name;"
                      "SELECT count(*), sum(installed_size), sum(mark = 'largest'), sum(length(description)),"
                      "       min(version), max(version) FROM package");
    }

    TemporaryDirectory m_directory;
    std::string m_database = m_directory.File("missing/directories/inventory.db");
};

} // namespace Morvik::sql::tests
