#include <sql/DatabaseApi.h>

#include <chrono>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string_view>
#include <thread>

#include <sqlite3.h>

#include "support/Cells.h"

// One of several processes that use one database file at the same time:
//
//   writer FILE NUMBER SECONDS TIMEOUT     adds entries until the time is over
//   reader FILE NUMBER SECONDS TIMEOUT     reads the balance and the entries until then
//
// A writer or reader that has not succeeded even once continues until it does: SQLite does not promise fair turns.
// TIMEOUT is SQLite's busy timeout in milliseconds. The program prints "entry N" for every committed entry, "read" for
// every read, and "busy" for every operation that fails with SQLite's busy code and the text for that code; any other
// failure ends the program with status 1.

namespace {

using namespace Morvik::sql;
using std::chrono::steady_clock;
using tests::IntegerCell;

constexpr int AmountOfOneEntry = 3;

void ThrowUnless(bool holds, const std::string& failure)
{
    if (!holds) {
        throw std::runtime_error(failure);
    }
}

void Pause()
{
    std::this_thread::sleep_for(std::chrono::microseconds(200));
}

class StressWorker {
public:
    StressWorker(const std::string& path, int number, const std::string& timeout)
        : m_number(number), m_waits(timeout != "0")
    {
        // The power does not fail in this test, and workers that do not wait for the disk compete more often. The
        // first busy_timeout is needed because setting `synchronous` reads the file.
        Require(m_database.OpenDatabase(path, false) &&
                m_database.Execute("PRAGMA busy_timeout = 60000; PRAGMA synchronous = OFF; PRAGMA busy_timeout = " +
                                   timeout));
    }

    void AddEntries(steady_clock::time_point end)
    {
        bool succeeded = false;
        for (int entry = 1; steady_clock::now() < end || !succeeded; ++entry, Pause()) {
            if (entry % 2 == 0 ? DoneOrBusy(Insert(entry, 0)) : AddToBalance(entry)) {
                succeeded = true;
                std::cout << "entry " << entry << '\n';
            }
        }
    }

    void Read(steady_clock::time_point end)
    {
        bool succeeded = false;
        for (int entriesBefore = 0; steady_clock::now() < end || !succeeded; Pause()) {
            int entries = 0;
            if (DoneOrBusy(ReadTotals(entries)) && DoneOrBusy(WalkEntries(entries))) {
                succeeded = true;
                ThrowUnless(entries >= entriesBefore, "an entry is gone");
                entriesBefore = entries;
                std::cout << "read\n";
            } else {
                m_database.CloseReadTable(); // returns the code of the failed step again
            }
        }
    }

private:
    void Require(bool succeeded)
    {
        ThrowUnless(succeeded, std::to_string(m_database.GetLastError()) + " " + m_database.GetLastErrorMsg());
    }

    // Returns whether an operation succeeded. If it failed, the code must be SQLite's busy code.
    bool DoneOrBusy(bool succeeded)
    {
        if (!succeeded) {
            Require(m_database.GetLastError() == SQLITE_BUSY &&
                    m_database.GetLastErrorMsg() == sqlite3_errstr(SQLITE_BUSY));
            std::cout << "busy\n";
        }
        return succeeded;
    }

    bool Insert(int entry, int amount)
    {
        const DbTableRowValues row{{IntegerCell(m_number), IntegerCell(entry), IntegerCell(amount)}};
        return m_database.WriteTableValues("entry", {{"writer", "number", "amount"}, {row}});
    }

    // Reads the balance and writes it back changed: a change that another writer makes in between would be lost.
    bool AddToBalance(int entry)
    {
        // SQLite does not wait when a connection that holds a read lock wants to write: the wait could be a deadlock.
        const bool reserved = m_waits || entry % 4 == 1;
        if (!DoneOrBusy(m_database.Execute(reserved ? "BEGIN IMMEDIATE" : "BEGIN"))) {
            return false;
        }
        DbTableData data;
        if (DoneOrBusy(m_database.ReadTableValues("balance", data)) && DoneOrBusy(m_database.CloseReadTable())) {
            const int balance = std::get<int>(data.rows.at(0).cells.at(0).value) + AmountOfOneEntry;
            if (DoneOrBusy(Insert(entry, AmountOfOneEntry)) &&
                DoneOrBusy(m_database.UpdateTableValues("balance", {{"amount"}, {{{IntegerCell(balance)}}}}, "")) &&
                Commit()) {
                return true;
            }
        }
        m_database.CloseReadTable();
        Require(m_database.Execute("ROLLBACK"));
        return false;
    }

    // A rejected commit leaves the transaction open, so the commit can be repeated.
    bool Commit()
    {
        constexpr int Attempts = 3;
        for (int attempt = 0; attempt < Attempts; ++attempt, Pause()) {
            if (DoneOrBusy(m_database.Execute("COMMIT"))) {
                return true;
            }
        }
        return false;
    }

    bool ReadTotals(int& entries)
    {
        DbTableData data;
        if (!m_database.ReadValues("SELECT count(*), coalesce(sum(amount), 0), (SELECT amount FROM balance) FROM entry",
                                   data)) {
            return false;
        }
        const std::vector<DbTableColumnValue>& totals = data.rows.at(0).cells;
        ThrowUnless(totals.at(1).value == totals.at(2).value, "half of a change was read");
        entries = std::get<int>(totals.at(0).value);
        return true;
    }

    bool WalkEntries(int atLeast)
    {
        if (!m_database.SqlQueryBegin("SELECT amount FROM entry")) {
            return false;
        }
        int rows = 0;
        for (const DbTableRowValues& row : m_database) {
            ThrowUnless(row.cells.size() == 1, "a row is incomplete");
            ++rows;
        }
        if (m_database.Failed()) {
            return false;
        }
        ThrowUnless(rows >= atLeast, "a walk left an entry out");
        return m_database.CloseReadTable();
    }

    int m_number;
    bool m_waits;
    DatabaseApi m_database;
};

} // namespace

int main(int argc, char** argv)
{
    try {
        ThrowUnless(argc == 6, "ROLE FILE NUMBER SECONDS TIMEOUT");
        const auto end = steady_clock::now() + std::chrono::seconds(std::stoi(argv[4]));
        StressWorker worker(argv[2], std::stoi(argv[3]), argv[5]);
        std::string_view(argv[1]) == "writer" ? worker.AddEntries(end) : worker.Read(end);
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return EXIT_FAILURE;
    }
}
