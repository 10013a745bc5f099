// Stores a time far in the future, then sets the machine's clock to that time, writes again and opens the file again.
//
//   dates FILE SECONDS      says "dates WHAT RESULT" for each step
#include <sql/DatabaseApi.h>
#include <sql/SqlCommand.h>

#include <ctime>
#include <iostream>
#include <string>

using namespace Morvik::sql;

static_assert(sizeof(std::time_t) == 8, "built with _TIME_BITS=64");

namespace {

void Say(const std::string& what, const DatabaseApi& database)
{
    std::cout << "dates " << what << ' ' << database.GetLastError() << ' ' << database.GetLastErrorMsg() << std::endl;
}

bool SetClock(std::time_t seconds)
{
    std::timespec time{};
    time.tv_sec = seconds;
    return clock_settime(CLOCK_REALTIME, &time) == 0;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        return 2;
    }
    const std::string file = argv[1];
    const std::string seconds = argv[2];
    DatabaseApi database;
    database.OpenDatabase(file, false);
    database.Execute("CREATE TABLE t (seconds INTEGER); INSERT INTO t VALUES (" + seconds + ")");
    Say("stored", database);
    SqlCommand command = database.PrepareStatement("SELECT seconds, datetime(seconds, 'unixepoch') FROM t");
    if (command.Step()) {
        std::cout << "dates read 0 " << command.ColumnInt64(0) << ' ' << command.ColumnText(1) << std::endl;
    }
    command.Finalize();
    if (!SetClock(std::stoll(seconds))) {
        std::cout << "dates clock 1 cannot be set" << std::endl;
    }
    database.Execute("INSERT INTO t VALUES (1)");
    Say("written-then", database);
    database.CloseDatabase();
    database.OpenDatabase(file, false);
    Say("opened-then", database);
    return 0;
}
