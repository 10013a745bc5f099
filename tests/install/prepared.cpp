// Uses prepared statements and cursors in a program that is built against the installed library.
#include <sql/SqlCommand.h>
#include <sql/SqlDatabase.h>
#include <sql/SqlTable.h>

#include <iostream>
#include <string>

using namespace Morvik::sql;

namespace {

bool WriteNumbers(SqlDatabase& database)
{
    SqlCommand command(database);
    if (!command.Execute("CREATE TABLE number (name TEXT, value INTEGER)") ||
        !command.Prepare("INSERT INTO number VALUES (?, ?)")) {
        return false;
    }
    for (const char* name : {"one", "seven", "fifteen"}) {
        const std::string text = name;
        const long long value = 3000000000LL * static_cast<long long>(text.size());
        if (!command.BindText(1, text) || !command.BindInt64(2, value) || !command.Step() || !command.Reset()) {
            return false;
        }
    }
    return true;
}

} // namespace

int main()
{
    SqlDatabase database;
    if (!database.Open(":memory:", false) || !WriteNumbers(database)) {
        std::cerr << "cannot write: " << database.GetLastErrorMsg() << '\n';
        return 1;
    }
    SqlTable table(database);
    for (table.Open("SELECT name, value FROM number ORDER BY value"); table.ReadNext();) {
        std::cout << table.GetText(0) << ' ' << table["value"].GetValue<long long>() << '\n';
    }
    return table.GetLastError();
}
