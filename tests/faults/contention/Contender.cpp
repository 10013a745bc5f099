#include <sql/DatabaseApi.h>

#include <sqlite3.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
#include <thread>
#include <variant>

// One of several processes that use one database file at once:
//
//   writer FILE NUMBER SECONDS TIMEOUT     adds entries until the time is over
//   reader FILE NUMBER SECONDS TIMEOUT     reads the balance and the entries until then
//   holder FILE MARK SECONDS TIMEOUT       locks the file, makes the directory MARK, later adds an entry
//
// A writer or reader that has not succeeded even once continues until it does: SQLite does not promise fair turns.
// TIMEOUT is SQLite's busy timeout in milliseconds. The program prints "entry N" for every acknowledged entry, "read"
// for every read, and "refused" for every rejected operation. An operation is rejected with SQLite's busy code and the
// text for that code; any other failure ends the program with status 1.

namespace {

using namespace Morvik::sql;
using std::chrono::steady_clock;

constexpr int AmountOfOneEntry = 3;

class Contender {
public:
    Contender(const std::string& path, int number, const std::string& timeout)
        : m_number(number), m_waits(timeout != "0")
    {
        Require(m_database.OpenDatabase(path, false) && m_database.Execute("PRAGMA busy_timeout = 60000"));
        // The power does not fail in this test, and contenders that do not wait for the disk compete more often. This
        // statement also reads the file.
        Require(m_database.Execute("PRAGMA synchronous = OFF"));
        Require(m_database.Execute("PRAGMA busy_timeout = " + timeout));
    }

    void AddEntries(steady_clock::time_point end)
    {
        bool served = false;
        for (int entry = 1; steady_clock::now() < end || !served; ++entry) {
            const bool alone = entry % 2 == 0;
            if (alone ? Granted(Insert(entry, 0)) : AddToBalance(entry)) {
                served = true;
                std::cout << "entry " << entry << '\n';
            }
            StepAside();
        }
    }

    void Read(steady_clock::time_point end)
    {
        bool served = false;
        for (int entriesBefore = 0; steady_clock::now() < end || !served; StepAside()) {
            int entries = 0;
            if (Granted(ReadTotals(entries)) && Granted(WalkEntries(entries))) {
                served = true;
                Check(entries >= entriesBefore, "an entry is gone");
                entriesBefore = entries;
                std::cout << "read\n";
            } else {
                m_database.CloseReadTable(); // returns the code of the failed step again
            }
        }
    }

    void Hold(const std::string& mark, std::chrono::milliseconds duration)
    {
        Require(m_database.Execute("BEGIN EXCLUSIVE"));
        std::filesystem::create_directory(mark);
        std::this_thread::sleep_for(duration);
        Require(Insert(1, 0) && m_database.Execute("COMMIT"));
        std::cout << "entry 1\n";
    }

private:
    static void Check(bool holds, const std::string& what)
    {
        if (!holds) {
            throw std::runtime_error(what);
        }
    }

    void Require(bool succeeded)
    {
        Check(succeeded, std::to_string(m_database.GetLastError()) + " " + m_database.GetLastErrorMsg());
    }

    // Returns whether an operation succeeded; if it failed, the code must be SQLite's busy code.
    bool Granted(bool succeeded)
    {
        if (!succeeded) {
            const bool refused =
                m_database.GetLastError() == SQLITE_BUSY && m_database.GetLastErrorMsg() == sqlite3_errstr(SQLITE_BUSY);
            Require(refused);
            std::cout << "refused\n";
        }
        return succeeded;
    }

    bool Insert(int entry, int amount)
    {
        const DbTableColumnValue number{DbTableColumnType::Integer, 0, entry};
        return m_database.WriteTableValues(
            "entry",
            {{"writer", "number", "amount"},
             {{{{DbTableColumnType::Integer, 0, m_number}, number, {DbTableColumnType::Integer, 0, amount}}}}});
    }

    // Reads the balance, adds to it and writes it back: another writer's change between the two would be lost.
    bool AddToBalance(int entry)
    {
        // SQLite returns at once where waiting would be a deadlock: when a connection that holds a read lock wants to
        // write.
        const bool reserved = m_waits || entry % 4 == 1;
        if (!Granted(m_database.Execute(reserved ? "BEGIN IMMEDIATE" : "BEGIN"))) {
            return false;
        }
        DbTableData data;
        if (Granted(m_database.ReadTableValues("balance", data)) && Granted(m_database.CloseReadTable())) {
            const int balance = std::get<int>(data.rows.at(0).cells.at(0).value) + AmountOfOneEntry;
            const DbTableDataWrite write{{"amount"}, {{{{DbTableColumnType::Integer, 0, balance}}}}};
            if (Granted(Insert(entry, AmountOfOneEntry)) &&
                Granted(m_database.UpdateTableValues("balance", write, "")) && Commit()) {
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
        for (int attempt = 0; attempt < Attempts; ++attempt) {
            if (Granted(m_database.Execute("COMMIT"))) {
                return true;
            }
            StepAside();
        }
        return false;
    }

    bool ReadTotals(int& entries)
    {
        DbTableData data;
        const bool read = m_database.ReadValues(
            "SELECT count(*), coalesce(sum(amount), 0), (SELECT amount FROM balance) FROM entry", data);
        if (read) {
            const DbTableRowValues& totals = data.rows.at(0);
            Check(totals.cells.at(1).value == totals.cells.at(2).value, "a change was seen by half");
            entries = std::get<int>(totals.cells.at(0).value);
        }
        return read;
    }

    bool WalkEntries(int atLeast)
    {
        if (!m_database.SqlQueryBegin("SELECT amount FROM entry")) {
            return false;
        }
        int rows = 0;
        for (const DbTableRowValues& row : m_database) {
            Check(row.cells.size() == 1, "a row is incomplete");
            ++rows;
        }
        if (m_database.Failed()) {
            return false;
        }
        Check(rows >= atLeast, "a walk left an entry out");
        return m_database.CloseReadTable();
    }

    static void StepAside() { std::this_thread::sleep_for(std::chrono::microseconds(200)); }

    int m_number;
    bool m_waits;
    DatabaseApi m_database;
};

void Contend(const std::string& role, const std::string& path, const std::string& which, double seconds,
             const std::string& timeout)
{
    const auto duration = std::chrono::milliseconds(static_cast<int>(seconds * 1000));
    const auto end = steady_clock::now() + duration;
    if (role == "holder") {
        Contender(path, 0, timeout).Hold(which, duration);
        return;
    }
    Contender contender(path, std::stoi(which), timeout);
    if (role == "writer") {
        contender.AddEntries(end);
    } else {
        contender.Read(end);
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        if (argc != 6) {
            throw std::runtime_error("ROLE FILE NUMBER SECONDS TIMEOUT");
        }
        Contend(argv[1], argv[2], argv[3], std::stod(argv[4]), argv[5]);
        return EXIT_SUCCESS;
    } catch (const std::exception& failure) {
        std::cerr << failure.what() << '\n';
        return EXIT_FAILURE;
    }
}
