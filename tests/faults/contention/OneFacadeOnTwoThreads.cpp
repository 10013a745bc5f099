#include <sql/DatabaseApi.h>

#include <thread>

// Two threads use one facade, which no application may do. The thread sanitizer must report it and name the library;
// otherwise the absence of reports in the other tests would prove nothing. The facade is closed, so the only race is
// on its error code, and this race is harmless.

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
