// Runs on the emulated device: writes numbered rows through the facade, or checks the rows of a file.
//
//   rows write FILE PRAGMAS COUNT [wait]   says "begin N" before and "ack N" after the call that writes row N; with
//                                          "wait" it reads a line of input before each row
//   rows check FILE                        says "check INTEGRITY rows ROWS last LAST good GOOD"; GOOD counts the rows
//                                          that hold what was written; the exit status is 0 if the rows 1 to LAST are
//                                          there and good, and 1 if not
#include <sql/DatabaseApi.h>

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string>

using namespace Morvik::sql;

namespace {

std::string Payload(int number)
{
    return std::string(100 + number * 37 % 3000, static_cast<char>('a' + number % 26));
}

DbTableColumnValue Cell(DbTableColumnType type, decltype(DbTableColumnValue::value) value)
{
    DbTableColumnValue cell;
    cell.type = type;
    cell.value = std::move(value);
    return cell;
}

int Fail(const DatabaseApi& database, const std::string& what)
{
    std::cout << "fail " << what << ": " << database.GetLastError() << " " << database.GetLastErrorMsg() << std::endl;
    return 2;
}

bool MakeTable(DatabaseApi& database)
{
    DbTableDefinition table;
    table.name = "t";
    table.columns = {{"n", DbTableColumnType::Integer, 0, PrimaryKey},
                     {"payload", DbTableColumnType::Text, 0, NotNull}};
    return database.CreateTable(table);
}

int WriteRows(DatabaseApi& database, const std::string& pragmas, int count, bool wait)
{
    DbTableData last;
    if ((!pragmas.empty() && !database.Execute(pragmas)) || !MakeTable(database) ||
        !database.ReadValues("SELECT coalesce(max(n), 0) FROM t", last)) {
        return Fail(database, "begin");
    }
    database.CloseReadTable();
    const int first = std::get<int>(last.rows.at(0).cells.at(0).value) + 1;

    std::string line;
    for (int number = first; number < first + count && (!wait || std::getline(std::cin, line)); ++number) {
        DbTableRowValues row;
        row.cells = {Cell(DbTableColumnType::Integer, number), Cell(DbTableColumnType::Text, Payload(number))};
        DbTableDataWrite write;
        write.columns = {"n", "payload"};
        write.rows = {row};

        std::cout << "begin " << number << std::endl;
        if (!database.WriteTableValues("t", write)) {
            return Fail(database, "write");
        }
        std::cout << "ack " << number << std::endl;
    }
    return 0;
}

int CheckRows(DatabaseApi& database)
{
    DbTableData integrity;
    if (!database.ReadValues("PRAGMA integrity_check", integrity)) {
        return Fail(database, "check");
    }
    int rows = 0;
    int last = 0;
    int good = 0;
    int readCode = 0;
    if (database.ExistsTable("t", readCode) && database.SqlQueryBegin("SELECT n, payload FROM t ORDER BY n")) {
        for (const DbTableRowValues& row : database) {
            last = std::get<int>(row.cells.at(0).value);
            good += std::get<std::string>(row.cells.at(1).value) == Payload(last) ? 1 : 0;
            ++rows;
        }
        readCode = database.GetLastError();
    }
    const std::string said = std::get<std::string>(integrity.rows.at(0).cells.at(0).value);
    std::cout << "check " << (readCode == 0 ? said.substr(0, said.find('\n')) : "unreadable") << " rows " << rows
              << " last " << last << " good " << good << std::endl;
    return readCode == 0 && said == "ok" && rows == last && good == rows ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string mode = argc > 1 ? argv[1] : "";
    DatabaseApi database;
    if (argc < 3 || !database.OpenDatabase(argv[2], false)) {
        return Fail(database, "open");
    }
    if (mode == "check") {
        return CheckRows(database);
    }
    return WriteRows(database, argc > 3 ? argv[3] : "", argc > 4 ? std::atoi(argv[4]) : 1, argc > 5);
}
