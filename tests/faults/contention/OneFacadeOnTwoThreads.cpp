#include <sql/DatabaseApi.h>

#include <thread>

// What no application may do: two threads use one facade. The thread sanitizer must report it, and name the library;
// otherwise its silence about the tests says nothing. The facade is closed, so that the race is about the code of its
// record alone and does no harm.

int main()
{
    Morvik::sql::DatabaseApi database;
    const auto closeOften = [&] {
        for (int i = 0; i < 1000; ++i) {
            database.CloseDatabase();
        }
    };
    std::thread other(closeOften);
    closeOften();
    other.join();
}
