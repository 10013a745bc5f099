// Makes this machine's SQLite behave like one that was built with SQLITE_DQS=0: its connections do not accept texts
// between double quotation marks. Linked before SQLite.
#include <dlfcn.h>
#include <sqlite3.h>

extern "C" int sqlite3_open(const char* path, sqlite3** connection)
{
    const auto open = reinterpret_cast<decltype(&sqlite3_open)>(dlsym(RTLD_NEXT, "sqlite3_open"));
    const int code = open(path, connection);
    return code == SQLITE_OK ? sqlite3_db_config(*connection, SQLITE_DBCONFIG_DQS_DML, 0, nullptr) : code;
}
