// Uses a prepared statement and a cursor in a program that is built against the installed library. Its output shows
// whether every call succeeded.
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <iostream>
#include <string>

using namespace Morvik::sql;

int main()
{
    SqlDatabase database;
    database.Open(":memory:", false);
    SqlCommand command(database);
    command.Execute("CREATE TABLE number (name TEXT, value INTEGER)");
    command.Prepare("INSERT INTO number VALUES (?, ?)");
    for (const std::string name : {"one", "seven", "fifteen"}) {
        command.BindText(1, name);
        command.BindInt64(2, 3000000000LL * static_cast<long long>(name.size()));
        command.Step();
        command.Reset();
    }
    SqlTable table(database);
    for (table.Open("SELECT name, value FROM number ORDER BY value"); table.ReadNext();) {
        std::cout << table.GetText(0) << ' ' << table["value"].GetValue<long long>() << '\n';
    }
    return table.GetLastError();
}
